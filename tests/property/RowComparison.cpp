#include "tests/property/RowComparison.hpp"

#include <cmath>
#include <exception>
#include <optional>
#include <sstream>

#include "du/fast/EventBatch.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Detectors.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {
namespace {

using DU::eVerdict;

/// The verdict on a pair without a direct path.
eVerdict PlainReason(const DU::ConcentricMedia& media, const TVector3& eventPos,
                     const TVector3& pmtPos) {
  for (const TVector3& position : {eventPos, pmtPos}) {
    if (!(position.Mag() <= DU::LightPathCalculator::kFarthest)) {
      return eVerdict::kPositionNotFinite;
    }
  }
  if (pmtPos.Mag() < media.OuterRadius) return eVerdict::kPMTNotInWater;
  return eventPos == pmtPos ? eVerdict::kEventAtPMT
                            : eVerdict::kTotalReflection;
}

/// The number and name of a verdict, also of one that is none.
std::string TextOf(eVerdict verdict) {
  return std::to_string(static_cast<int>(verdict)) + " (" + NameOf(verdict) +
         ")";
}

std::string HexOf(const TVector3& v) {
  std::ostringstream text;
  text << std::hexfloat << v.X() << ", " << v.Y() << ", " << v.Z();
  return text.str();
}

std::string Differ(const std::string& how, const TVector3& eventPos,
                   const TVector3& pmtPos, eVerdict found, eVerdict exact) {
  return how + ": event (" + HexOf(eventPos) + "), PMT (" + HexOf(pmtPos) +
         "): row " + TextOf(found) + ", pair " + TextOf(exact);
}

std::string DifferByType(const std::string& how, const TVector3& eventPos,
                         const TVector3& pmtPos, int found, int exact) {
  return how + ": event (" + HexOf(eventPos) + "), PMT (" + HexOf(pmtPos) +
         "): row of type " + std::to_string(found) + ", pair of type " +
         std::to_string(exact);
}

Tables WithRandomIndices(Tables tables, Random& random) {
  const DU::ConcentricMedia media =
      random.Chance(0.5) ? random.Pick(Vessels()).Media : RandomMedia(random);
  SetIndices(tables, media);
  return tables;
}

}  // namespace

double AnyTolerance(Random& random) {
  constexpr std::array kTolerances = {
      150.0, 150.0,  150.0, 50.0,  0.0,   -10.0,      1.0,
      20.0,  70.5,   300.0, 700.0, 400.0, -12.0,      -15.0,
      1e-9,  2000.0, 8e3,   2e4,   1e200, -kInfinity, kInfinity};
  return random.Pick(kTolerances);
}

void BeginRandomRun(DU::ShadowingCalculator& shadowing,
                    DU::LightPathCalculator& light, Random& random) {
  constexpr std::size_t kMostRopes = 2;
  while (true) {
    const Tables tables =
        WithRandomIndices(MakeDetector(random, kMostRopes).tables, random);
    try {
      shadowing.SetAllGeometryTolerances(0.0);  // no grid on the plates
      shadowing.BeginOfRun(tables.AsSet());
      light.BeginOfRun(random.Chance(0.8)
                           ? tables.AsSet()
                           : TablesOf(RandomMedia(random)).AsSet());
    } catch (const std::exception&) {
      continue;  // radii that are missing or bad
    }
    shadowing.SetAllGeometryTolerances(AnyTolerance(random));
    return;
  }
}

void RowTally::Add(const RowTally& other) {
  pairs += other.pairs;
  open += other.open;
  for (std::size_t i = 0; i < kVerdicts; ++i) {
    direct[i] += other.direct[i];
    reflected[i] += other.reflected[i];
  }
}

RowComparison::RowComparison(const DU::ShadowingCalculator& shadowing,
                             const DU::LightPathCalculator& light)
    : shadowing_(shadowing),
      light_(light),
      layers_(shadowing.GetHardware(), {}) {
  shadowing.MakeLayers();
}

RowComparison::Pair RowComparison::Ask(const TVector3& eventPos,
                                       const TVector3& pmtPos) {
  Pair pair;
  light_.CalcByPosition(eventPos, pmtPos);
  pair.type = static_cast<std::uint8_t>(light_.GetLightPathType());
  pair.direct = light_.HasPath()
                    ? VerdictOf(shadowing_.FindShadowing(light_.GetLightPath()))
                    : PlainReason(light_.GetMedia(), eventPos, pmtPos);
  light_.CalcReflectionByPosition(eventPos, pmtPos);
  pair.reflected =
      light_.HasPath()
          ? VerdictOf(shadowing_.FindShadowing(light_.GetLightPath()))
          : eVerdict::kNoReflectedPath;
  return pair;
}

std::string RowComparison::Compare(const TVector3& eventPos,
                                   const DU::PMTArray& pmts,
                                   const std::vector<DU::eKernel>& kernels,
                                   RowTally& tally) {
  expected_.resize(pmts.Count());
  for (std::size_t i = 0; i < pmts.Count(); ++i) {
    expected_[i] = Ask(eventPos, pmts.At(i));
    ++tally.direct[static_cast<std::size_t>(expected_[i].direct)];
    ++tally.reflected[static_cast<std::size_t>(expected_[i].reflected)];
  }
  tally.pairs += pmts.Count();
  std::string difference = FullDifference(eventPos, pmts);
  for (const DU::eKernel kernel : kernels) {
    std::uint64_t open = 0;
    if (difference.empty()) {
      difference = KernelDifference(eventPos, pmts, kernel, open);
    }
    if (kernel == kernels.front()) tally.open += open;
  }
  return difference;
}

std::string RowComparison::FullDifference(const TVector3& eventPos,
                                          const DU::PMTArray& pmts) const {
  const std::size_t count = pmts.Count();
  std::vector<eVerdict> direct(count);
  std::vector<eVerdict> reflected(count);
  std::vector<std::uint8_t> types(count);
  shadowing_.FindVerdicts(light_, eventPos, pmts,
                          {direct.data(), reflected.data(), types.data()});
  for (std::size_t i = 0; i < count; ++i) {
    const Pair& pair = expected_[i];
    if (direct[i] != pair.direct) {
      return Differ("direct light", eventPos, pmts.At(i), direct[i],
                    pair.direct);
    }
    if (reflected[i] != pair.reflected) {
      return Differ("reflected light", eventPos, pmts.At(i), reflected[i],
                    pair.reflected);
    }
    if (types[i] != pair.type) {
      return DifferByType("direct light", eventPos, pmts.At(i), types[i],
                          pair.type);
    }
  }
  return {};
}

std::string RowComparison::KernelDifference(const TVector3& eventPos,
                                            const DU::PMTArray& pmts,
                                            DU::eKernel kernel,
                                            std::uint64_t& open) {
  const auto codeOf = [](eVerdict verdict) {
    return static_cast<DU::BatchVerdict>(verdict);
  };
  const std::size_t count = pmts.Count();
  std::vector<DU::BatchVerdict> direct(count);
  std::vector<DU::BatchVerdict> reflected(count);
  std::vector<std::uint8_t> types(count);
  layers_.batch.UseKernel(kernel);
  DU::EventBatch batch(layers_, light_.GetMedia(), eventPos, pmts);
  batch.UseKernel(kernel);
  batch.JudgeDirect(
      {direct.data(), codeOf(eVerdict::kTotalReflection), types.data()});
  batch.JudgeReflected(
      {reflected.data(), codeOf(eVerdict::kNoReflectedPath), nullptr});
  const std::string name = "kernel " + std::to_string(static_cast<int>(kernel));
  for (std::size_t i = 0; i < count; ++i) {
    const Pair& pair = expected_[i];
    if (direct[i] == DU::kOpenVerdict) {
      ++open;
    } else if (direct[i] != codeOf(pair.direct)) {
      return Differ(name + ", direct light", eventPos, pmts.At(i),
                    static_cast<eVerdict>(direct[i]), pair.direct);
    } else if (types[i] != pair.type) {
      return DifferByType(name, eventPos, pmts.At(i), types[i], pair.type);
    }
    if (reflected[i] != DU::kOpenVerdict &&
        reflected[i] != codeOf(pair.reflected)) {
      return Differ(name + ", reflected light", eventPos, pmts.At(i),
                    static_cast<eVerdict>(reflected[i]), pair.reflected);
    }
  }
  return {};
}

std::vector<TVector3> RowComparison::NearLimits(
    const TVector3& eventPos, const std::vector<TVector3>& positions,
    std::size_t count, Random& random) {
  std::vector<TVector3> found;
  for (std::size_t attempt = 0; attempt < 2 * count; ++attempt) {
    if (found.size() >= count) break;
    TVector3 low = random.Pick(positions);
    const double radius = low.Mag();
    TVector3 high = random.Pick(positions).Unit() * radius;
    const Pair atLow = Ask(eventPos, low);
    if (atLow == Ask(eventPos, high)) continue;
    // Rounding, or an error of a table far below a micrometre, changes the
    // verdict of some of these.
    const int steps = random.Whole(20, 54);
    for (int step = 0; step < steps; ++step) {
      const TVector3 middle = (low + high).Unit() * radius;
      (Ask(eventPos, middle) == atLow ? low : high) = middle;
    }
    found.push_back(low);
    found.push_back(high);
  }
  return found;
}

}  // namespace ZARN::Testing

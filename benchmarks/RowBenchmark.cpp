#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/Ways.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/Verdict.hpp"
#include "du/fast/EventBatch.hpp"
#include "io/PositionReader.hpp"
#include "lightpath/Kernels.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PMTArray.hpp"
#include "lightpath/RayTable.hpp"
#include "scan/RowScan.hpp"
#include "scan/ToleranceCounts.hpp"
#include "tests/property/Random.hpp"

/// Time of the verdicts on one event and all PMTs of the reference detector,
/// per pair: by FindVerdicts, by each kernel, and by a plain loop over
/// CalcByPosition and FindShadowing. And the time of a scan that counts at 30
/// tolerances. Layers are built, on one core.
namespace ZARN::Benchmarks {
namespace {

using DU::eVerdict;
using Testing::Random;

constexpr std::size_t kEvents = 50;
constexpr double kPMTRadius = 8300.0;  // of the reference detector

const DU::ShadowingCalculator& Shadowing() {
  static const DU::ShadowingCalculator calculator = [] {
    DU::ShadowingCalculator begun;
    begun.BeginOfRun();
    begun.MakeLayers();
    return begun;
  }();
  return calculator;
}

const DU::LightPathCalculator& Light() {
  static const DU::LightPathCalculator calculator = [] {
    DU::LightPathCalculator begun;
    begun.BeginOfRun();
    return begun;
  }();
  return calculator;
}

std::vector<TVector3> PositionsIn(const std::string& file,
                                  const std::string& nameColumn) {
  return IO::PositionsOf(
      IO::ReadPositions(std::string(ZARN_DATA_DIR) + "/" + file, nameColumn));
}

/// Uniformly distributed between two spheres.
std::vector<TVector3> EventsBetween(double low, double high) {
  Random random(12);
  std::vector<TVector3> events;
  for (std::size_t i = 0; i < kEvents; ++i) {
    const double cube = random.Uniform(low * low * low, high * high * high);
    events.push_back(random.Direction() * std::cbrt(cube));
  }
  return events;
}

/// The directions of the detector's PMTs with other distances, in any order.
std::vector<TVector3> PMTsAt(const std::function<double(Random&)>& distance) {
  Random random(13);
  std::vector<TVector3> pmts = PositionsIn("pmts.csv", "pmt");
  for (TVector3& pmt : pmts) pmt = pmt.Unit() * distance(random);
  return pmts;
}

/// Events and PMTs, and the right verdicts.
struct RowSet {
  RowSet(DU::eLight kind, std::vector<TVector3> from, std::vector<TVector3> to)
      : light(kind), events(std::move(from)), pmts(std::move(to)) {
    expected.resize(events.size() * pmts.Count());
  }

  DU::eLight light;
  std::vector<TVector3> events;
  DU::PMTArray pmts;
  std::vector<eVerdict> expected;
};

using MakeRowSet = std::function<RowSet()>;

eVerdict NoPath(DU::eLight light) {
  // All PMTs are in the water.
  return light == DU::eLight::kDirect ? eVerdict::kTotalReflection
                                      : eVerdict::kNoReflectedPath;
}

eVerdict ExactVerdict(DU::LightPathCalculator& path, DU::eLight light,
                      const TVector3& event, const TVector3& pmt) {
  if (light == DU::eLight::kDirect) {
    path.CalcByPosition(event, pmt);
  } else {
    path.CalcReflectionByPosition(event, pmt);
  }
  return path.HasPath()
             ? VerdictOf(Shadowing().FindShadowing(path.GetLightPath()))
             : NoPath(light);
}

/// Judges the rows of a set, one after the other.
using RowWay = std::function<void(const RowSet& set, eVerdict* rows)>;

void PlainLoop(const RowSet& set, eVerdict* rows) {
  DU::LightPathCalculator path = Light();
  for (const TVector3& event : set.events) {
    for (std::size_t i = 0; i < set.pmts.Count(); ++i) {
      *rows++ = ExactVerdict(path, set.light, event, set.pmts.At(i));
    }
  }
}

void LibraryRows(const RowSet& set, eVerdict* rows) {
  for (const TVector3& event : set.events) {
    Shadowing().FindVerdicts(Light(), event, set.pmts, {rows});
    rows += set.pmts.Count();
  }
}

/// Rows with a certain kernel, as FindVerdicts does it with the widest.
class KernelRows {
 public:
  explicit KernelRows(DU::eKernel kernel) : kernel_(kernel) {
    layers_.batch.UseKernel(kernel);
  }

  /// @return how many pairs were open
  std::size_t Judge(const RowSet& set, eVerdict* rows) const {
    std::size_t open = 0;
    DU::LightPathCalculator path = Light();
    static_assert(sizeof(eVerdict) == sizeof(DU::BatchVerdict));
    const auto noPath = static_cast<DU::BatchVerdict>(NoPath(set.light));
    for (const TVector3& event : set.events) {
      DU::EventBatch batch(layers_, Light().GetMedia(), event, set.pmts);
      batch.UseKernel(kernel_);
      auto* const verdicts = reinterpret_cast<DU::BatchVerdict*>(rows);
      const DU::BatchRow row = {verdicts, noPath, nullptr};
      if (set.light == DU::eLight::kDirect) {
        batch.JudgeDirect(row);
      } else {
        batch.JudgeReflected(row);
      }
      DU::ForEachOpen(verdicts, set.pmts.Count(), [&](std::size_t i) {
        rows[i] = ExactVerdict(path, set.light, event, set.pmts.At(i));
        ++open;
      });
      rows += set.pmts.Count();
    }
    return open;
  }

 private:
  DU::eKernel kernel_;
  DU::PreparedLayers layers_{Shadowing().GetHardware(), {}};
};

const KernelRows& RowsWith(DU::eKernel kernel) {
  static std::map<DU::eKernel, std::unique_ptr<KernelRows>> all;
  std::unique_ptr<KernelRows>& rows = all[kernel];
  if (rows == nullptr) rows = std::make_unique<KernelRows>(kernel);
  return *rows;
}

const RowSet& SetOf(const std::string& name, const MakeRowSet& make) {
  static std::map<std::string, RowSet> sets;
  const auto at = sets.find(name);
  if (at != sets.end()) return at->second;
  RowSet& set = sets.emplace(name, make()).first->second;
  PlainLoop(set, set.expected.data());
  return set;
}

void AddRowWay(const std::string& set, const std::string& way,
               const MakeRowSet& make, const RowWay& judge,
               const std::function<std::size_t(const RowSet&)>& countOpen) {
  const std::string name = "rows/" + set + "/" + way;
  AddBenchmark(name, [=](benchmark::State& state) {
    const RowSet& rows = SetOf(set, make);
    std::vector<eVerdict> verdicts(rows.expected.size());
    judge(rows, verdicts.data());
    RequireEqual(name, rows.expected, verdicts);
    for ([[maybe_unused]] auto _ : state) {
      judge(rows, verdicts.data());
      benchmark::ClobberMemory();
    }
    const auto pairs = static_cast<std::int64_t>(rows.expected.size());
    state.SetItemsProcessed(state.iterations() * pairs);
    if (countOpen == nullptr) return;
    state.counters["exact"] =
        static_cast<double>(countOpen(rows)) / static_cast<double>(pairs);
  });
}

void AddSet(const std::string& name, const MakeRowSet& make) {
  AddRowWay(name, "plain", make, PlainLoop, nullptr);
  for (const DU::eKernel kernel : DU::AvailableKernels()) {
    const auto judge = [kernel](const RowSet& set, eVerdict* rows) {
      return RowsWith(kernel).Judge(set, rows);
    };
    AddRowWay(name, NameOf(kernel), make, judge, [=](const RowSet& set) {
      std::vector<eVerdict> rows(set.expected.size());
      return judge(set, rows.data());
    });
  }
}

/// A scan that counts at tolerances from 10 to 300 mm. Its counts at that of
/// the other ways are compared with theirs.
void AddToleranceScan(const std::string& set, const MakeRowSet& make) {
  const std::string name = "rows/" + set + "/30-tolerances";
  AddBenchmark(name, [=](benchmark::State& state) {
    constexpr std::size_t kTolerances = 30;
    constexpr double kStep = 10.0;  // mm
    std::vector<double> tolerances;
    while (tolerances.size() < kTolerances) {
      tolerances.push_back(kStep * static_cast<double>(tolerances.size() + 1));
    }
    const auto same = std::find(tolerances.begin(), tolerances.end(),
                                DU::Hardware::kDefaultTolerance);
    const RowSet& rows = SetOf(set, make);
    std::vector<TVector3> pmts;
    for (std::size_t i = 0; i < rows.pmts.Count(); ++i) {
      pmts.push_back(rows.pmts.At(i));
    }
    Scan::VerdictCounts expected;
    expected.AddRow(rows.expected.data(), rows.expected.size());
    for ([[maybe_unused]] auto _ : state) {
      Scan::ToleranceCounts counts(Shadowing(), Light(), pmts, {tolerances});
      Scan::RowScan::Settings settings;
      settings.onBlock = [&](const Scan::RowBlock& block) {
        counts.Judge(block);
      };
      Scan::RowScan(Shadowing(), Light(), rows.pmts, settings)
          .Run(rows.events, [](const Scan::RowBlock& /*block*/) {});
      const auto& found =
          counts.OfAll()[static_cast<std::size_t>(same - tolerances.begin())];
      for (const auto component : DU::kShadowingComponents) {
        if (found.Of(component) != expected.Of(component)) {
          EndForDifference(name);
        }
      }
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(rows.expected.size()));
  });
}

/// The making of a table, by where the event is.
void AddTable(const std::string& where, double eventRadius) {
  AddBenchmark("rows/table/" + where, [=](benchmark::State& state) {
    constexpr int kCells = 128;  // as an EventBatch makes them
    for ([[maybe_unused]] auto _ : state) {
      const DU::RayTable table(DU::eLight::kDirect, Light().GetMedia(),
                               eventRadius,
                               {kPMTRadius, kPMTRadius, kPMTRadius}, kCells);
      benchmark::DoNotOptimize(table.LeastNear());
    }
  });
}

void AddAll() {
  constexpr DU::eLight kDirect = DU::eLight::kDirect;
  const double inner = Light().GetMedia().InnerRadius;
  const double outer = Light().GetMedia().OuterRadius;
  constexpr double kNearWall = 5000.0;
  constexpr double kFirstRing = 7000.0;
  constexpr double kLastRing = 10000.0;
  const auto pmts = [] { return PositionsIn("pmts.csv", "pmt"); };
  const auto between = [=](double low, double high,
                           DU::eLight light =
                               DU::eLight::kDirect) -> MakeRowSet {
    return [=] { return RowSet(light, EventsBetween(low, high), pmts()); };
  };
  const MakeRowSet standard = [=] {
    return RowSet(kDirect, PositionsIn("source-scan.csv", "event"), pmts());
  };
  AddSet("standard", standard);
  AddRowWay("standard", "chosen", standard, LibraryRows, nullptr);
  AddToleranceScan("standard", standard);
  AddSet("inside", between(0.0, kNearWall));
  AddSet("near-wall", between(kNearWall, inner));
  AddSet("wall", between(inner, outer));
  AddSet("water", between(outer, kPMTRadius));
  AddSet("rings", [=] {
    return RowSet(kDirect, EventsBetween(0.0, inner),
                  PMTsAt([=](Random& random) {
                    constexpr double kStep = 250.0;
                    return kFirstRing + kStep * random.Whole(0, 12);
                  }));
  });
  AddSet("distances", [=] {
    return RowSet(kDirect, EventsBetween(0.0, inner),
                  PMTsAt([=](Random& random) {
                    return random.Uniform(kFirstRing, kLastRing);
                  }));
  });
  AddSet("reflection", between(outer, kPMTRadius, DU::eLight::kReflected));
  AddTable("inside", 3000.0);
  AddTable("near-wall", 5500.0);
  AddTable("wall", 0.5 * (inner + outer));
  AddTable("water", 7000.0);
}

}  // namespace
}  // namespace ZARN::Benchmarks

int main(int argc, char** argv) {
  return ZARN::Benchmarks::RunBenchmarks(argc, argv, ZARN::Benchmarks::AddAll);
}

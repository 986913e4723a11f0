#include <CLI/CLI.hpp>

#include <array>
#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "db/JsonTables.hpp"
#include "db/ReadField.hpp"
#include "db/TableSet.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/Kernels.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PMTArray.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/Rounds.hpp"
#include "tests/property/RowComparison.hpp"
#include "tests/property/RowPlaces.hpp"

// row_long_run: compares rows of verdicts with the verdicts on their pairs,
// each from its exact path, for as many pairs as there is time for.

namespace ZARN::Testing {
namespace {

constexpr std::size_t kEventsPerRound = 35;  // 5 in each place
constexpr std::size_t kPMTs = 8000;          // also of the reference detector
constexpr double kPairsPerRound = kEventsPerRound * kPMTs;
/// One event in this many also sees PMTs near limits of verdicts, which the
/// others rarely have. Each takes as long as 30 others.
constexpr std::size_t kLimitsEvery = 5;
constexpr std::size_t kLimits = 64;

struct Options {
  double pairs = 1e6;
  RoundOptions rounds;
};

struct Tally {
  std::uint64_t rounds = 0;
  std::uint64_t referencePairs = 0;
  std::array<RowTally, kEventPlaces.size()> places;

  RowTally& At(eEventPlace place) {
    return places[static_cast<std::size_t>(place)];
  }
  RowTally Sum() const {
    RowTally sum;
    for (const RowTally& place : places) sum.Add(place);
    return sum;
  }
  void Add(const Tally& other) {
    rounds += other.rounds;
    referencePairs += other.referencePairs;
    for (std::size_t i = 0; i < places.size(); ++i) {
      places[i].Add(other.places[i]);
    }
  }
};

/// The rounds of one thread. Half of them use the reference detector, half of
/// these with the default tolerance.
class Worker {
 public:
  explicit Worker(const Options& options) : options_(options) {
    LoadJsonTables(tables_, options.rounds.data);
    const auto read = [&](const char* field) {
      return ReadNumbers(tables_, "PMT", "positions", field);
    };
    const std::vector<double> x = read("x");
    const std::vector<double> y = read("y");
    const std::vector<double> z = read("z");
    for (std::size_t i = 0; i < x.size(); ++i) {
      pmts_.emplace_back(x[i], y[i], z[i]);
    }
    shadowing_.SetAllGeometryTolerances(0.0);  // no grid on the plates
    shadowing_.BeginOfRun(tables_);
    light_.BeginOfRun(tables_);
  }

  std::string Run(std::uint64_t round) {
    Random random(options_.rounds.RandomSeedOf(round));
    ++tally_.rounds;
    const std::vector<DU::eKernel> all = DU::AvailableKernels();
    const std::vector<DU::eKernel> kernel = {all[round / 4 % all.size()]};
    if (round % 2 == 0) {
      shadowing_.SetAllGeometryTolerances(
          round % 4 == 0 ? 150.0 : AnyTolerance(random));
      const std::uint64_t before = tally_.Sum().pairs;
      std::string difference =
          RunEvents(shadowing_, light_, pmts_, kernel, random);
      tally_.referencePairs += tally_.Sum().pairs - before;
      return difference;
    }
    DU::ShadowingCalculator shadowing;
    DU::LightPathCalculator light;
    BeginRandomRun(shadowing, light, random);
    const TVector3 nowhere;
    const std::vector<TVector3> pmts =
        DrawPMTs(kPMTs, light.GetMedia(), nowhere, random);
    return RunEvents(shadowing, light, pmts, kernel, random);
  }

  const Tally& Counts() const { return tally_; }

 private:
  std::string RunEvents(const DU::ShadowingCalculator& shadowing,
                        const DU::LightPathCalculator& light,
                        const std::vector<TVector3>& positions,
                        const std::vector<DU::eKernel>& kernel,
                        Random& random) {
    const DU::PMTArray pmts(positions);
    RowComparison comparison(shadowing, light);
    for (std::size_t i = 0; i < kEventsPerRound; ++i) {
      const eEventPlace place = kEventPlaces[i % kEventPlaces.size()];
      const TVector3 eventPos = DrawEvent(place, light.GetMedia(), random);
      std::string difference =
          comparison.Compare(eventPos, pmts, kernel, tally_.At(place));
      if (difference.empty() && i % kLimitsEvery == 0) {
        const DU::PMTArray limits(
            comparison.NearLimits(eventPos, positions, kLimits, random));
        difference =
            comparison.Compare(eventPos, limits, kernel, tally_.At(place));
      }
      if (difference.empty()) continue;
      std::ostringstream text;
      text << std::hexfloat << "tolerance " << shadowing.GetAVHDRopeTolerance()
           << ", " << difference << " (after " << tally_.Sum().pairs
           << " pairs of this thread)";
      return text.str();
    }
    return {};
  }

  const Options& options_;
  TableSet tables_;
  std::vector<TVector3> pmts_;
  DU::ShadowingCalculator shadowing_;
  DU::LightPathCalculator light_;
  Tally tally_;
};

void PrintRow(const char* name, const RowTally& tally) {
  std::printf("| %s | %" PRIu64 " | %.3f %% ", name, tally.pairs,
              Percent(tally.open, tally.pairs));
  for (std::size_t i = 0; i + 1 < RowTally::kVerdicts; ++i) {
    std::printf("| %" PRIu64 " ", tally.direct[i]);
  }
  std::uint64_t reflected = 0;
  std::uint64_t shadowed = 0;
  for (std::size_t i = 0; i < RowTally::kVerdicts; ++i) {
    const auto verdict = static_cast<DU::eVerdict>(i);
    if (HasPath(verdict)) reflected += tally.reflected[i];
    if (IsShadowed(verdict)) shadowed += tally.reflected[i];
  }
  std::printf("| %" PRIu64 " | %" PRIu64 " |\n", reflected, shadowed);
}

void Print(const Tally& tally) {
  const RowTally sum = tally.Sum();
  std::printf("%" PRIu64 " pairs in %" PRIu64
              " rounds, %.1f %% in the reference detector\n\n",
              sum.pairs, tally.rounds,
              Percent(tally.referencePairs, sum.pairs));
  std::printf("| Events | Pairs | open ");
  for (std::size_t i = 0; i + 1 < RowTally::kVerdicts; ++i) {
    std::printf("| %s ", NameOf(static_cast<DU::eVerdict>(i)));
  }
  std::printf("| reflected paths | shadowed |\n|---|--:|--:");
  for (std::size_t i = 0; i <= RowTally::kVerdicts; ++i) std::printf("|--:");
  std::printf("|\n");
  for (const eEventPlace place : kEventPlaces) {
    PrintRow(NameOf(place), tally.places[static_cast<std::size_t>(place)]);
  }
  PrintRow("all", sum);
}

int Run(const Options& options) {
  Tally tally;
  const bool differs =
      AnyRoundDiffers<Worker>(options, options.pairs / kPairsPerRound, tally);
  Print(tally);
  return differs ? 1 : 0;
}

}  // namespace
}  // namespace ZARN::Testing

int main(int argc, char** argv) {
  ZARN::Testing::Options options;
  CLI::App app(
      "Compare rows of verdicts, by the library and by one kernel after the "
      "other, with the verdicts on exact paths. Exits with 1 at the first "
      "difference.");
  app.add_option("--pairs", options.pairs, "Minimum number of pairs")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  options.rounds.AddTo(app);
  CLI11_PARSE(app, argc, argv);
  return ZARN::Testing::Run(options);
}

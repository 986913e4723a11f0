#include <CLI/CLI.hpp>

#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "tests/property/Batches.hpp"
#include "tests/property/Detectors.hpp"
#include "tests/property/Explanations.hpp"
#include "tests/property/PathSearch.hpp"
#include "tests/property/Paths.hpp"
#include "tests/property/PlainOutcome.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/Rounds.hpp"
#include "tests/property/RowComparison.hpp"
#include "tests/property/TextSink.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

// shadowing_long_run: compares verdicts like the property tests, for as many
// paths as there is time for, on several threads. Messages are not compared:
// all threads share their streams, and the tests cover them.

namespace ZARN::Testing {
namespace {

using Component = DU::eShadowingComponent;

/// One round in this many uses the reference detector; the others use random
/// ones, where the plain calculator has fewer points to test.
constexpr std::uint64_t kReferenceEvery = 32;
constexpr std::size_t kPathsPerRound = 20000;
constexpr std::size_t kTypes = DU::kNumberOfLightPathTypes + 1;
constexpr std::size_t kComponents = DU::kShadowingComponents.size() + 1;

struct Options {
  double paths = 1e6;
  std::uint64_t explainedEvery = 64;
  RoundOptions rounds;
};

struct Tally {
  std::uint64_t rounds = 0;
  std::uint64_t paths = 0;
  std::uint64_t explained = 0;
  std::uint64_t referencePaths = 0;
  std::uint64_t nearLimits = 0;
  std::size_t open = 0;  ///< left open by the batch kernels
  ToleranceTally tolerances;
  /// Indexed by type (the last is for types outside the enumeration) and
  /// component.
  std::array<std::array<std::uint64_t, kComponents>, kTypes> found{};

  void Add(DU::eLightPathType type, Component component, bool isNear) {
    ++paths;
    if (isNear) ++nearLimits;
    const bool isKnown = type >= 0 && type < DU::kNumberOfLightPathTypes;
    ++found[isKnown ? static_cast<std::size_t>(type) : kTypes - 1]
           [static_cast<std::size_t>(component)];
  }

  void Add(const Tally& other) {
    rounds += other.rounds;
    paths += other.paths;
    explained += other.explained;
    referencePaths += other.referencePaths;
    nearLimits += other.nearLimits;
    open += other.open;
    tolerances.Add(other.tolerances);
    for (std::size_t type = 0; type < kTypes; ++type) {
      for (std::size_t c = 0; c < kComponents; ++c) {
        found[type][c] += other.found[type][c];
      }
    }
  }
};

/// The calculator and a plain one with the same geometry, for one thread.
class Calculators {
 public:
  Calculators() : plain_(warn_, debug_) {
    warn_.Switch(false);
    debug_.Switch(false);
  }

  /// The database and the log are shared by all threads.
  template <class Load>
  void BeginOfRun(const Load& load) {
    const std::lock_guard<std::mutex> lock(database_);
    load();
    real_.BeginOfRun();
    plain_.BeginOfRun();
  }

  void SetAllGeometryTolerances(double tolerance) {
    real_.SetAllGeometryTolerances(tolerance);
    plain_.SetAllGeometryTolerances(tolerance);
  }

  /// The outcome of the plain calculator, including its debug messages if they
  /// are on, so that the search finds the paths that just meet a cylinder.
  int Judge(const DU::LightPath& path) {
    debug_.Empty();
    path_.SetLightPath(path);
    plain_.CheckForShadowing(path_);
    return OutcomeOf(plain_, debug_.Text());
  }
  void CountDiagnostics(bool on) { debug_.Switch(on); }

  /// Compare the explanation and the critical tolerances of the path that was
  /// judged last.
  std::string ExplanationDifference(const DU::LightPath& path,
                                    ToleranceTally& tally) {
    return Testing::ExplanationDifference(
        {real_.Explain(path), real_.FindCriticalTolerances(path)}, real_,
        plain_, path_, tally);
  }

  const DU::ShadowingCalculator& Real() const { return real_; }
  const Reference::PlainShadowingCalculator& Plain() const { return plain_; }

 private:
  inline static std::mutex database_;

  TextSink warn_;
  TextSink debug_;
  DU::ShadowingCalculator real_;
  Reference::PlainShadowingCalculator plain_;
  DU::LightPathCalculator path_;
};

/// The rounds of one thread.
class Worker {
 public:
  explicit Worker(const Options& options) : options_(options) {}

  /// @return the first difference, empty if there is none
  std::string Run(std::uint64_t round) {
    Random random(options_.rounds.RandomSeedOf(round));
    Calculators& calculators = SetUp(round, random);
    judged_.Clear();
    std::string difference;
    PathSearch search(
        calculators.Plain(), random, [&](const TestPath& path, bool isNear) {
          return Check(calculators, path.path, isNear, difference);
        });
    search.Run(kPathsPerRound);
    if (difference.empty()) {
      difference = AnyDifference(calculators.Real(), judged_);
    }
    if (difference.empty()) {
      difference = KernelDifference(calculators.Real(), judged_, tally_.open);
    }
    ++tally_.rounds;
    if (difference.empty()) return difference;
    std::ostringstream text;
    text << "tolerance " << std::hexfloat << tolerance_ << ", " << difference;
    return text.str();
  }

  const Tally& Counts() const { return tally_; }

 private:
  Calculators& SetUp(std::uint64_t round, Random& random) {
    isReference_ = round % kReferenceEvery == 0;
    std::unique_ptr<Calculators>& calculators =
        isReference_ ? reference_ : invented_;
    if (calculators == nullptr) {
      calculators = std::make_unique<Calculators>();
      // The grid on the belly plates is not compared.
      calculators->SetAllGeometryTolerances(0.0);
      if (isReference_) {
        calculators->BeginOfRun([this] {
          DB::Get().Clear();
          LoadJsonTables(DB::Get(), options_.rounds.data);
        });
      }
    }
    if (!isReference_) {
      calculators->SetAllGeometryTolerances(0.0);
      calculators->BeginOfRun([&] { LoadInvented(random); });
    }
    tolerance_ = random.Chance(0.3)
                     ? SharpTolerance(calculators->Plain(), random)
                     : AnyTolerance(random);
    calculators->SetAllGeometryTolerances(tolerance_);
    // In the other rounds they are built when that pays off.
    if (random.Chance(0.75)) calculators->Real().MakeLayers();
    calculators->CountDiagnostics(random.Chance(0.25));
    return *calculators;
  }

  /// Few ropes: their surface points take most of the plain calculator's time.
  static std::size_t MostRopes(Random& random) {
    constexpr std::array<std::size_t, 8> kMost = {0, 0, 0, 0, 1, 1, 1, 10};
    return random.Pick(kMost);
  }

  /// Load a random geometry that has radii; without them BeginOfRun fails.
  static void LoadInvented(Random& random) {
    while (true) {
      MakeDetector(random, MostRopes(random)).tables.Load();
      try {
        (void)DB::Get()
            .GetLink("SOLID", "acrylic_vessel_inner", -1)
            ->GetD("r_sphere");
        const auto outer =
            DB::Get().GetLink("SOLID", "acrylic_vessel_outer", -1);
        (void)outer->GetD("r_sphere");
        (void)outer->GetD("r_neck");
        return;
      } catch (const DBNotFoundError&) {
        continue;
      }
    }
  }

  std::optional<int> Check(Calculators& calculators, const DU::LightPath& path,
                           bool isNear, std::string& difference) {
    const int outcome = calculators.Judge(path);
    const Component plain = BlockingOf(calculators.Plain());
    const Component real = calculators.Real().FindShadowing(path);
    if (real != plain) {
      difference = DescribeDifference(path, real, plain);
      return std::nullopt;
    }
    if (tally_.paths % options_.explainedEvery == 0) {
      difference = calculators.ExplanationDifference(path, tally_.tolerances);
      if (!difference.empty()) return std::nullopt;
      ++tally_.explained;
    }
    judged_.Add(path, plain);
    tally_.Add(path.LightPathType, plain, isNear);
    if (isReference_) ++tally_.referencePaths;
    return outcome;
  }

  const Options& options_;
  std::unique_ptr<Calculators> reference_;
  std::unique_ptr<Calculators> invented_;
  JudgedPaths judged_;
  Tally tally_;
  double tolerance_ = 0.0;
  bool isReference_ = false;
};

void Print(const Tally& tally) {
  std::printf("%" PRIu64 " paths in %" PRIu64
              " rounds, %.1f %% on the reference detector, %.1f %% within "
              "1e-12 of a limit, %.1f %% decided by the batch kernels\n\n",
              tally.paths, tally.rounds,
              Percent(tally.referencePaths, tally.paths),
              Percent(tally.nearLimits, tally.paths),
              100.0 - Percent(tally.open, tally.paths));
  std::printf("%" PRIu64
              " paths explained; %ld verdicts at ragged edges of "
              "plates, at most %.2g mm from the critical tolerance\n\n",
              tally.explained, tally.tolerances.ragged,
              tally.tolerances.widest);
  std::printf("| %-35s | %11s ", "Type", "Paths");
  std::printf("| %11s ", "free");
  for (const Component c : DU::kShadowingComponents) {
    std::printf("| %11s ", DU::NameOf(c));
  }
  std::printf("|\n|---|---");
  for (std::size_t c = 0; c < kComponents; ++c) std::printf("|---");
  std::printf("|\n");
  for (std::size_t type = 0; type < kTypes; ++type) {
    std::uint64_t all = 0;
    for (const std::uint64_t count : tally.found[type]) all += count;
    std::printf("| %-35s | %11" PRIu64 " ",
                type + 1 < kTypes ? DU::kLightPathTypeNames[type]
                                  : "(outside the enumeration)",
                all);
    for (const std::uint64_t count : tally.found[type]) {
      std::printf("| %11" PRIu64 " ", count);
    }
    std::printf("|\n");
  }
}

int Run(const Options& options) {
  Tally tally;
  const bool differs = AnyRoundDiffers<Worker>(
      options, options.paths / static_cast<double>(kPathsPerRound), tally);
  Print(tally);
  return differs ? 1 : 0;
}

}  // namespace
}  // namespace ZARN::Testing

int main(int argc, char** argv) {
  ZARN::Testing::Options options;
  CLI::App app(
      "Compare the calculator's verdicts, by single calls and in batches, with "
      "those of the plain formulas, and so explanations and critical "
      "tolerances. Exits with 1 at the first difference.");
  app.add_option("--paths", options.paths, "Minimum number of paths")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  app.add_option("--explained-every", options.explainedEvery,
                 "Compare explanations and critical tolerances of one path in "
                 "so many")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  options.rounds.AddTo(app);
  CLI11_PARSE(app, argc, argv);
  return ZARN::Testing::Run(options);
}

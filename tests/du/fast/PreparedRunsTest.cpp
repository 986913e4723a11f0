#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "TError.h"
#include "db/DBErrors.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Formulas.hpp"
#include "tests/du/PathColumns.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/du/RootWarnings.hpp"
#include "tests/support/Captured.hpp"

// The layers of a run change no verdict and no message, whatever happened to
// the calculator before. Also batches of paths.

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;
using Testing::BeginOfRun;
using Testing::Captured;
using Testing::InRun;
using Testing::kUnnamedType;
using Testing::Only;
using Testing::PathColumns;
using Testing::PathsAtHardware;
using Testing::RootWarnings;
using Testing::Tables;
using Testing::VariedDetector;
using Testing::VariedTables;
using Paths = std::vector<LightPath>;
using Verdicts = std::vector<eComponent>;

/// Paths around the detector, every eighth of a type that cannot be judged.
Paths PathsOfManyTypes(std::size_t count) {
  Paths paths = PathsAtHardware(VariedDetector(), 80).Make(count);
  constexpr std::array kUnusual = {kUninitialised, kUnnamedType,
                                   static_cast<eLightPathType>(-1)};
  for (std::size_t i = 0; i < count; i += 8) {
    paths[i].LightPathType = kUnusual[i / 8 % kUnusual.size()];
  }
  return paths;
}

Verdicts FindEach(const ShadowingCalculator& calculator, const Paths& paths) {
  Verdicts verdicts;
  for (const LightPath& path : paths) {
    verdicts.push_back(calculator.FindShadowing(path));
  }
  return verdicts;
}

Verdicts FindAll(const ShadowingCalculator& calculator, const Paths& paths,
                 std::size_t threads = 1) {
  Verdicts verdicts(paths.size());
  calculator.FindShadowing(paths.data(), paths.size(), verdicts.data(),
                           threads);
  return verdicts;
}

Verdicts FindAllInColumns(const ShadowingCalculator& calculator,
                          const Paths& paths, std::size_t threads = 1) {
  const PathColumns columns(paths);
  Verdicts verdicts(paths.size());
  calculator.FindShadowing(columns.Arrays(), paths.size(), verdicts.data(),
                           threads);
  return verdicts;
}

/// Expect a calculator to give the verdicts of its formulas, by every function
/// that judges paths, and return them.
Verdicts ExpectVerdictsOfTheFormulas(const ShadowingCalculator& calculator,
                                     const Paths& paths) {
  Verdicts expected;
  for (const LightPath& path : paths) {
    expected.push_back(Testing::FindByFormulas(calculator, path));
  }
  EXPECT_EQ(FindEach(calculator, paths), expected);
  calculator.MakeLayers();
  EXPECT_EQ(FindEach(calculator, paths), expected);
  EXPECT_EQ(FindAll(calculator, paths), expected);
  EXPECT_EQ(FindAllInColumns(calculator, paths), expected);
  return expected;
}

/// What a calculator writes during an action, and what ROOT writes.
struct Written {
  template <class Action>
  explicit Written(const Action& action) {
    const RootWarnings rootWarnings;
    const Captured warnings(warn);
    action();
    text = warnings.Text();
    root = RootWarnings::Messages().size();
  }
  bool IsNothing() const { return text.empty() && root == 0; }

  std::string text;
  std::size_t root = 0;
};

// Batches.

TEST(FindShadowingOfManyPaths, GivesEachPathItsOwnVerdict) {
  const Verdicts verdicts =
      ExpectVerdictsOfTheFormulas(VariedDetector(), PathsOfManyTypes(3000));
  std::map<eComponent, int> tally;
  for (const eComponent verdict : verdicts) ++tally[verdict];
  EXPECT_EQ(tally.size(), kShadowingComponents.size() + 1);
}

TEST(FindShadowingOfManyPaths, WritesAsManyVerdictsAsThereArePaths) {
  const Paths paths = PathsOfManyTypes(1000);
  const Verdicts expected = FindEach(VariedDetector(), paths);
  const PathColumns columns(paths);
  constexpr auto kUntouched = static_cast<eComponent>(99);
  for (const std::size_t count : {0U, 1U, 255U, 256U, 257U, 511U, 999U}) {
    SCOPED_TRACE(count);
    for (const std::size_t threads : {0U, 1U, 5U}) {
      Verdicts wanted(paths.size(), kUntouched);
      std::copy_n(expected.begin(), count, wanted.begin());
      Verdicts verdicts(paths.size(), kUntouched);
      VariedDetector().FindShadowing(paths.data(), count, verdicts.data(),
                                     threads);
      EXPECT_EQ(verdicts, wanted);
      verdicts.assign(paths.size(), kUntouched);
      VariedDetector().FindShadowing(columns.Arrays(), count, verdicts.data(),
                                     threads);
      EXPECT_EQ(verdicts, wanted);
    }
  }
}

TEST(FindShadowingOfManyPaths, ReadsNothingForZeroPaths) {
  for (const std::size_t threads : {0U, 1U, 3U}) {
    VariedDetector().FindShadowing(static_cast<const LightPath*>(nullptr), 0,
                                   nullptr, threads);
    VariedDetector().FindShadowing(LightPathArrays(), 0, nullptr, threads);
  }
}

TEST(FindShadowingOfManyPaths, GivesTheSameVerdictsOnSeveralThreads) {
  // More than one share of a thread; most paths are decided at once.
  Paths paths(50000, Testing::FreePath());
  Verdicts expected(paths.size(), eComponent::kNone);
  const Paths some = PathsOfManyTypes(1000);
  const Verdicts verdicts = FindEach(VariedDetector(), some);
  for (std::size_t i = 0; i < some.size(); ++i) {
    paths[i * 50 + i % 7] = some[i];
    expected[i * 50 + i % 7] = verdicts[i];
  }
  for (const std::size_t threads : {0U, 1U, 2U, 3U, 16U}) {
    SCOPED_TRACE(threads);
    EXPECT_EQ(FindAll(VariedDetector(), paths, threads), expected);
    EXPECT_EQ(FindAllInColumns(VariedDetector(), paths, threads), expected);
  }
}

TEST(FindShadowingOfManyPaths, FindsNothingBeforeTheFirstRun) {
  const Paths paths = PathsOfManyTypes(600);
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(ShadowingCalculator(), paths),
            Verdicts(paths.size(), eComponent::kNone));
}

TEST(FindShadowingOfManyPaths, KeepsTheFlags) {
  ShadowingCalculator calculator = VariedDetector();
  LightPathCalculator blocked = Testing::CalculatorOf(Testing::BlockedPath());
  ASSERT_TRUE(calculator.CheckForShadowing(blocked));
  FindAll(calculator, Paths(300, Testing::FreePath()));
  EXPECT_TRUE(calculator.IsShadowed());
  EXPECT_TRUE(calculator.IsShadowedByAVHDRope());
}

// Messages.

/// A detector with plates about which ROOT warns.
Tables WarningTables() {
  return VariedTables().SetPositions("GEO_LOCATIONS", "plates",
                                     {{0, 0, 600}, {0, 5860, 40}});
}

TEST(FindShadowing, IsSilentWhateverTheGeometryAndThePaths) {
  Paths paths = PathsOfManyTypes(1000);
  for (std::size_t i = 0; i < paths.size(); i += 5) {
    // Lines that miss, NaN, and huge numbers.
    paths[i].StartPos *= 3;
    paths[i].InitialDirection.RotateZ(1.5);
    paths[i].FinalDirection.SetX(i % 2 == 0 ? std::nan("") : 1e300);
  }
  for (const Tables& tables : {VariedTables(), WarningTables()}) {
    ShadowingCalculator calculator = InRun(tables);
    for (const bool areLayersOn : {true, false}) {
      calculator.UseLayers({areLayersOn, areLayersOn, areLayersOn});
      const Captured diagnostics(debug);
      const Written written([&] {
        FindEach(calculator, paths);
        FindAll(calculator, paths, 2);
        FindAllInColumns(calculator, paths);
      });
      EXPECT_TRUE(written.IsNothing()) << written.text << written.root;
      EXPECT_EQ(diagnostics.Text(), "");
    }
  }
}

TEST(FindShadowing, IsSilentWithDebugOnAfterABeginOfRunThatFailed) {
  ShadowingCalculator calculator = InRun(WarningTables());
  Tables().Load();
  EXPECT_THROW(calculator.BeginOfRun(), DBNotFoundError);
  const Captured diagnostics(debug);
  const Written written([&] { FindEach(calculator, PathsOfManyTypes(500)); });
  EXPECT_TRUE(written.IsNothing());
  EXPECT_EQ(diagnostics.Text(), "");
}

TEST(MakeLayers, IsSilentWithDebugOn) {
  ShadowingCalculator calculator = InRun(WarningTables());
  const Captured diagnostics(debug);
  const Written written([&] {
    calculator.SetAllGeometryTolerances(100.0);
    calculator.UseLayers({});
    calculator.MakeLayers();
  });
  EXPECT_TRUE(written.IsNothing());
  EXPECT_EQ(diagnostics.Text(), "");
}

/// The types about which a calculator may write messages.
std::vector<int> TypesWithMessages(const ShadowingCalculator& calculator) {
  std::vector<int> types;
  for (int type = -1; type <= kNumberOfLightPathTypes; ++type) {
    if (calculator.WritesMessages(static_cast<eLightPathType>(type))) {
      types.push_back(type);
    }
  }
  return types;
}

const std::vector<int> kUnusualTypes = {-1, kUninitialised,
                                        kNumberOfLightPathTypes};
const std::vector<int> kAllTypes = {-1,
                                    kUninitialised,
                                    kInnerAVToWater,
                                    kAVThroughInnerAVToWater,
                                    kAVToWater,
                                    kWaterThroughInnerAV,
                                    kWaterThroughAV,
                                    kWater,
                                    kWaterReflection,
                                    kNumberOfLightPathTypes};
const std::vector<int> kAllButWater = {-1,
                                       kUninitialised,
                                       kInnerAVToWater,
                                       kAVThroughInnerAVToWater,
                                       kAVToWater,
                                       kWaterThroughInnerAV,
                                       kWaterThroughAV,
                                       kWaterReflection,
                                       kNumberOfLightPathTypes};

TEST(WritesMessages, IsTrueForUnusualTypes) {
  EXPECT_EQ(TypesWithMessages(VariedDetector()), kUnusualTypes);
}

TEST(WritesMessages, IsTrueForAllTypesWhileDebugIsOn) {
  const Captured diagnostics(debug);
  EXPECT_EQ(TypesWithMessages(VariedDetector()), kAllTypes);
}

TEST(WritesMessages, IsTrueForCrossingPathsIfRootWarnsAboutAPlate) {
  ShadowingCalculator calculator = InRun(WarningTables());
  EXPECT_EQ(TypesWithMessages(calculator), kAllButWater);
  Tables tables = WarningTables();
  Testing::SwitchOff(tables, eComponent::kBellyPlate);
  BeginOfRun(calculator, tables);
  EXPECT_EQ(TypesWithMessages(calculator), kUnusualTypes);
}

TEST(WritesMessages, IsTheSameBeforeAndAfterLayersAreBuilt) {
  for (const Tables& tables : {VariedTables(), WarningTables()}) {
    const ShadowingCalculator calculator = InRun(tables);
    const std::vector<int> before = TypesWithMessages(calculator);
    calculator.MakeLayers();
    EXPECT_EQ(TypesWithMessages(calculator), before);
  }
}

TEST(WritesMessages, PredictsWhatCheckForShadowingWrites) {
  for (const Tables& tables : {VariedTables(), WarningTables()}) {
    ShadowingCalculator calculator = InRun(tables);
    std::map<int, bool> writes;
    for (const LightPath& path : PathsOfManyTypes(1000)) {
      LightPathCalculator lightPath = Testing::CalculatorOf(path);
      const Written written([&] { calculator.CheckForShadowing(lightPath); });
      writes[path.LightPathType] |= !written.IsNothing();
    }
    for (const auto& [type, isWritten] : writes) {
      SCOPED_TRACE(type);
      EXPECT_EQ(calculator.WritesMessages(static_cast<eLightPathType>(type)),
                isWritten);
    }
  }
}

TEST(CheckForShadowing, WritesDebugMessagesAndFindsTheSameWhileDebugIsOn) {
  ShadowingCalculator calculator = InRun(VariedTables());
  int told = 0;
  for (const LightPath& path : PathsOfManyTypes(700)) {
    LightPathCalculator lightPath = Testing::CalculatorOf(path);
    const Captured warnings(warn);
    const Captured diagnostics(debug);
    EXPECT_EQ(calculator.CheckForShadowing(lightPath),
              calculator.FindShadowing(path) != eComponent::kNone);
    told += diagnostics.Text().empty() ? 0 : 1;
  }
  EXPECT_GT(told, 0);
}

// Whatever happened to the calculator before.

TEST(SetAllGeometryTolerances, RebuildsTheLayers) {
  ShadowingCalculator calculator = VariedDetector();
  const Paths paths = PathsOfManyTypes(700);
  const Verdicts before = ExpectVerdictsOfTheFormulas(calculator, paths);
  for (const double tolerance : {400.0, 0.0, -12.0, -1000.0, 1e-170, 1e5, 1e300,
                                 HUGE_VAL, -HUGE_VAL, std::nan(""), 150.0}) {
    SCOPED_TRACE(tolerance);
    calculator.SetAllGeometryTolerances(tolerance);
    EXPECT_EQ(ExpectVerdictsOfTheFormulas(calculator, paths) == before,
              tolerance == 150.0);
  }
}

TEST(BeginOfRun, BuildsLayersForTheNewGeometry) {
  ShadowingCalculator calculator = VariedDetector();
  const Paths paths = PathsOfManyTypes(700);
  for (const eComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    BeginOfRun(calculator, Only({component}));
    ExpectVerdictsOfTheFormulas(calculator, paths);
  }
  // On a smaller vessel no path crosses where the map has answers.
  BeginOfRun(calculator, VariedTables().Set("SOLID", "acrylic_vessel_outer",
                                            "r_sphere", 3000.0));
  ExpectVerdictsOfTheFormulas(calculator, paths);
  BeginOfRun(calculator, Testing::VesselTables());
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(calculator, paths),
            Verdicts(paths.size(), eComponent::kNone));
}

/// Expect a calculator whose last BeginOfRun failed to have no layers left, and
/// to build them again in the next run.
void ExpectFormulasAlone(ShadowingCalculator& calculator,
                         const Verdicts& before) {
  const Paths paths = PathsOfManyTypes(700);
  EXPECT_NE(ExpectVerdictsOfTheFormulas(calculator, paths), before);
  // Since the plates are not known, a warning is possible.
  EXPECT_EQ(TypesWithMessages(calculator), kAllButWater);
  calculator.SetAllGeometryTolerances(100.0);
  ExpectVerdictsOfTheFormulas(calculator, paths);
  EXPECT_EQ(TypesWithMessages(calculator), kAllButWater);
  BeginOfRun(calculator, VariedTables());
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(calculator, paths), before);
  EXPECT_EQ(TypesWithMessages(calculator), kUnusualTypes);
}

TEST(BeginOfRun, UsesOnlyTheFormulasIfARadiusIsMissing) {
  ShadowingCalculator calculator = VariedDetector();
  const Verdicts before = FindEach(calculator, PathsOfManyTypes(700));
  VariedTables().RemoveField("SOLID", "acrylic_vessel_outer", "r_neck").Load();
  EXPECT_THROW(calculator.BeginOfRun(), DBNotFoundError);
  ExpectFormulasAlone(calculator, before);
}

[[noreturn]] void ThrowRootWarning(int /*level*/, Bool_t /*abort*/,
                                   const char* /*location*/, const char* text) {
  throw std::runtime_error(text);
}

TEST(BeginOfRun, UsesOnlyTheFormulasIfALoaderThrows) {
  ShadowingCalculator calculator = VariedDetector();
  const Verdicts before = FindEach(calculator, PathsOfManyTypes(700));
  WarningTables()
      .SetPositions("GEO_LOCATIONS", "plates", {{0, 0, -600}})
      .Load();
  const ErrorHandlerFunc_t previous = SetErrorHandler(ThrowRootWarning);
  {
    const Captured captured(warn);
    EXPECT_THROW(calculator.BeginOfRun(), std::runtime_error);
  }
  SetErrorHandler(previous);
  const Paths paths = PathsOfManyTypes(700);
  const RootWarnings warnings;
  EXPECT_NE(ExpectVerdictsOfTheFormulas(calculator, paths), before);
  EXPECT_EQ(TypesWithMessages(calculator), kAllButWater);
}

TEST(Copies, KeepTheirOwnLayers) {
  const Paths paths = PathsOfManyTypes(700);
  const Verdicts expected = FindEach(VariedDetector(), paths);
  std::optional<ShadowingCalculator> first = VariedDetector();
  ShadowingCalculator second = *first;
  first->SetAllGeometryTolerances(-1000.0);
  EXPECT_NE(FindAll(*first, paths), expected);
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(second, paths), expected);
  first.reset();
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(second, paths), expected);

  ShadowingCalculator third = InRun(Testing::VesselTables());
  third = second;
  second.SetAllGeometryTolerances(500.0);
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(third, paths), expected);
  const ShadowingCalculator fourth = std::move(third);
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(fourth, paths), expected);
}

TEST(Copies, LeaveACalculatorThatIsMovedFromWithNothingToFind) {
  ShadowingCalculator source = VariedDetector();
  const ShadowingCalculator target = std::move(source);
  const Paths paths = PathsOfManyTypes(300);
  // NOLINTNEXTLINE(bugprone-use-after-move): only its own lists are gone.
  ExpectVerdictsOfTheFormulas(source, paths);
  BeginOfRun(source, VariedTables());
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(source, paths),
            FindEach(target, paths));
}

}  // namespace
}  // namespace ZARN::DU

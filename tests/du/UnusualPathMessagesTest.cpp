#include <gtest/gtest.h>

#include <string>

#include "du/ShadowingCalculator.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Paths.hpp"

namespace ZARN::DU {
namespace {

using Testing::AllAt;
using Testing::CalculatorOf;
using Testing::Captured;
using Testing::DetectorTables;
using Testing::InRun;
using Testing::kUnnamedType;
using Testing::NamedPath;
using Testing::Only;
using Testing::SwitchOff;

// Users search their logs for these texts, so their mistakes are intentional:
// several tests print the name of another test, and "light" is repeated.

const std::string kUninitialisedAVHDRope =
    "ShadowingCalculator::CheckAVHDRopeShadowing: LightPathCalculator object "
    "is "
    "uninitialised, call LightPathCalculator::CalcByPosition first before "
    "checking for shadowing!\n";
const std::string kUninitialisedSupportRope =
    "ShadowingCalculator::CheckForSupportRopeShadowing: LightPath is "
    "uninitialised, call CalcByPosition first before checking for shadowing!\n";
const std::string kUninitialisedBellyPlate =
    "ShadowingCalculator::CheckForBellyPlateShadowing: LightPath is "
    "uninitialised, call CalcByPosition first before checking for shadowing!\n";
const std::string kUninitialisedNCDAnchor =
    "ShadowingCalculator::CheckForSupportRopeShadowing: LightPath is "
    "uninitialised, call CalcByPosition first before checking for shadowing!\n";
const std::string kUninitialisedAVPipe =
    "ShadowingCalculator::CheckForAVHDRopeShadowing: LightPath is "
    "uninitialised, call CalcByPosition first before checking for shadowing!\n";
const std::string kUninitialisedNeckBoss =
    "ShadowingCalculator::CheckForAVHDRopeShadowing: LightPath is "
    "uninitialised, call CalcByPosition first before checking for shadowing!\n";

std::string UnknownToAVHDRopes(const std::string& name) {
  return "ShadowingCalculator::CheckForAVHDRopeShadowing: Error! Cannot "
         "calculate shadowing for this light light path type: " +
         name + "\n";
}
std::string UnknownToSupportRopes(const std::string& name) {
  return "ShadowingCalculator::CheckForSupportRopeShadowing: Error! Cannot "
         "calculate shadowing for this light light path type: " +
         name + "\n";
}
std::string UnknownToBellyPlates(const std::string& name) {
  return "ShadowingCalculator::CheckForBellyPlateShadowing: Error! Cannot "
         "calculate shadowing for this light light path type: " +
         name + "\n";
}
std::string UnknownToAll(const std::string& name) {
  return UnknownToAVHDRopes(name) + UnknownToSupportRopes(name) +
         UnknownToBellyPlates(name);
}

/// The messages of a calculator about a path, and whether it is blocked.
struct Answer {
  bool isShadowed;
  std::string text;
};

bool operator==(const Answer& a, const Answer& b) {
  return a.isShadowed == b.isShadowed && a.text == b.text;
}

void PrintTo(const Answer& answer, std::ostream* output) {
  *output << (answer.isShadowed ? "shadowed" : "free") << ", \"" << answer.text
          << "\"";
}

Answer Ask(ShadowingCalculator& calculator, LightPathCalculator path) {
  const Captured captured(warn);
  const bool isShadowed = calculator.CheckForShadowing(path);
  return {isShadowed, captured.Text()};
}

Answer AskOnly(eShadowingComponent component, const LightPathCalculator& path) {
  ShadowingCalculator calculator = InRun(Only({component}));
  return Ask(calculator, path);
}

TEST(UnusualPathMessages, DifferByTestForAnUninitialisedPath) {
  const LightPathCalculator path;
  const auto ask = [&](eShadowingComponent component) {
    return AskOnly(component, path);
  };
  EXPECT_EQ(ask(eShadowingComponent::kAVHDRope),
            (Answer{false, kUninitialisedAVHDRope}));
  EXPECT_EQ(ask(eShadowingComponent::kSupportRope),
            (Answer{false, kUninitialisedSupportRope}));
  EXPECT_EQ(ask(eShadowingComponent::kBellyPlate),
            (Answer{false, kUninitialisedBellyPlate}));
  EXPECT_EQ(ask(eShadowingComponent::kNCDAnchor),
            (Answer{false, kUninitialisedNCDAnchor}));
  EXPECT_EQ(ask(eShadowingComponent::kAVPipe),
            (Answer{false, kUninitialisedAVPipe}));
  EXPECT_EQ(ask(eShadowingComponent::kNeckBoss),
            (Answer{false, kUninitialisedNeckBoss}));
}

TEST(UnusualPathMessages, ReportAnUninitialisedPathInTheOrderOfTheTests) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  EXPECT_EQ(
      Ask(calculator, LightPathCalculator()),
      (Answer{false, kUninitialisedAVHDRope + kUninitialisedSupportRope +
                         kUninitialisedBellyPlate + kUninitialisedNCDAnchor +
                         kUninitialisedAVPipe + kUninitialisedNeckBoss}));
}

TEST(UnusualPathMessages, ReportAPathNamedUninitialisedWhateverItsType) {
  const LightPathCalculator path =
      NamedPath("Light Path Uninitialised", Testing::BlockedPath());
  EXPECT_EQ(AskOnly(eShadowingComponent::kNeckBoss, path),
            (Answer{false, kUninitialisedNeckBoss}));
}

TEST(UnusualPathMessages, ReportTheNameWithoutItsSpaceAsAnUnknownType) {
  const std::string name = "LightPath Uninitialised";
  const LightPathCalculator path = NamedPath(name);
  const auto ask = [&](eShadowingComponent component) {
    return AskOnly(component, path);
  };
  EXPECT_EQ(ask(eShadowingComponent::kAVHDRope),
            (Answer{false, UnknownToAVHDRopes(name)}));
  EXPECT_EQ(ask(eShadowingComponent::kSupportRope),
            (Answer{false, UnknownToSupportRopes(name)}));
  EXPECT_EQ(ask(eShadowingComponent::kBellyPlate),
            (Answer{false, UnknownToBellyPlates(name)}));
  // The others do not know this name, and have no message for unknown names.
  EXPECT_EQ(ask(eShadowingComponent::kNCDAnchor), (Answer{false, ""}));
  EXPECT_EQ(ask(eShadowingComponent::kAVPipe), (Answer{false, ""}));
  EXPECT_EQ(ask(eShadowingComponent::kNeckBoss), (Answer{true, ""}));
}

TEST(UnusualPathMessages, QuoteTheNameOfAnUnknownType) {
  const std::string name = "Water->Ice->Water";
  const LightPathCalculator path = NamedPath(name);
  const auto ask = [&](eShadowingComponent component) {
    return AskOnly(component, path);
  };
  EXPECT_EQ(ask(eShadowingComponent::kAVHDRope),
            (Answer{false, UnknownToAVHDRopes(name)}));
  EXPECT_EQ(ask(eShadowingComponent::kSupportRope),
            (Answer{false, UnknownToSupportRopes(name)}));
  EXPECT_EQ(ask(eShadowingComponent::kBellyPlate),
            (Answer{false, UnknownToBellyPlates(name)}));
  EXPECT_EQ(ask(eShadowingComponent::kNCDAnchor), (Answer{false, ""}));
  EXPECT_EQ(ask(eShadowingComponent::kAVPipe), (Answer{false, ""}));
  EXPECT_EQ(ask(eShadowingComponent::kNeckBoss), (Answer{true, ""}));
}

TEST(UnusualPathMessages, QuoteAnEmptyNameForATypeWithoutAName) {
  const LightPathCalculator path =
      CalculatorOf(AllAt(kUnnamedType, Testing::kBlockedSpot));
  EXPECT_EQ(AskOnly(eShadowingComponent::kBellyPlate, path),
            (Answer{false, UnknownToBellyPlates("")}));
}

TEST(UnusualPathMessages, ReportAnUnknownTypeInTheOrderOfTheTests) {
  Testing::Tables tables = DetectorTables();
  SwitchOff(tables, eShadowingComponent::kNeckBoss);
  ShadowingCalculator calculator = InRun(tables);
  for (const char* name : {"LightPath Uninitialised", "av->water", ""}) {
    EXPECT_EQ(Ask(calculator, NamedPath(name)),
              (Answer{false, UnknownToAll(name)}));
  }
}

TEST(UnusualPathMessages, AreWrittenEvenIfALaterTestFindsThePathBlocked) {
  // It is the neck boss, which covers the centre.
  ShadowingCalculator calculator = InRun(DetectorTables());
  EXPECT_EQ(Ask(calculator, NamedPath("")), (Answer{true, UnknownToAll("")}));
  EXPECT_TRUE(calculator.IsShadowedByNeckBoss());
  const std::string misspelt = "LightPath Uninitialised";
  EXPECT_EQ(Ask(calculator, NamedPath(misspelt)),
            (Answer{true, UnknownToAll(misspelt)}));
}

TEST(UnusualPathMessages, AreNotWrittenByATestThatFindsThePathBlocked) {
  // With rope ends above the centre the first test finds a path of unknown type
  // blocked.
  Testing::Tables tables = DetectorTables();
  tables.SetPositions("SOLID", "down_rope",
                      {{0, 5880, -6138},
                       {0, 5880, 5},
                       {0, 3000, 5022},
                       {-2550, -1580, 5022},
                       {-5000, -3094, 5},
                       {-5000, -3094, -6138}},
                      "rope_");
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_EQ(Ask(calculator, NamedPath("no type")), (Answer{true, ""}));
  EXPECT_TRUE(calculator.IsShadowedByAVHDRope());
  // The name without its space is reported before anything is tested.
  const std::string misspelt = "LightPath Uninitialised";
  EXPECT_EQ(Ask(calculator, NamedPath(misspelt)),
            (Answer{true, UnknownToAll(misspelt)}));
  EXPECT_TRUE(calculator.IsShadowedByNeckBoss());
}

TEST(UnusualPathMessages, AreNotWrittenBySupportRopesBelowTheCentre) {
  Testing::Tables tables = Only({eShadowingComponent::kSupportRope});
  tables.SetPositions("GEO_LOCATIONS", "rope_anchors", {{5920, 0, -5}});
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_EQ(Ask(calculator, NamedPath("no type")), (Answer{true, ""}));
  const std::string misspelt = "LightPath Uninitialised";
  EXPECT_EQ(Ask(calculator, NamedPath(misspelt)),
            (Answer{false, UnknownToSupportRopes(misspelt)}));
}

TEST(UnusualPathMessages, AreNotWrittenByPlatesAtTheEquator) {
  Testing::Tables tables = Only({eShadowingComponent::kBellyPlate});
  tables.SetPositions("GEO_LOCATIONS", "plates", {{5860, 0, 0}});
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_EQ(Ask(calculator, NamedPath("no type")), (Answer{true, ""}));
  const std::string misspelt = "LightPath Uninitialised";
  EXPECT_EQ(Ask(calculator, NamedPath(misspelt)),
            (Answer{false, UnknownToBellyPlates(misspelt)}));
}

TEST(UnusualPathMessages, ReportAnUnknownTypeEvenWithoutAnyPlate) {
  Testing::Tables tables = Only({eShadowingComponent::kBellyPlate});
  tables.SetPositions("GEO_LOCATIONS", "plates", {});
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_EQ(Ask(calculator, NamedPath("no type")),
            (Answer{false, UnknownToBellyPlates("no type")}));
  EXPECT_EQ(Ask(calculator, CalculatorOf(Testing::BlockedPath())),
            (Answer{false, ""}));
}

TEST(UnusualPathMessages, AreNotWrittenForAnyComputedTypeOfPath) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  for (int type = kUninitialised + 1; type < kNumberOfLightPathTypes; ++type) {
    for (const TVector3& spot : {Testing::kBlockedSpot, Testing::kFreeSpot}) {
      const auto path = AllAt(static_cast<eLightPathType>(type), spot);
      EXPECT_EQ(Ask(calculator, CalculatorOf(path)).text, "");
    }
  }
}

TEST(UnusualPathMessages, ReportANameThatDiffersInCaseAsAnUnknownType) {
  const LightPathCalculator path =
      NamedPath("av->water", Testing::BlockedPath());
  EXPECT_EQ(AskOnly(eShadowingComponent::kBellyPlate, path),
            (Answer{false, UnknownToBellyPlates("av->water")}));
  EXPECT_EQ(AskOnly(eShadowingComponent::kAVPipe, path), (Answer{false, ""}));
  const LightPathCalculator rightCase =
      NamedPath("AV->Water", Testing::BlockedPath());
  EXPECT_EQ(AskOnly(eShadowingComponent::kAVPipe, rightCase),
            (Answer{true, ""}));
}

TEST(UnusualPathMessages, KeepANewlineWithinAName) {
  EXPECT_EQ(AskOnly(eShadowingComponent::kBellyPlate, NamedPath("a\nb\n")),
            (Answer{false, UnknownToBellyPlates("a\nb\n")}));
}

}  // namespace
}  // namespace ZARN::DU

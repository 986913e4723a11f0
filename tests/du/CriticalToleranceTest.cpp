#include "du/hardware/CriticalTolerance.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::Below;
using Testing::BlockedPath;
using Testing::Detector;
using Testing::DetectorTables;
using Testing::InRun;
using Testing::InWater;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::kUnnamedType;
using Testing::OneCrossing;
using Testing::Only;
using Testing::PathsAtHardware;
using Testing::Tables;
using Testing::VariedTables;

using eComponent = eShadowingComponent;

/// Sets the tolerances of the hardware, which would take long to copy.
bool IsBlockedAt(double tolerance, const LightPath& path, eComponent component,
                 Hardware& hardware) {
  hardware.SetAllTolerances(tolerance);
  return hardware.IsBlockedBy(component, Testing::SegmentsOf(path),
                              eDiagnostics::kSilent);
}

TEST(FindCriticalTolerance, IsTheDistanceToAnAnchorBeyondItsHalfHeight) {
  const auto critical = [](double distance) {
    return Detector().FindCriticalTolerance(
        OneCrossing({0, -4100, -4100 - distance}), eComponent::kNCDAnchor);
  };
  // Strictly nearer: so the next double.
  EXPECT_EQ(critical(210.0), std::nextafter(150.0, 151.0));
  EXPECT_GT(critical(60.0), 0.0);
  EXPECT_LT(critical(60.0), 1e-13);
  EXPECT_EQ(critical(0.0), std::nextafter(-60.0, 0.0));
}

TEST(FindCriticalTolerance, IsWhereTheVerdictOfEveryComponentTurns) {
  const ShadowingCalculator detector = InRun(VariedTables());
  Hardware hardware = detector.GetHardware();
  std::map<eComponent, int> finite;
  for (const LightPath& path : PathsAtHardware(detector, 17).Make(1000)) {
    const CriticalTolerances tolerances = detector.FindCriticalTolerances(path);
    for (const eComponent component : kShadowingComponents) {
      const double critical = tolerances.Of(component);
      EXPECT_EQ(critical, detector.FindCriticalTolerance(path, component));
      if (std::isinf(critical)) continue;
      ++finite[component];
      EXPECT_TRUE(IsBlockedAt(critical, path, component, hardware));
      EXPECT_FALSE(IsBlockedAt(Below(critical), path, component, hardware));
    }
  }
  EXPECT_EQ(finite.size(), 4U) << "all but pipes and boss";
  for (const auto& [component, count] : finite) {
    EXPECT_GT(count, 100) << NameOf(component);
  }
}

TEST(FindCriticalTolerance, DoesNotDependOnTheToleranceThatIsSet) {
  ShadowingCalculator detector = Detector();
  detector.SetAllGeometryTolerances(-1e9);
  EXPECT_EQ(detector.FindCriticalTolerances(BlockedPath()).of,
            Detector().FindCriticalTolerances(BlockedPath()).of);
}

TEST(FindCriticalTolerance, IsInfiniteWhereNoToleranceMatters) {
  const auto critical = [](const LightPath& path, eComponent component) {
    return Detector().FindCriticalTolerance(path, component);
  };
  for (const eComponent component :
       {eComponent::kAVPipe, eComponent::kNeckBoss}) {
    EXPECT_EQ(critical(BlockedPath(), component), -kInfinity);
    EXPECT_EQ(critical(OneCrossing({0, -100, -5859}), component), kInfinity);
  }
  // Beyond the ends of the ropes, below their feet, in water.
  const LightPath steep = OneCrossing({0, -3000, -5034}, {0, 0.5, -0.87});
  EXPECT_EQ(critical(steep, eComponent::kAVHDRope), kInfinity);
  EXPECT_EQ(critical(steep, eComponent::kSupportRope), kInfinity);
  const LightPath inside = InWater({0, 100, 0}, {0, 200, 0}, {0, 1, 0});
  for (const eComponent component : kShadowingComponents) {
    EXPECT_EQ(critical(inside, component), kInfinity) << NameOf(component);
  }
  EXPECT_EQ(critical(BlockedPath(), eComponent::kNone), kInfinity);
}

TEST(FindCriticalTolerance, IsPlusInfinityForComponentsThatAreOff) {
  const ShadowingCalculator detector = InRun(Only({eComponent::kAVPipe}));
  const CriticalTolerances found =
      detector.FindCriticalTolerances(BlockedPath());
  for (const eComponent component : kShadowingComponents) {
    EXPECT_EQ(found.Of(component),
              component == eComponent::kAVPipe ? -kInfinity : kInfinity);
  }
  EXPECT_EQ(found.By(), eComponent::kAVPipe);
}

TEST(FindCriticalTolerance, HasADefinedResultForAnyCoordinates) {
  for (const double x : {kNaN, kInfinity, -kInfinity, 1e200, 1e308, 5e-324}) {
    for (int type = 0; type <= kNumberOfLightPathTypes; ++type) {
      const LightPath path =
          Testing::AllAt(static_cast<eLightPathType>(type), {x, x, x});
      const CriticalTolerances found = Detector().FindCriticalTolerances(path);
      for (const eComponent component : kShadowingComponents) {
        EXPECT_FALSE(std::isnan(found.Of(component)));
      }
    }
  }
}

TEST(FindCriticalTolerance, JudgesAnUnknownTypeAtTheCentre) {
  const CriticalTolerances found = Detector().FindCriticalTolerances(
      Testing::AllAt(kUnnamedType, {1, 2, 3}));
  EXPECT_EQ(found.By(), eComponent::kNeckBoss);
  EXPECT_EQ(found.Smallest(), -kInfinity);
}

TEST(FindCriticalTolerance, OfAPlateIsInTheRangeWhereItGrows) {
  // At the centre of a plate of 1,200 mm. Below the range it is blocked again.
  Tables tables = DetectorTables();
  tables.SetPositions("GEO_LOCATIONS", "plates", {{5860, 0, 0}});
  const ShadowingCalculator detector = InRun(tables);
  Hardware hardware = detector.GetHardware();
  const LightPath path = OneCrossing({5860, 0, 0});
  const auto range = detector.GetMonotonicTolerances(eComponent::kBellyPlate);
  const double halfWidth = std::atan(600.0 / 5860.0);
  EXPECT_NEAR(range.lowest, -halfWidth * 5860.0, 1e-9);
  EXPECT_NEAR(range.highest, (M_PI - halfWidth) * 5860.0, 1e-9);
  EXPECT_TRUE(IsBlockedAt(-599.0, path, eComponent::kBellyPlate, hardware));
  EXPECT_FALSE(
      IsBlockedAt(range.lowest, path, eComponent::kBellyPlate, hardware));
  EXPECT_TRUE(IsBlockedAt(-597.0, path, eComponent::kBellyPlate, hardware));
  const double critical =
      detector.FindCriticalTolerance(path, eComponent::kBellyPlate);
  EXPECT_GT(critical, range.lowest);
  EXPECT_NEAR(critical, range.lowest, 1e-3) << "an arc cosine near 0";
}

TEST(MonotonicTolerances, AreAllFiniteOnesButForPlates) {
  for (const eComponent component :
       {eComponent::kAVHDRope, eComponent::kNeckBoss}) {
    const auto range = Detector().GetMonotonicTolerances(component);
    EXPECT_TRUE(range.Holds(-1e308));
    EXPECT_TRUE(range.Holds(1e308));
    EXPECT_FALSE(range.Holds(kInfinity));
    EXPECT_FALSE(range.Holds(kNaN));
  }
}

TEST(CriticalTolerances, NamesTheFirstComponentAsTheToleranceGrows) {
  CriticalTolerances tolerances = {{5.0, 3.0, 3.0, kInfinity, 4.0, 9.0}};
  EXPECT_EQ(tolerances.By(), eComponent::kSupportRope);
  EXPECT_EQ(tolerances.Smallest(), 3.0);
  EXPECT_EQ(tolerances.VerdictAt(2.0), eComponent::kNone);
  EXPECT_EQ(tolerances.VerdictAt(3.0), eComponent::kSupportRope);
  EXPECT_EQ(tolerances.VerdictAt(5.0), eComponent::kAVHDRope);
  tolerances.of.fill(kInfinity);
  EXPECT_EQ(tolerances.By(), eComponent::kNone);
  EXPECT_EQ(tolerances.Smallest(), kInfinity);
}

TEST(CriticalTolerances, GiveTheVerdictAtAnyTolerance) {
  ShadowingCalculator detector = InRun(VariedTables());
  const auto paths = PathsAtHardware(detector, 19).Make(500);
  std::vector<CriticalTolerances> found;
  found.reserve(paths.size());
  for (const LightPath& path : paths) {
    found.push_back(detector.FindCriticalTolerances(path));
  }
  for (const double tolerance : {-500.0, -10.0, 0.0, 33.0, 200.0, 2000.0}) {
    detector.SetAllGeometryTolerances(tolerance);
    for (std::size_t i = 0; i < paths.size(); ++i) {
      EXPECT_EQ(found[i].VerdictAt(tolerance),
                detector.FindShadowing(paths[i]));
    }
  }
}

}  // namespace
}  // namespace ZARN::DU

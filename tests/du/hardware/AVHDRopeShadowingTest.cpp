#include "du/hardware/AVHDRopeShadowing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/LegTests.hpp"
#include "tests/du/Directions.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/UsualVessel.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::FindExact;
using Testing::InWater;
using Testing::kTolerance;
using Testing::OneCrossing;
using Testing::SegmentsOf;

// A power of two, so that lengths become angles without rounding.
constexpr double kCylinderRadius = 4096.0;
const TVector3 kOrigin(0, 0, 0);
const TVector3 kDown(0, 0, -1.0);

/// A model whose vertical ropes stand at azimuth 0, from the template's second
/// end, and at 90 degrees, from its first end, which is rotated by half a turn.
/// The ropes end at z = 0; their only surface point is at the top of the
/// vessel.
AVHDRopeModel TwoVerticalRopes() {
  AVHDRopeModel model;
  model.AVHDRopePositions.resize(6);
  model.AVHDRopePositions[4] = {kCylinderRadius, 0, 0};
  model.AVHDRopePositions[1] = {0, -kCylinderRadius, 0};
  model.AVHDRopeRolls = {0.0};
  model.AVHDRopeEndPoints = {{kCylinderRadius, 0, 0}};
  model.AVHDRopeSurfacePoints = {{0, 0, 5860}};
  return model;
}

bool IsShadowed(const AVHDRopeModel& model, const LightPath& path,
                double tolerance = kTolerance) {
  return CheckForAVHDRopeShadowing(model, tolerance, SegmentsOf(path));
}

TVector3 CrossingOf(const TVector3& start, const TVector3& direction) {
  return VectorToCylinderEdge(start, direction, kOrigin, kCylinderRadius);
}

double FootHeight() {
  return VectorToSphereEdge({kCylinderRadius, 0, 0}, kDown, 8500.0, false).Z();
}

TVector3 AtAzimuth(double phi, double perp = kCylinderRadius) {
  return {perp * std::cos(phi), perp * std::sin(phi), 0};
}

// Segments that start at or above the end of the ropes.

TEST(AVHDRopeShadowing, TestsASegmentFromExactlyTheRopeEndAgainstTheSurface) {
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopeEndPoints[0].SetXYZ(kCylinderRadius, 0, 5.0);
  model.AVHDRopeSurfacePoints = {{100, 0, 5}};
  // Heads for no vertical rope, but starts at the surface point.
  EXPECT_TRUE(IsShadowed(model, OneCrossing({100, 0, 5.0}, {-1, 0, 0})));
  EXPECT_FALSE(
      IsShadowed(model, OneCrossing({100, 0, Below(5.0)}, {-1, 0, 0})));
  // Heads for a vertical rope, but starts far from the surface point.
  EXPECT_FALSE(IsShadowed(model, OneCrossing({-100, 0, 5.0}, {1, 0, 0}), 10.0));
  EXPECT_TRUE(
      IsShadowed(model, OneCrossing({-100, 0, Below(5.0)}, {1, 0, 0}), 10.0));
}

TEST(AVHDRopeShadowing, MissesASurfacePointAtExactlyRadiusAndTolerance) {
  AVHDRopeModel model = TwoVerticalRopes();
  const TVector3 start(90, 30, 5800);
  const double distance = (start - model.AVHDRopeSurfacePoints[0]).Mag();
  model.AVHDRopeRadius = 0.5 * distance;
  const LightPath path = OneCrossing(start);
  EXPECT_FALSE(IsShadowed(model, path, 0.5 * distance));
  model.AVHDRopeRadius = 0.0;
  EXPECT_FALSE(IsShadowed(model, path, distance));
  EXPECT_TRUE(IsShadowed(model, path, Above(distance)));
}

TEST(AVHDRopeShadowing, MissesASurfacePointJustBeyondItsReach) {
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopeSurfacePoints = {{0, 0, 0}};
  model.AVHDRopeRadius = 12.0;
  EXPECT_FALSE(IsShadowed(model, OneCrossing({0, 0, 162})));
  EXPECT_TRUE(IsShadowed(model, OneCrossing({0, 0, Below(162.0)})));
  EXPECT_FALSE(IsShadowed(model, OneCrossing({0, 0, Above(162.0)})));
}

TEST(AVHDRopeShadowing, TestsEverySurfacePoint) {
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopeSurfacePoints = {
      {0, 0, 5860}, {3000, 0, 5000}, {0, 3000, 5000}};
  for (const TVector3& point : model.AVHDRopeSurfacePoints) {
    EXPECT_TRUE(IsShadowed(model, OneCrossing(point)));
  }
  EXPECT_FALSE(IsShadowed(model, OneCrossing({-3000, 0, 5000})));
}

TEST(AVHDRopeShadowing, TestsEveryCrossingOfEachTypeAgainstTheSurface) {
  const auto deciding = Testing::DecidingPoints(
      {0, 0, 5860}, {3000, 0, 5000}, [](const WaterSegments& path) {
        return CheckForAVHDRopeShadowing(TwoVerticalRopes(), kTolerance, path);
      });
  EXPECT_EQ(deciding, Testing::EveryCrossing());
}

// Segments that start below the end of the ropes.

const TVector3 kBelowTheEnds(100, 100, -1);
// Away from both ropes, forwards and backwards.
const TVector3 kToNoRope = AtAzimuth(-kPi / 4, 1.0);

TEST(AVHDRopeShadowing, FollowsEverySegmentOfEachTypeToTheVerticalRopes) {
  // The path in water leaves the cylinder.
  const auto deciding = Testing::DecidingDirections(
      kBelowTheEnds, {0, 9000, -1}, {1, 0, 0}, kToNoRope,
      [](const WaterSegments& path) {
        return CheckForAVHDRopeShadowing(TwoVerticalRopes(), kTolerance, path);
      });
  EXPECT_EQ(deciding, Testing::EverySegment());
}

TEST(AVHDRopeShadowing, TestsTheReflectionPointInBothDirections) {
  LightPath path = Testing::AllAt(kWaterReflection, kBelowTheEnds);
  path.InitialDirection = path.FinalDirection = kToNoRope;
  EXPECT_FALSE(IsShadowed(TwoVerticalRopes(), path));
  path.InitialDirection = {-1, 0, 0};
  EXPECT_TRUE(IsShadowed(TwoVerticalRopes(), path));
  path.InitialDirection = kToNoRope;
  path.FinalDirection = {0, 1, 0};
  EXPECT_TRUE(IsShadowed(TwoVerticalRopes(), path));
}

TEST(AVHDRopeShadowing, MissesARopeAtExactlyTheAngleOfRadiusAndTolerance) {
  const TVector3 start(1000, 0, -1);
  for (const TVector3& direction :
       {AtAzimuth(0.03, 1.0), AtAzimuth(1.5, 1.0)}) {
    AVHDRopeModel model = TwoVerticalRopes();
    const TVector3 crossing = Flattened(CrossingOf(start, direction));
    const TVector3 rope4 = model.AVHDRopePositions[4];
    const TVector3 rope1 = Rotated(model.AVHDRopePositions[1], kPi);
    const double angle = std::min(crossing.Angle(rope4), crossing.Angle(rope1));
    const LightPath path = OneCrossing(start, direction);
    const double limit = angle * kCylinderRadius;
    model.AVHDRopeRadius = 0.5 * limit;
    EXPECT_FALSE(IsShadowed(model, path, 0.5 * limit));
    model.AVHDRopeRadius = 0.0;
    EXPECT_FALSE(IsShadowed(model, path, limit));
    EXPECT_TRUE(IsShadowed(model, path, Above(limit)));
    model.AVHDRopeRadius = Above(limit);
    EXPECT_TRUE(IsShadowed(model, path, 0.0));
  }
}

TEST(AVHDRopeShadowing, ConvertsTheToleranceAtTheRopeEndsFullDistance) {
  // The tolerance becomes an angle at the distance of the rope end from the
  // centre, including its height.
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopeEndPoints[0].SetXYZ(0, 0, kCylinderRadius);
  const TVector3 start(1000, 0, -1);
  const TVector3 direction = AtAzimuth(0.03, 1.0);
  const TVector3 crossing = Flattened(CrossingOf(start, direction));
  const double limit =
      crossing.Angle(model.AVHDRopePositions[4]) * kCylinderRadius;
  EXPECT_FALSE(IsShadowed(model, OneCrossing(start, direction), limit));
  EXPECT_TRUE(IsShadowed(model, OneCrossing(start, direction), Above(limit)));
}

TEST(AVHDRopeShadowing, RotatesTheTemplatesEndsByEveryRoll) {
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopeRolls = {0.0, 2.0};
  const auto isShadowedTowards = [&](double azimuth) {
    return IsShadowed(model, OneCrossing({0, 0, -1}, AtAzimuth(azimuth, 1.0)));
  };
  for (const double rope : {0.0, kHalfPi, 2.0, kHalfPi + 2.0}) {
    EXPECT_TRUE(isShadowedTowards(rope));
    EXPECT_FALSE(isShadowedTowards(rope + 0.1));
    EXPECT_FALSE(isShadowedTowards(rope - 0.1));
  }
}

TEST(AVHDRopeShadowing, ComparesRopesAtTheirHeightWithAFlattenedCrossing) {
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopePositions[4].SetZ(1000.0);  // 0.24 rad above the horizon
  const LightPath path = OneCrossing({0, 0, -1}, {1, 0, 0.3});
  EXPECT_FALSE(IsShadowed(model, path));
  EXPECT_TRUE(IsShadowed(model, path, 1100.0));
}

/// The height at which a steep line from far on the other side meets the
/// cylinder: about that of the ropes' feet.
double HeightFrom(double x) { return CrossingOf({x, 0, -1}, {1, 0, 0.95}).Z(); }

TEST(AVHDRopeShadowing, BlocksACrossingDownToExactlyTheFeet) {
  const auto shadowedFrom = [](const std::optional<double>& x) {
    EXPECT_TRUE(x.has_value());
    const TVector3 start(x.value_or(0.0), 0, -1);
    return IsShadowed(TwoVerticalRopes(), OneCrossing(start, {1, 0, 0.95}));
  };
  const double depth = -FootHeight();
  EXPECT_TRUE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, depth)));
  EXPECT_FALSE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, Above(depth))));
  EXPECT_TRUE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, Below(depth))));
}

TEST(AVHDRopeShadowing, BlocksNothingWithoutRollsBelowTheEnds) {
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopeRolls.clear();
  EXPECT_FALSE(IsShadowed(model, OneCrossing({0, 0, -1}, {1, 0, 0}), 1e6));
  EXPECT_FALSE(
      IsShadowed(model, InWater({0, 0, 0}, {9000, 0, 0}, {1, 0, 0}), 1e6));
}

// Paths wholly in water.

TEST(AVHDRopeShadowing, MissesAPathInWaterWithBothEndsInsideTheRopes) {
  EXPECT_FALSE(IsShadowed(TwoVerticalRopes(),
                          InWater({0, 0, 0}, {4095, 0, 0}, {1, 0, 0})));
}

TEST(AVHDRopeShadowing, FollowsAPathInWaterFromItsStartInside) {
  const AVHDRopeModel model = TwoVerticalRopes();
  EXPECT_TRUE(IsShadowed(model, InWater({0, 0, 9}, {9000, 0, 9}, {1, 0, 0})));
  EXPECT_FALSE(IsShadowed(model, InWater({0, 0, 9}, {9000, 0, 9}, kToNoRope)));
}

TEST(AVHDRopeShadowing, FollowsAPathInWaterBackFromItsEndInside) {
  const AVHDRopeModel model = TwoVerticalRopes();
  EXPECT_TRUE(IsShadowed(model, InWater({9000, 0, 9}, {0, 0, 9}, {-1, 0, 0})));
  EXPECT_FALSE(IsShadowed(model, InWater({9000, 0, 9}, {0, 0, 9}, {1, 0, 0})));
}

TEST(AVHDRopeShadowing, UsesTheFlattenedDistanceOfTheEndsOfAPathInWater) {
  // Outside the radius of the cylinder only if the height is included.
  EXPECT_FALSE(IsShadowed(TwoVerticalRopes(),
                          InWater({0, 0, 0}, {4000, 0, 4000}, {1, 0, 0})));
  EXPECT_TRUE(IsShadowed(TwoVerticalRopes(),
                         InWater({4000, 0, 4000}, {4100, 0, 0}, {1, 0, 0})));
}

TEST(AVHDRopeShadowing, MissesAPathInWaterWithAnEndExactlyOnTheRopes) {
  const std::vector<double> places = {0.0, Below(kCylinderRadius),
                                      kCylinderRadius, Above(kCylinderRadius),
                                      9000.0};
  for (const double start : places) {
    for (const double end : places) {
      const bool isOneOn = start == kCylinderRadius || end == kCylinderRadius;
      const bool areBothInside =
          start < kCylinderRadius && end < kCylinderRadius;
      for (const double sign : {1.0, -1.0}) {
        const LightPath path =
            InWater({start, 0, 0}, {end, 0, 0}, {sign, 0, 0});
        // An angle tolerance above pi includes ropes at every azimuth.
        EXPECT_EQ(IsShadowed(TwoVerticalRopes(), path, 4.0 * kCylinderRadius),
                  !isOneOn && !areBothInside)
            << "from " << start << " to " << end;
      }
    }
  }
}

TEST(AVHDRopeShadowing, TestsTheHeightOfAPathInWaterToo) {
  const AVHDRopeModel model = TwoVerticalRopes();
  // The path rises over 2048 mm from the start to the edge.
  EXPECT_TRUE(
      IsShadowed(model, InWater({2048, 0, 0}, {9000, 0, 0}, {1, 0, 3.6})));
  EXPECT_FALSE(
      IsShadowed(model, InWater({2048, 0, 0}, {9000, 0, 0}, {1, 0, 3.7})));
}

TEST(AVHDRopeShadowing, MissesARopeAtExactlyTheLimitForAPathInWater) {
  const TVector3 start(1000, 0, 0);
  const TVector3 direction = AtAzimuth(0.03, 1.0);
  const AVHDRopeModel model = TwoVerticalRopes();
  const TVector3 crossing = Flattened(CrossingOf(start, direction));
  const double limit =
      crossing.Angle(model.AVHDRopePositions[4]) * kCylinderRadius;
  const LightPath path = InWater(start, {9000, 0, 0}, direction);
  EXPECT_FALSE(IsShadowed(model, path, limit));
  EXPECT_TRUE(IsShadowed(model, path, Above(limit)));
}

/// A model with a single vertical rope, through the given point.
AVHDRopeModel RopeThrough(const TVector3& point) {
  AVHDRopeModel model = TwoVerticalRopes();
  model.AVHDRopePositions[4] = point;
  model.AVHDRopePositions[1] = kDown;  // at right angles to every crossing
  return model;
}

// A path in water with both ends outside and close together as seen from the
// axis: both its ends are followed to the far side of the cylinder.
const TVector3 kStartOutside(8000, 0, 0);
const TVector3 kEndOutside(4500, 2000, 0);
const TVector3 kInward(-1, 0, 0);

LightPath OutsidePath(const TVector3& end = kEndOutside) {
  return InWater(kStartOutside, end, kInward);
}

TEST(AVHDRopeShadowing, TestsBothCrossingsOfAPathInWaterWithBothEndsOutside) {
  const TVector3 first = Flattened(CrossingOf(kStartOutside, kInward));
  const TVector3 second = Flattened(CrossingOf(kEndOutside, -kInward));
  EXPECT_GT(first.Angle(second), 0.2);
  EXPECT_TRUE(IsShadowed(RopeThrough(first), OutsidePath()));
  EXPECT_TRUE(IsShadowed(RopeThrough(second), OutsidePath()));
  EXPECT_FALSE(IsShadowed(RopeThrough(Rotated(first, 0.1)), OutsidePath()));
  EXPECT_FALSE(IsShadowed(RopeThrough(Rotated(second, 0.1)), OutsidePath()));
}

TEST(AVHDRopeShadowing, FlattensBothCrossingsOfAPathInWater) {
  const TVector3 second = CrossingOf(kEndOutside, -kInward);
  ASSERT_LT(second.Z(), -4000.0);
  ASSERT_GT(second.Z(), FootHeight());
  EXPECT_TRUE(IsShadowed(RopeThrough(Flattened(second)), OutsidePath()));
  EXPECT_FALSE(IsShadowed(RopeThrough(second), OutsidePath()));
}

TEST(AVHDRopeShadowing, TestsTheHeightOfEachCrossingWithBothEndsOutside) {
  const TVector3 steepInward(-1, 0, 0.62);
  const TVector3 first = CrossingOf(kStartOutside, steepInward);
  ASSERT_GT(first.Z(), -FootHeight());
  EXPECT_FALSE(IsShadowed(RopeThrough(Flattened(first)),
                          InWater(kStartOutside, kEndOutside, steepInward)));
  // The second crossing is tested although the first is beyond the ropes.
  const TVector3 second = CrossingOf(kEndOutside, -steepInward);
  ASSERT_LT(std::abs(second.Z()), -FootHeight());
  EXPECT_TRUE(IsShadowed(RopeThrough(Flattened(second)),
                         InWater(kStartOutside, kEndOutside, steepInward)));
}

TEST(AVHDRopeShadowing, MissesAPathInWaterWhoseEndsAreFarApart) {
  // The angle between the ends as seen from the axis must be smaller than that
  // of the tangent from the start to the cylinder. Equal angles miss.
  const TVector3 start = AtAzimuth(0.0, 4500.0);
  const double tangent = ClosestAngle(start, kCylinderRadius);
  const auto endWith = [](double y) { return TVector3(2000, y, 0); };
  const auto angle = [&](double y) { return start.Angle(endWith(y)); };
  const auto isShadowed = [&](const std::optional<double>& y) {
    EXPECT_TRUE(y.has_value());
    const LightPath path = InWater(start, endWith(y.value_or(0)), kInward);
    return IsShadowed(RopeThrough({-kCylinderRadius, 0, 0}), path);
  };
  ASSERT_GT(endWith(4000).Mag(), kCylinderRadius);
  EXPECT_FALSE(isShadowed(FindExact(3600, 9000, angle, tangent)));
  EXPECT_FALSE(isShadowed(FindExact(3600, 9000, angle, Above(tangent))));
  EXPECT_TRUE(isShadowed(FindExact(3600, 9000, angle, Below(tangent))));
}

TEST(AVHDRopeShadowing, IgnoresTheHeightsOfTheEndsOfAPathOutside) {
  const auto isShadowed = [](const TVector3& start, const TVector3& end) {
    return IsShadowed(RopeThrough({-kCylinderRadius, 0, 0}),
                      InWater(start, end, kInward));
  };
  // With their heights the ends would be too far apart ...
  const TVector3 high(8000, 0, 7000);
  EXPECT_GT(kStartOutside.Angle(high),
            ClosestAngle(kStartOutside, kCylinderRadius));
  EXPECT_TRUE(isShadowed(kStartOutside, high));
  // ... or the start too far from the cylinder.
  const TVector3 end = AtAzimuth(0.45, 8000.0);
  EXPECT_GT(0.45, ClosestAngle(high, kCylinderRadius));
  EXPECT_TRUE(isShadowed(high, end));
}

TEST(AVHDRopeShadowing, MissesACrossingBelowTheFeet) {
  // Outside and heading outwards, a line meets the cylinder behind its start,
  // at a negative height.
  const TVector3 start(4200, 0, -1);
  const AVHDRopeModel model = RopeThrough({-kCylinderRadius, 0, 0});
  ASSERT_GT(CrossingOf(start, {1, 0, 0.8}).Z(), FootHeight());
  ASSERT_LT(CrossingOf(start, {1, 0, 1.0}).Z(), FootHeight());
  EXPECT_TRUE(IsShadowed(model, OneCrossing(start, {1, 0, 0.8})));
  EXPECT_FALSE(IsShadowed(model, OneCrossing(start, {1, 0, 1.0})));
}

// Paths that cannot be judged.

TEST(AVHDRopeShadowing, NeverShadowsAnUninitialisedPath) {
  AVHDRopeModel model = TwoVerticalRopes();
  for (const double endHeight : {-5.0, 5.0}) {
    model.AVHDRopeEndPoints[0].SetZ(endHeight);
    model.AVHDRopeSurfacePoints = {{0, 0, 0}};
    EXPECT_FALSE(IsShadowed(model, LightPath()));
    EXPECT_FALSE(CheckForAVHDRopeShadowing(model, kTolerance,
                                           Testing::MisspeltSegments()));
  }
}

TEST(AVHDRopeShadowing, JudgesAPathOfUnknownTypeAtTheCentre) {
  const WaterSegments path = Testing::UnknownSegments();
  AVHDRopeModel model = TwoVerticalRopes();
  EXPECT_FALSE(CheckForAVHDRopeShadowing(model, kTolerance, path));
  model.AVHDRopeSurfacePoints = {{0, 0, 100}};
  EXPECT_TRUE(CheckForAVHDRopeShadowing(model, kTolerance, path));
  // If the ropes' ends are above it, the centre has an angle of 0 to every
  // rope.
  model = TwoVerticalRopes();
  model.AVHDRopeEndPoints[0].SetZ(5e-324);
  EXPECT_TRUE(CheckForAVHDRopeShadowing(model, 1e-9, path));
  EXPECT_FALSE(CheckForAVHDRopeShadowing(model, 0.0, path));
}

TEST(AVHDRopeShadowing, FindsTheAzimuthOfALegForOtherTestsToo) {
  const AVHDRopeModel model = TwoVerticalRopes();
  const auto isAtLeg = [&](double azimuth, double angleTolerance) {
    return WalkLegs(model, AtAzimuth(azimuth), angleTolerance,
                    eWaterSegment::kFirst, StopAtBlocking());
  };
  EXPECT_TRUE(isAtLeg(0.01, 0.02));
  EXPECT_TRUE(isAtLeg(kHalfPi - 0.01, 0.02));
  EXPECT_FALSE(isAtLeg(0.03, 0.02));
  const double angle = AtAzimuth(0.5).Angle(model.AVHDRopePositions[4]);
  EXPECT_FALSE(isAtLeg(0.5, angle));
  EXPECT_TRUE(isAtLeg(0.5, Above(angle)));
}

TEST(HasAVHDRopes, NeedsAnEndPointAndTheTemplateUpToItsSecondEnd) {
  AVHDRopeModel model;
  EXPECT_FALSE(HasAVHDRopes(model));
  model.AVHDRopeEndPoints.resize(1);
  model.AVHDRopePositions.resize(4);
  EXPECT_FALSE(HasAVHDRopes(model));
  model.AVHDRopePositions.resize(5);
  EXPECT_TRUE(HasAVHDRopes(model));
  model.AVHDRopeEndPoints.clear();
  EXPECT_FALSE(HasAVHDRopes(model));
}

}  // namespace
}  // namespace ZARN::DU

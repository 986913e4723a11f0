#include "du/hardware/SupportRopes.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <vector>

#include "db/DBErrors.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "tests/du/Directions.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::ExpectSamePoints;
using Testing::FindExact;
using Testing::InWater;
using Testing::OneCrossing;
using Testing::SegmentsOf;
using Testing::Tables;

using Points = std::vector<TVector3>;

// A power of two, by which lengths become angles without rounding.
constexpr double kCylinderRadius = 4096.0;
constexpr double kTolerance = 150.0;
const TVector3 kOrigin(0, 0, 0);

TVector3 AtAzimuth(double phi, double perp = kCylinderRadius) {
  return {perp * std::cos(phi), perp * std::sin(phi), 0};
}

/// Ropes at azimuth 0 and 90 degrees, whose feet are at z = 0.
SupportRopeModel TwoRopes() {
  SupportRopeModel model;
  model.SupportRopePositions = {{kCylinderRadius, 0, 0},
                                {0, kCylinderRadius, 0}};
  return model;
}

bool IsShadowed(const SupportRopeModel& model, const LightPath& path,
                double tolerance = kTolerance) {
  return CheckForSupportRopeShadowing(model, AVHDRopeModel(), tolerance,
                                      SegmentsOf(path));
}

TVector3 CrossingOf(const TVector3& start, const TVector3& direction) {
  return VectorToCylinderEdge(start, direction, kOrigin, kCylinderRadius);
}

TVector3 TopOfTheFirstRope() {
  return VectorToSphereEdge({kCylinderRadius, 0, 0}, {0, 0, 1.0}, 8500.0,
                            false);
}

const TVector3 kAboveTheFeet(100, 100, 1);
// Away from both ropes, forward and back.
const TVector3 kToNoRope = AtAzimuth(-kPi / 4, 1.0);

TEST(SupportRopes, DoNotTestASegmentFromExactlyTheHeightOfTheirFeet) {
  SupportRopeModel model = TwoRopes();
  EXPECT_FALSE(IsShadowed(model, OneCrossing({100, 0, 0}, {1, 0, 0})));
  EXPECT_FALSE(IsShadowed(model, OneCrossing({100, 0, -5e-324}, {1, 0, 0})));
  EXPECT_TRUE(IsShadowed(model, OneCrossing({100, 0, 5e-324}, {1, 0, 0})));
  model.SupportRopePositions[0].SetZ(5.0);
  EXPECT_FALSE(IsShadowed(model, OneCrossing({100, 0, 5.0}, {1, 0, 0})));
  EXPECT_TRUE(IsShadowed(model, OneCrossing({100, 0, Above(5.0)}, {1, 0, 0})));
}

TEST(SupportRopes, DoNotTestASecondSegmentFromExactlyTheHeightOfTheirFeet) {
  const auto isShadowed = [](double z) {
    LightPath path = Testing::TwoCrossings({100, 0, 9}, {100, 0, z});
    path.InitialDirection = kToNoRope;
    path.FinalDirection = {1, 0, 0};
    return IsShadowed(TwoRopes(), path);
  };
  EXPECT_FALSE(isShadowed(0.0));
  EXPECT_TRUE(isShadowed(5e-324));
}

TEST(SupportRopes, TakeTheHeightOfTheFirstFootForAll) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[1].SetZ(500.0);
  EXPECT_TRUE(IsShadowed(model, OneCrossing({0, 0, 1}, {0, 1, 0}), 1000.0));
}

TEST(SupportRopes, AreMissedAtExactlyTheAngleOfRadiusAndTolerance) {
  const TVector3 start(1000, 0, 1);
  for (const std::size_t rope : {0U, 1U}) {
    const TVector3 direction = AtAzimuth(rope == 0 ? 0.03 : 1.5, 1.0);
    SupportRopeModel model = TwoRopes();
    const double angle = Flattened(CrossingOf(start, direction))
                             .Angle(model.SupportRopePositions[rope]);
    const LightPath path = OneCrossing(start, direction);
    const double limit = angle * kCylinderRadius;
    model.SupportRopeRadius = 0.5 * limit;
    EXPECT_FALSE(IsShadowed(model, path, 0.5 * limit));
    model.SupportRopeRadius = 0.0;
    EXPECT_FALSE(IsShadowed(model, path, limit));
    EXPECT_TRUE(IsShadowed(model, path, Above(limit)));
    model.SupportRopeRadius = Above(limit);
    EXPECT_TRUE(IsShadowed(model, path, 0.0));
  }
}

TEST(SupportRopes, StandOnACylinderOfTheFirstFootsFullDistance) {
  // The height of the foot counts in it.
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[0].SetXYZ(0, 0, -kCylinderRadius);
  const TVector3 start(1000, 0, 1);
  const TVector3 direction = AtAzimuth(1.5, 1.0);
  const double angle = Flattened(CrossingOf(start, direction))
                           .Angle(model.SupportRopePositions[1]);
  const double limit = angle * kCylinderRadius;
  EXPECT_FALSE(IsShadowed(model, OneCrossing(start, direction), limit));
  EXPECT_TRUE(IsShadowed(model, OneCrossing(start, direction), Above(limit)));
}

TEST(SupportRopes, AreComparedAtTheirHeightWithAFlattenedCrossing) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[1].SetZ(1000.0);  // 0.24 rad above the horizon
  const LightPath path = OneCrossing({0, 0, 1}, {0, 1, 0.3});
  EXPECT_FALSE(IsShadowed(model, path));
  EXPECT_TRUE(IsShadowed(model, path, 1100.0));
}

TEST(SupportRopes, AreAllTested) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions.push_back(AtAzimuth(2.5));
  for (const TVector3& rope : model.SupportRopePositions) {
    EXPECT_TRUE(IsShadowed(model, OneCrossing({0, 0, 1}, rope.Unit())));
  }
  EXPECT_FALSE(IsShadowed(model, OneCrossing({0, 0, 1}, {-1, 0, 0})));
}

/// The height at which a steep line from far on the other side meets the
/// cylinder.
double HeightFrom(double x) { return CrossingOf({x, 0, 1}, {1, 0, 0.95}).Z(); }

TEST(SupportRopes, BlockACrossingUpToExactlyTheirTop) {
  const auto shadowedFrom = [](const std::optional<double>& x) {
    EXPECT_TRUE(x.has_value());
    return IsShadowed(TwoRopes(),
                      OneCrossing({x.value_or(0.0), 0, 1}, {1, 0, 0.95}));
  };
  const double top = TopOfTheFirstRope().Z();
  EXPECT_TRUE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, top)));
  EXPECT_FALSE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, Above(top))));
  EXPECT_TRUE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, Below(top))));
}

TEST(SupportRopes, BlockNoCrossingFarBelowTheVesselEither) {
  // Outside and heading out, a line meets the cylinder behind it, at a negative
  // height.
  const TVector3 start(4200, 0, 1);
  const auto pathWith = [&](double slope) {
    return OneCrossing(start, {1, 0, slope});
  };
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions.emplace_back(-kCylinderRadius, 0, 0);
  ASSERT_LT(CrossingOf(start, {1, 0, 0.8}).Z(), -6000.0);
  ASSERT_LT(CrossingOf(start, {1, 0, 1.0}).Z(), -8000.0);
  EXPECT_TRUE(IsShadowed(model, pathWith(0.8)));
  EXPECT_FALSE(IsShadowed(model, pathWith(1.0)));
}

TEST(SupportRopes, AreMetByEverySegmentOfEachTypeOfPath) {
  // The path in water leaves the cylinder.
  const auto deciding = Testing::DecidingDirections(
      kAboveTheFeet, {0, 9000, 1}, {1, 0, 0}, kToNoRope,
      [](const WaterSegments& path) {
        return CheckForSupportRopeShadowing(TwoRopes(), AVHDRopeModel(),
                                            kTolerance, path);
      });
  EXPECT_EQ(deciding, Testing::EverySegment());
}

TEST(SupportRopes, AreTestedFromEveryCrossingOfEachTypeOfPath) {
  // A point below the feet is not tested.
  const auto deciding = Testing::DecidingPoints(
      {100, 0, 1}, {100, 0, -1}, [](WaterSegments path) {
        path.first.direction = path.second.direction = {1, 0, 0};
        return CheckForSupportRopeShadowing(TwoRopes(), AVHDRopeModel(),
                                            kTolerance, path);
      });
  EXPECT_EQ(deciding, Testing::EveryCrossing());
}

TEST(SupportRopes, AreTestedFromTheReflectionPointBackAndOn) {
  LightPath path = Testing::AllAt(kWaterReflection, kAboveTheFeet);
  path.InitialDirection = path.FinalDirection = kToNoRope;
  EXPECT_FALSE(IsShadowed(TwoRopes(), path));
  path.InitialDirection = {-1, 0, 0};
  EXPECT_TRUE(IsShadowed(TwoRopes(), path));
  path.InitialDirection = kToNoRope;
  path.FinalDirection = {0, 1, 0};
  EXPECT_TRUE(IsShadowed(TwoRopes(), path));
}

// Paths wholly in water.

TEST(SupportRopes, MissAPathInWaterWithBothEndsInside) {
  EXPECT_FALSE(
      IsShadowed(TwoRopes(), InWater({0, 0, 1}, {4095, 0, 1}, {1, 0, 0})));
  const Testing::Captured captured(debug);
  // Not even a crossing is computed: this line would miss the sphere.
  EXPECT_FALSE(IsShadowed(TwoRopes(),
                          InWater({0, 0, 1}, {0, 0, 1}, {std::nan(""), 0, 0})));
  EXPECT_EQ(captured.Text(), "");
}

TEST(SupportRopes, BlockAPathInWaterFromItsStartInside) {
  const SupportRopeModel model = TwoRopes();
  EXPECT_TRUE(IsShadowed(model, InWater({0, 0, 1}, {9000, 0, 1}, {1, 0, 0})));
  EXPECT_FALSE(IsShadowed(model, InWater({0, 0, 1}, {9000, 0, 1}, kToNoRope)));
  // The height of the feet plays no part here.
  EXPECT_TRUE(IsShadowed(model, InWater({0, 0, -9}, {9000, 0, 1}, {1, 0, 0})));
}

TEST(SupportRopes, BlockAPathInWaterBackFromItsEndInside) {
  const SupportRopeModel model = TwoRopes();
  EXPECT_TRUE(IsShadowed(model, InWater({9000, 0, 1}, {0, 0, 1}, {-1, 0, 0})));
  EXPECT_FALSE(IsShadowed(model, InWater({9000, 0, 1}, {0, 0, 1}, {1, 0, 0})));
}

TEST(SupportRopes, FindTheEndsOfAPathInWaterByTheirFlattenedDistance) {
  EXPECT_FALSE(
      IsShadowed(TwoRopes(), InWater({0, 0, 0}, {4000, 0, 4000}, {1, 0, 0})));
  EXPECT_TRUE(IsShadowed(TwoRopes(),
                         InWater({4000, 0, 4000}, {4100, 0, 0}, {1, 0, 0})));
}

TEST(SupportRopes, BlockAPathInWaterUpToTheirTopOnly) {
  EXPECT_TRUE(
      IsShadowed(TwoRopes(), InWater({2048, 0, 1}, {9000, 0, 1}, {1, 0, 3.6})));
  EXPECT_FALSE(
      IsShadowed(TwoRopes(), InWater({2048, 0, 1}, {9000, 0, 1}, {1, 0, 3.7})));
}

/// A hold-down rope whose vertical part stands at the given point, on a
/// cylinder of the given radius.
AVHDRopeModel HoldDownRopeAt(const TVector3& point,
                             double cylinderRadius = kCylinderRadius) {
  AVHDRopeModel model;
  model.AVHDRopePositions.resize(6);
  model.AVHDRopePositions[4] = point;
  model.AVHDRopePositions[1] = {0, 0, -1};  // at right angles to flat crossings
  model.AVHDRopeRolls = {0.0};
  model.AVHDRopeEndPoints = {{cylinderRadius, 0, 0}};
  return model;
}

bool IsShadowedInWater(const AVHDRopeModel& holdDownRopes,
                       const LightPath& path, double tolerance = kTolerance,
                       const SupportRopeModel& model = TwoRopes()) {
  return CheckForSupportRopeShadowing(model, holdDownRopes, tolerance,
                                      SegmentsOf(path));
}

TEST(SupportRopes, HandAPathWithAnEndExactlyOnTheirCylinderToTheHoldDownRopes) {
  const TVector3 on(kCylinderRadius, 0, 1);
  const TVector3 inside(Below(kCylinderRadius), 0, 1);
  const TVector3 outside(Above(kCylinderRadius), 0, 1);
  const TVector3 centre(0, 0, 1);
  const TVector3 away(9000, 0, 1);
  // A hold-down rope to which every direction leads; but no end on the axis is
  // outside its cylinder.
  const AVHDRopeModel holdDownRopes = HoldDownRopeAt({1, 0, 0}, 100.0);
  for (const double sign : {1.0, -1.0}) {
    const auto byHoldDownRopes = [&](const TVector3& start,
                                     const TVector3& end) {
      const LightPath path = InWater(start, end, {sign, 0, 0});
      // The angle tolerance of pi takes in every rope of either kind.
      const bool with = IsShadowedInWater(holdDownRopes, path, 4.0 * 4096.0);
      const bool without =
          IsShadowedInWater(AVHDRopeModel(), path, 4.0 * 4096.0);
      return with && !without;
    };
    EXPECT_TRUE(byHoldDownRopes(on, away));
    EXPECT_FALSE(byHoldDownRopes(inside, away));
    EXPECT_TRUE(byHoldDownRopes(outside, away));
    EXPECT_TRUE(byHoldDownRopes(away, on));
    EXPECT_FALSE(byHoldDownRopes(away, inside));
    EXPECT_TRUE(byHoldDownRopes(away, outside));
    EXPECT_TRUE(byHoldDownRopes(on, on));
    EXPECT_TRUE(byHoldDownRopes(inside, on));
    EXPECT_TRUE(byHoldDownRopes(on, inside));
    // An end on the axis is inside the other cylinder, too.
    const auto isShadowed = [&](const TVector3& start, const TVector3& end) {
      return IsShadowedInWater(holdDownRopes, InWater(start, end, {sign, 0, 0}),
                               4.0 * 4096.0);
    };
    EXPECT_FALSE(isShadowed(centre, on));
    EXPECT_TRUE(isShadowed(centre, outside));
    EXPECT_FALSE(isShadowed(on, centre));
    EXPECT_TRUE(isShadowed(outside, centre));
  }
}

TEST(SupportRopes, KeepAPathInsideTheirCylinderFromTheHoldDownRopes) {
  // Even where it lies outside of the hold-down ropes' own cylinder.
  const LightPath path = InWater({3000, 0, 0}, {3500, 0, 0}, {-1, 0, 0});
  EXPECT_FALSE(IsShadowedInWater(HoldDownRopeAt({-100, 0, 0}, 100.0), path));
}

TEST(SupportRopes, SpareAPathOutsideWhenThereAreNoHoldDownRopes) {
  const LightPath path = InWater({8000, 0, 0}, {9000, 0, 0}, {-1, 0, 0});
  EXPECT_TRUE(IsShadowedInWater(HoldDownRopeAt({-4096, 0, 0}), path));
  EXPECT_FALSE(IsShadowedInWater(AVHDRopeModel(), path));
  AVHDRopeModel withoutEnds = HoldDownRopeAt({-4096, 0, 0});
  withoutEnds.AVHDRopeEndPoints.clear();
  EXPECT_FALSE(IsShadowedInWater(withoutEnds, path));
  AVHDRopeModel shortTemplate = HoldDownRopeAt({-4096, 0, 0});
  shortTemplate.AVHDRopePositions.resize(4);
  EXPECT_FALSE(IsShadowedInWater(shortTemplate, path));
  AVHDRopeModel withoutRolls = HoldDownRopeAt({-4096, 0, 0});
  withoutRolls.AVHDRopeRolls.clear();
  EXPECT_FALSE(IsShadowedInWater(withoutRolls, path));
}

// Both ends outside and close together as seen from the axis: both are followed
// to the far side of the hold-down ropes' cylinder.
const TVector3 kStartOutside(8000, 0, 0);
const TVector3 kEndOutside(4500, 2000, 0);
const TVector3 kInward(-1, 0, 0);

TEST(SupportRopes, MissAPathWithAnEndExactlyOnTheHoldDownRopesCylinder) {
  const AVHDRopeModel ropes = HoldDownRopeAt({-5000, 0, 0}, 5000.0);
  const auto isShadowed = [&](double startX, double endX) {
    return IsShadowedInWater(ropes,
                             InWater({startX, 0, 0}, {endX, 0, 0}, kInward));
  };
  EXPECT_TRUE(isShadowed(Above(5000.0), 6000.0));
  EXPECT_FALSE(isShadowed(5000.0, 6000.0));
  EXPECT_TRUE(isShadowed(6000.0, Above(5000.0)));
  EXPECT_FALSE(isShadowed(6000.0, 5000.0));
  EXPECT_FALSE(isShadowed(6000.0, 4500.0));
  EXPECT_FALSE(isShadowed(4500.0, 6000.0));
}

TEST(SupportRopes, MissAPathInWaterWhoseEndsAreFarApart) {
  // Limit: the angle of the tangent from the start to the hold-down ropes'
  // cylinder. Equal angles miss.
  const TVector3 start = AtAzimuth(0.0, 4500.0);
  const double tangent = ClosestAngle(start, kCylinderRadius);
  const auto endWith = [](double y) { return TVector3(2000, y, 0); };
  const auto angle = [&](double y) { return start.Angle(endWith(y)); };
  const auto isShadowed = [&](const std::optional<double>& y) {
    EXPECT_TRUE(y.has_value());
    return IsShadowedInWater(HoldDownRopeAt({-kCylinderRadius, 0, 0}),
                             InWater(start, endWith(y.value_or(0)), kInward));
  };
  EXPECT_FALSE(isShadowed(FindExact(3600, 9000, angle, tangent)));
  EXPECT_FALSE(isShadowed(FindExact(3600, 9000, angle, Above(tangent))));
  EXPECT_TRUE(isShadowed(FindExact(3600, 9000, angle, Below(tangent))));
}

TEST(SupportRopes, MeasureTheEndsOfAPathOutsideWithoutTheirHeights) {
  const auto isShadowed = [](const TVector3& start, const TVector3& end) {
    return IsShadowedInWater(HoldDownRopeAt({-kCylinderRadius, 0, 0}),
                             InWater(start, end, kInward));
  };
  // Heights would move the ends too far apart...
  const TVector3 high(8000, 0, 7000);
  EXPECT_GT(kStartOutside.Angle(high),
            ClosestAngle(kStartOutside, kCylinderRadius));
  EXPECT_TRUE(isShadowed(kStartOutside, high));
  // ... or the start too far from the cylinder.
  const TVector3 end = AtAzimuth(0.45, 8000.0);
  EXPECT_GT(0.45, ClosestAngle(high, kCylinderRadius));
  EXPECT_TRUE(isShadowed(high, end));
}

TEST(SupportRopes, FlattenTheFirstCrossingOfAPathOutsideAndNotTheSecond) {
  const TVector3 direction(-1, 0, 0.2);
  const LightPath path = InWater(kStartOutside, kEndOutside, direction);
  const TVector3 first = CrossingOf(kStartOutside, direction);
  const TVector3 second = CrossingOf(kEndOutside, -direction);
  ASSERT_GT(first.Z(), 2000.0);
  ASSERT_LT(second.Z(), -4000.0);
  ASSERT_LT(std::abs(second.Z()), 8500.0);
  ASSERT_GT(Flattened(first).Angle(Flattened(second)), 0.2);
  EXPECT_TRUE(IsShadowedInWater(HoldDownRopeAt(Flattened(first)), path));
  EXPECT_FALSE(IsShadowedInWater(HoldDownRopeAt(first), path));
  EXPECT_TRUE(IsShadowedInWater(HoldDownRopeAt(second), path));
  EXPECT_FALSE(IsShadowedInWater(HoldDownRopeAt(Flattened(second)), path));
}

TEST(SupportRopes, FollowAPathOutsideToTheHoldDownRopesCylinder) {
  // Whose radius may differ from that of the support ropes.
  const LightPath path = InWater({8000, 0, 0}, {6500, 600, 0}, {-1, 0.3, 0});
  const TVector3 crossing = VectorToCylinderEdge(
      path.StartPos, path.InitialDirection, kOrigin, 5000.0);
  EXPECT_GT(Flattened(crossing).Angle(
                Flattened(CrossingOf(path.StartPos, path.InitialDirection))),
            0.1);
  EXPECT_TRUE(
      IsShadowedInWater(HoldDownRopeAt(Flattened(crossing), 5000.0), path));
}

TEST(SupportRopes, TestAPathOutsideWithTheirOwnToleranceAndRadius) {
  const LightPath path = InWater(kStartOutside, {9000, 0, 0}, kInward);
  const TVector3 first = Flattened(CrossingOf(kStartOutside, kInward));
  AVHDRopeModel ropes = HoldDownRopeAt(Rotated(first, 0.1));
  ropes.AVHDRopeRadius = 1e6;  // is not theirs
  const double limit =
      first.Angle(ropes.AVHDRopePositions[4]) * kCylinderRadius;
  SupportRopeModel model = TwoRopes();
  EXPECT_FALSE(IsShadowedInWater(ropes, path, limit, model));
  EXPECT_TRUE(IsShadowedInWater(ropes, path, Above(limit), model));
  model.SupportRopeRadius = 0.5 * limit;
  EXPECT_FALSE(IsShadowedInWater(ropes, path, 0.5 * limit, model));
  model.SupportRopeRadius = limit;
  EXPECT_TRUE(IsShadowedInWater(ropes, path, 1.0, model));
}

TEST(SupportRopes, TestAPathOutsideAgainstBothEndsOfEveryHoldDownRope) {
  const LightPath path = InWater(kStartOutside, {9000, 0, 0}, kInward);
  const TVector3 first = Flattened(CrossingOf(kStartOutside, kInward));
  AVHDRopeModel ropes = HoldDownRopeAt({0, 0, -1});
  EXPECT_FALSE(IsShadowedInWater(ropes, path));
  // The first end is turned half round.
  ropes.AVHDRopePositions[1] = -first;
  EXPECT_TRUE(IsShadowedInWater(ropes, path));
  ropes.AVHDRopePositions[1] = first;
  EXPECT_FALSE(IsShadowedInWater(ropes, path));
  // Both are turned by the rolls.
  ropes.AVHDRopeRolls = {1.0, 2.0};
  ropes.AVHDRopePositions[1] = Rotated(-first, -2.0);
  EXPECT_TRUE(IsShadowedInWater(ropes, path));
  ropes.AVHDRopePositions[1] = {0, 0, -1};
  ropes.AVHDRopePositions[4] = Rotated(first, -2.0);
  EXPECT_TRUE(IsShadowedInWater(ropes, path));
}

/// The height at which a steep line from outside meets the far side of the
/// hold-down ropes' cylinder.
double FarHeightFrom(double x) {
  return CrossingOf({x, 0, 0}, {-1, 0, 0.66}).Z();
}

TEST(SupportRopes, TestAPathOutsideUpToExactlyTheDistanceOfTheirTop) {
  // From the centre to the top, which is farther than the top is high.
  const double distance = TopOfTheFirstRope().Mag();
  const auto isShadowedFrom = [](const std::optional<double>& x) {
    EXPECT_TRUE(x.has_value());
    const TVector3 start(x.value_or(0.0), 0, 0);
    return IsShadowedInWater(HoldDownRopeAt({-kCylinderRadius, 0, 0}),
                             InWater(start, {9000, 0, 0}, {-1, 0, 0.66}));
  };
  EXPECT_TRUE(isShadowedFrom(8000.0));
  EXPECT_GT(FarHeightFrom(8000.0), TopOfTheFirstRope().Z());
  EXPECT_TRUE(isShadowedFrom(FindExact(8000, 9500, FarHeightFrom, distance)));
  EXPECT_TRUE(
      isShadowedFrom(FindExact(8000, 9500, FarHeightFrom, Below(distance))));
  EXPECT_FALSE(
      isShadowedFrom(FindExact(8000, 9500, FarHeightFrom, Above(distance))));
}

TEST(SupportRopes, SkipASecondCrossingBeyondTheDistanceOfTheirTop) {
  const auto isShadowed = [](double slope) {
    const TVector3 direction(-1, 0, slope);
    const TVector3 second = CrossingOf(kEndOutside, -direction);
    const bool isBeyond = std::abs(second.Z()) > 8500.0;
    const bool is = IsShadowedInWater(
        HoldDownRopeAt(second), InWater(kStartOutside, kEndOutside, direction));
    EXPECT_NE(is, isBeyond);
    return is;
  };
  EXPECT_TRUE(isShadowed(0.5));
  EXPECT_FALSE(isShadowed(1.5));
}

// Paths that cannot be judged.

TEST(SupportRopes, JudgeAPathOfUnknownTypeOnlyWhenTheirFeetAreBelowTheCentre) {
  const auto isShadowed = [](double footHeight) {
    SupportRopeModel model = TwoRopes();
    model.SupportRopePositions[0].SetZ(footHeight);
    return CheckForSupportRopeShadowing(model, AVHDRopeModel(), kTolerance,
                                        Testing::UnknownSegments());
  };
  EXPECT_FALSE(isShadowed(0.0));
  EXPECT_FALSE(isShadowed(5.0));
  EXPECT_TRUE(isShadowed(-5e-324));
}

TEST(SupportRopes, NeverShadowAnUninitialisedPath) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[0].SetZ(-5.0);
  EXPECT_FALSE(IsShadowed(model, LightPath()));
  EXPECT_FALSE(CheckForSupportRopeShadowing(model, AVHDRopeModel(), kTolerance,
                                            Testing::MisspeltSegments()));
}

// Loading.

constexpr double kOuterAVRadius = 5860.0;
const Points kAnchors = {{5920, 0, 5}, {-3000, 5100, 7}};

Tables RopeTables(const Points& anchors = kAnchors) {
  Tables tables;
  tables.Set("GEO", "hold_up_ropes", "solid_definition", "hold_up_rope");
  tables.Set("GEO", "hold_up_ropes", "locations", "anchors");
  tables.Set("SOLID", "hold_up_rope", "r_rope", 15.0);
  tables.Set("SOLID", "hold_up_rope", "z_rope", 6090.0);
  tables.Set("SOLID", "belly_plate_vintar", "octahedron_half_height", 600.0);
  tables.SetPositions("GEO_LOCATIONS", "anchors", anchors);
  return tables;
}

struct ExpectedRopes {
  explicit ExpectedRopes(const Points& anchors) {
    const double spread = (0.6666666666666666 * 600.0) / kOuterAVRadius;
    const double step = 6090.0 / 100.0;
    for (const TVector3& anchor : anchors) {
      TVector3 p1 = anchor;
      p1.SetPhi(anchor.Phi() + spread);
      TVector3 p2 = anchor;
      p2.SetPhi(anchor.Phi() - spread);
      feet.push_back(p1);
      feet.push_back(p2);
      for (int i = 1; i <= 99; ++i) {
        linePoints.push_back(p1 + (i * step) * TVector3(0, 0, 1));
        linePoints.push_back(p2 + (i * step) * TVector3(0, 0, 1));
      }
    }
  }

  Points feet;
  Points linePoints;
};

TEST(LoadSupportRopeInfo, MakesTwoRopesOfEveryAnchor) {
  RopeTables().Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  const ExpectedRopes expected(kAnchors);
  EXPECT_EQ(model.SupportRopePositions, expected.feet);
  ExpectSamePoints(model.SupportRopeLinePoints, expected.linePoints);
  EXPECT_EQ(model.SupportRopeRadius, 15.0);
  EXPECT_EQ(model.SupportRopeLength, 6090.0);
}

TEST(LoadSupportRopeInfo, MakesTwoRopesAnd198LinePointsOfOneAnchor) {
  RopeTables({{5920, 0, 5}}).Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopePositions.size(), 2U);
  EXPECT_EQ(model.SupportRopeLinePoints.size(), 198U);
  EXPECT_GT(model.SupportRopePositions[0].Phi(), 0.0);
  EXPECT_LT(model.SupportRopePositions[1].Phi(), 0.0);
}

TEST(LoadSupportRopeInfo, AppendsToItsListsWhenCalledAgain) {
  RopeTables().Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  const ExpectedRopes expected(
      {kAnchors[0], kAnchors[1], kAnchors[0], kAnchors[1]});
  EXPECT_EQ(model.SupportRopePositions, expected.feet);
  ExpectSamePoints(model.SupportRopeLinePoints, expected.linePoints);
}

TEST(LoadSupportRopeInfo, FollowsTheNamesInTheRopesEntry) {
  RopeTables()
      .Set("GEO", "hold_up_ropes", "solid_definition", "other_rope")
      .Set("GEO", "hold_up_ropes", "locations", "other_anchors")
      .Set("SOLID", "other_rope", "r_rope", 16.0)
      .Set("SOLID", "other_rope", "z_rope", 6000.0)
      .SetPositions("GEO_LOCATIONS", "other_anchors", {{0, 5920, 5}})
      .Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopeRadius, 16.0);
  EXPECT_EQ(model.SupportRopeLength, 6000.0);
  EXPECT_EQ(model.SupportRopePositions.size(), 2U);
}

TEST(LoadSupportRopeInfo, MakesNoRopeWithoutAnchors) {
  RopeTables({}).Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopePositions, Points());
  EXPECT_EQ(model.SupportRopeLinePoints, Points());
  EXPECT_FALSE(HasSupportRopes(model));
}

TEST(LoadSupportRopeInfo, MakesNoRopeOfListsOfDifferentLengths) {
  RopeTables()
      .Set("GEO_LOCATIONS", "anchors", "x", std::vector<double>{1})
      .Load();
  const Testing::Captured captured(warn);
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopePositions, Points());
  EXPECT_NE(captured.Text(), "");
}

TEST(LoadSupportRopeInfo, StopsAtWhatIsMissingAndKeepsWhatItHasRead) {
  const auto load = [](const Tables& tables) {
    tables.Load();
    SupportRopeModel model;
    EXPECT_THROW(LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius),
                 DBNotFoundError);
    EXPECT_EQ(model.SupportRopePositions, Points());
    return model;
  };
  EXPECT_EQ(
      load(RopeTables().RemoveField("GEO", "hold_up_ropes", "solid_definition"))
          .SupportRopeRadius,
      0.0);
  EXPECT_EQ(load(RopeTables().RemoveField("SOLID", "hold_up_rope", "r_rope"))
                .SupportRopeLength,
            0.0);
  const SupportRopeModel withoutLength =
      load(RopeTables().RemoveField("SOLID", "hold_up_rope", "z_rope"));
  EXPECT_EQ(withoutLength.SupportRopeRadius, 15.0);
  EXPECT_EQ(withoutLength.SupportRopeLength, 0.0);
  for (const SupportRopeModel& model :
       {load(RopeTables().Remove("SOLID", "belly_plate_vintar")),
        load(RopeTables().RemoveField("GEO", "hold_up_ropes", "locations")),
        load(RopeTables().RemoveField("GEO_LOCATIONS", "anchors", "z"))}) {
    EXPECT_EQ(model.SupportRopeRadius, 15.0);
    EXPECT_EQ(model.SupportRopeLength, 6090.0);
  }
}

TEST(SupportRopeModel, KeepsItsSizesWhenCleared) {
  RopeTables().Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  const std::size_t capacity = model.SupportRopeLinePoints.capacity();
  EXPECT_TRUE(HasSupportRopes(model));
  model.Clear();
  EXPECT_FALSE(HasSupportRopes(model));
  EXPECT_EQ(model.SupportRopePositions, Points());
  EXPECT_EQ(model.SupportRopeLinePoints, Points());
  EXPECT_EQ(model.SupportRopeLinePoints.capacity(), capacity);
  EXPECT_EQ(model.SupportRopeRadius, 15.0);
  EXPECT_EQ(model.SupportRopeLength, 6090.0);
}

}  // namespace
}  // namespace ZARN::DU

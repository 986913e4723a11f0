#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "du/geometry/Primitives.hpp"
#include "du/hardware/SupportRopes.hpp"
#include "log/Log.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/TwoSupportRopes.hpp"
#include "tests/du/UsualVessel.hpp"
#include "tests/support/Captured.hpp"

// Support ropes and paths wholly in water.

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::AtAzimuth;
using Testing::Below;
using Testing::CrossingOf;
using Testing::FindExact;
using Testing::InWater;
using Testing::IsShadowed;
using Testing::kCylinderRadius;
using Testing::kTolerance;
using Testing::SegmentsOf;
using Testing::ToNoRope;
using Testing::TopOfTheFirstRope;
using Testing::TwoRopes;

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
  EXPECT_FALSE(IsShadowed(model, InWater({0, 0, 1}, {9000, 0, 1}, ToNoRope())));
  // The height of the feet does not matter here.
  EXPECT_TRUE(IsShadowed(model, InWater({0, 0, -9}, {9000, 0, 1}, {1, 0, 0})));
}

TEST(SupportRopes, BlockAPathInWaterBackFromItsEndInside) {
  const SupportRopeModel model = TwoRopes();
  EXPECT_TRUE(IsShadowed(model, InWater({9000, 0, 1}, {0, 0, 1}, {-1, 0, 0})));
  EXPECT_FALSE(IsShadowed(model, InWater({9000, 0, 1}, {0, 0, 1}, {1, 0, 0})));
}

TEST(SupportRopes, UseTheFlattenedDistanceOfTheEndsOfAPathInWater) {
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

TEST(SupportRopes, PassAPathWithAnEndExactlyOnTheirCylinderToTheHoldDownRopes) {
  const TVector3 on(kCylinderRadius, 0, 1);
  const TVector3 inside(Below(kCylinderRadius), 0, 1);
  const TVector3 outside(Above(kCylinderRadius), 0, 1);
  const TVector3 centre(0, 0, 1);
  const TVector3 away(9000, 0, 1);
  // A hold-down rope that is near every direction; but no end on the axis is
  // outside its cylinder.
  const AVHDRopeModel holdDownRopes = HoldDownRopeAt({1, 0, 0}, 100.0);
  for (const double sign : {1.0, -1.0}) {
    const auto byHoldDownRopes = [&](const TVector3& start,
                                     const TVector3& end) {
      const LightPath path = InWater(start, end, {sign, 0, 0});
      // The angle tolerance is above pi and includes every rope of either kind.
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

TEST(SupportRopes, DoNotPassAPathInsideTheirCylinderToTheHoldDownRopes) {
  // Even if it is outside the hold-down ropes' own cylinder.
  const LightPath path = InWater({3000, 0, 0}, {3500, 0, 0}, {-1, 0, 0});
  EXPECT_FALSE(IsShadowedInWater(HoldDownRopeAt({-100, 0, 0}, 100.0), path));
}

TEST(SupportRopes, DoNotBlockAPathOutsideWithoutHoldDownRopes) {
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
  // The limit is the angle of the tangent from the start to the hold-down
  // ropes' cylinder. Equal angles miss.
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

TEST(SupportRopes, IgnoreTheHeightsOfTheEndsOfAPathOutside) {
  const auto isShadowed = [](const TVector3& start, const TVector3& end) {
    return IsShadowedInWater(HoldDownRopeAt({-kCylinderRadius, 0, 0}),
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
  // Its radius may differ from that of the support ropes.
  const LightPath path = InWater({8000, 0, 0}, {6500, 600, 0}, {-1, 0.3, 0});
  const TVector3 crossing = VectorToCylinderEdge(
      path.StartPos, path.InitialDirection, {0, 0, 0}, 5000.0);
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
  ropes.AVHDRopeRadius = 1e6;  // not that of the support ropes
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
  // The first end is rotated by half a turn.
  ropes.AVHDRopePositions[1] = -first;
  EXPECT_TRUE(IsShadowedInWater(ropes, path));
  ropes.AVHDRopePositions[1] = first;
  EXPECT_FALSE(IsShadowedInWater(ropes, path));
  // Both are rotated by the rolls.
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
  // The distance from the centre to the top, which is more than the height of
  // the top.
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

}  // namespace
}  // namespace ZARN::DU

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/InRealVessel.hpp"
#include "tests/lightpath/LightPathFlaws.hpp"
#include "tests/lightpath/Vessels.hpp"

namespace ZARN::Testing {
namespace {

using DU::LightPathCalculator;

class TouchingLightPaths : public InRealVessel {};

TEST_F(TouchingLightPaths, BetweenOutsidePointsAreStraight) {
  const auto expectStraight = [&](const TVector3& a, const TVector3& b) {
    SCOPED_TRACE("event " + Exact(a) + ", PMT " + Exact(b));
    Calculate(a, b);
    EXPECT_EQ(calculator_.GetLightPathType(), DU::kWater);
    EXPECT_EQ(FlawOf(calculator_, media_, a, b), "");
  };
  for (const double height : {kOuter, Above(kOuter), Above(Above(kOuter))}) {
    expectStraight({-3000, height, 0}, {7000, height, 0});
    expectStraight({0, height, -3000}, {0, height, 7000});
    expectStraight({7000, 0, -height}, {-1, 0, -height});
    // Also with an end at the touching point.
    expectStraight({0, height, 0}, {7000, height, 0});
    expectStraight({7000, height, 0}, {0, height, 0});
    expectStraight({0, height, 0}, {7000, 8000, 0});
  }
  // A touching point with integer coordinates in a general plane: (3, 4, 0)/5
  // and (4, -3, 0)/5 are at right angles.
  const TVector3 touch = 1172.0 * TVector3(3, 4, 0);
  const TVector3 along(4, -3, 0);
  expectStraight(touch - 1000.0 * along, touch + 900.0 * along);
  expectStraight(touch - 1000.0 * along + TVector3(0, 0, 8),
                 touch + 900.0 * along + TVector3(0, 0, 8));
}

/// Touching points without integer coordinates are rounded: within this many
/// rounding steps a line may count as touching or not.
constexpr int kRoundedSteps = 3;

double BelowBy(double value, int steps) {
  for (int i = 0; i < steps; ++i) value = Below(value);
  return value;
}

TEST_F(TouchingLightPaths, AFewStepsDeeperDoNotExist) {
  // Light that enters here is bent away, so none arrives straight behind.
  for (int steps = 1; steps <= 10; ++steps) {
    const double height = BelowBy(kOuter, steps);
    SCOPED_TRACE("height " + Exact(height));
    const TVector3 eventPos(-3000, height, 0);
    const TVector3 pmtPos(7000, height, 0);
    Calculate(eventPos, pmtPos);
    if (steps <= kRoundedSteps && calculator_.HasPath()) {
      EXPECT_EQ(calculator_.GetLightPathType(), DU::kWater);
      EXPECT_EQ(FlawOf(calculator_, media_, eventPos, pmtPos), "");
    } else {
      ExpectNoPath(calculator_);
    }
  }
}

TEST(TouchingLightPathsOfEqualIndices, AFewStepsDeeperGoThroughTheWall) {
  for (const double inner : {3000.0, 5800.0, 5859.9999}) {
    const DU::ConcentricMedia media{inner, kOuter, {1.33, 1.33, 1.33}};
    LightPathCalculator calculator = CalculatorFor(media);
    const auto expectType = [&](double height, DU::eLightPathType type) {
      SCOPED_TRACE("inner " + Exact(inner) + ", height " + Exact(height));
      const TVector3 eventPos(-7000, height, 0);
      const TVector3 pmtPos(8000, height, 0);
      calculator.CalcByPosition(eventPos, pmtPos);
      ASSERT_EQ(calculator.GetLightPathType(), type);
      EXPECT_EQ(FlawOf(calculator, media, eventPos, pmtPos), "");
      for (const TVector3& corner : CornersOf(calculator)) {
        EXPECT_NEAR(corner.Y(), height, 1e-9);
        EXPECT_EQ(corner.Z(), 0.0);
      }
      EXPECT_NEAR(calculator.GetInitialDirection().Y(), 0.0, 1e-14);
      EXPECT_NEAR(calculator.GetFinalDirection().Y(), 0.0, 1e-14);
    };
    expectType(kOuter, DU::kWater);
    for (int steps = kRoundedSteps + 1; steps < 12; ++steps) {
      expectType(BelowBy(kOuter, steps), DU::kWaterThroughAV);
    }
    for (const double deep : {1e-11, 1e-9, 1e-6, 1e-5}) {
      expectType(kOuter - deep, DU::kWaterThroughAV);
    }
    for (const double deep : {1e-10, 1e-9, 1e-6, 1e-3, 1.0}) {
      expectType(inner * (1.0 - deep), DU::kWaterThroughInnerAV);
    }
    for (const double high : {1e-10, 1e-9}) {
      expectType(inner * (1.0 + high), DU::kWaterThroughAV);
    }
  }
}

TEST(TouchingLightPathsOfEqualIndices, ExistFromAnEventAtTheInnerSurface) {
  // The straight line touches the inner surface to the last digits: it is at
  // the end of one family of rays and at the start of another.
  constexpr double kIndex = 1.2769303342202885;
  const DU::ConcentricMedia media{
      5549.0023833975001, kOuter, {kIndex, kIndex, kIndex}};
  const TVector3 eventPos(5549.0023844151892, 0, 0);
  const TVector3 pmtPos(5548.9521607736715, 2622.3652760915243, 0);
  LightPathCalculator calculator = CalculatorFor(media);
  calculator.CalcByPosition(eventPos, pmtPos);
  ASSERT_TRUE(calculator.HasPath());
  EXPECT_EQ(FlawOf(calculator, media, eventPos, pmtPos), "");
  const double apart = (pmtPos - eventPos).Mag();
  EXPECT_NEAR(calculator.GetOpticalLength(), kIndex * apart, 1e-8);
  for (const TVector3& corner : CornersOf(calculator)) {
    EXPECT_LE(DistanceFromSegment(corner, eventPos, pmtPos), 1e-9);
  }
}

}  // namespace
}  // namespace ZARN::Testing

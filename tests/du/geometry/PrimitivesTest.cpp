#include "du/geometry/Primitives.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "du/geometry/Constants.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/PrintVectors.hpp"
#include "tests/du/RootWarnings.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::Captured;
using Testing::FindExact;
using Testing::kInfinity;
using Testing::RootWarnings;

/// Keeps the compiler from evaluating functions of constants: it rounds
/// correctly, while the library may be off by one unit in the last place.
double AtRunTime(double x) {
  const volatile double hidden = x;
  return hidden;
}

double ArcCosine(double x) { return std::acos(AtRunTime(x)); }

TEST(VectorToSphereEdge, LeavesTheSphereFromItsCentre) {
  EXPECT_EQ(VectorToSphereEdge({0, 0, 0}, {0, 0, 1}, 8500.0, false),
            TVector3(0, 0, 8500));
}

TEST(VectorToSphereEdge, GivesTheCrossingBehindTheCentreAsTheNearOne) {
  EXPECT_EQ(VectorToSphereEdge({0, 0, 0}, {0, 0, 1}, 8500.0, true),
            TVector3(0, 0, -8500));
}

TEST(VectorToSphereEdge, GivesTheStartAndFourDiagnosticsWhenTheLineMisses) {
  const Captured captured(debug);
  EXPECT_EQ(VectorToSphereEdge({0, 0, 9000}, {1, 0, 0}, 8500.0, false),
            TVector3(0, 0, 9000));
  EXPECT_EQ(captured.Text(),
            "ShadowingCalculator::VectorToSphereEdge: Erroneous calculation - "
            "negative discriminant\n"
            "Discriminant Value: -3.5e+07\n"
            "ACoeff: 1, BCoeff: 1.10218e-12, CCoeff: 8.75e+06\n"
            "StartPos.Mag(): 9000 and R: 8500\n");
}

TEST(VectorToSphereEdge, GivesTheStartAsTheNearCrossingTooWhenTheLineMisses) {
  EXPECT_EQ(VectorToSphereEdge({0, 0, 9000}, {1, 0, 0}, 8500.0, true),
            TVector3(0, 0, 9000));
}

TEST(VectorToSphereEdge, WritesNoWarning) {
  const Captured captured(warn);
  VectorToSphereEdge({0, 0, 9000}, {1, 0, 0}, 8500.0, false);
  EXPECT_EQ(captured.Text(), "");
}

TEST(VectorToSphereEdge, IsSilentAboutALineThatMeetsTheSphere) {
  const Captured captured(debug);
  VectorToSphereEdge({-10, 0, 0}, {1, 0, 0}, 5.0, false);
  VectorToSphereEdge({-10, 0, 0}, {-1, 0, 0}, 5.0, false);
  EXPECT_EQ(captured.Text(), "");
}

TEST(VectorToSphereEdge, CountsADiscriminantOfZeroAsMeeting) {
  const Captured captured(debug);
  EXPECT_EQ(VectorToSphereEdge({0, 0, 0}, {1, 0, 0}, 0.0, false),
            TVector3(0, 0, 0));
  EXPECT_EQ(captured.Text(), "");
}

TEST(VectorToSphereEdge, ReportsADiscriminantThatIsNotANumber) {
  const Captured captured(debug);
  EXPECT_EQ(VectorToSphereEdge({1, 2, 3}, {1, 0, 0}, std::nan(""), false),
            TVector3(1, 2, 3));
  const std::string text = captured.Text();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
}

TEST(VectorToSphereEdge, GivesTheFarCrossingFromOutsideHeadingIn) {
  EXPECT_EQ(VectorToSphereEdge({-10, 0, 0}, {1, 0, 0}, 5.0, false),
            TVector3(5, 0, 0));
}

TEST(VectorToSphereEdge, GivesTheFirstCrossingAsTheNearOneFromOutside) {
  EXPECT_EQ(VectorToSphereEdge({-10, 0, 0}, {1, 0, 0}, 5.0, true),
            TVector3(-5, 0, 0));
}

TEST(VectorToSphereEdge, GivesThePointFarthestBehindWhenHeadingAway) {
  EXPECT_EQ(VectorToSphereEdge({10, 0, 0}, {1, 0, 0}, 5.0, false),
            TVector3(-5, 0, 0));
  EXPECT_EQ(VectorToSphereEdge({10, 0, 0}, {1, 0, 0}, 5.0, true),
            TVector3(-5, 0, 0));
}

TEST(VectorToSphereEdge, TakesAFarCrossingOnlyStrictlyAheadOfTheStart) {
  // On the sphere and heading out the far crossing is the start itself.
  EXPECT_EQ(VectorToSphereEdge({5, 0, 0}, {1, 0, 0}, 5.0, false),
            TVector3(-5, 0, 0));
  const TVector3 inside(Below(5.0), 0, 0);
  EXPECT_GT(VectorToSphereEdge(inside, {1, 0, 0}, 5.0, false).X(), 4.0);
}

TEST(VectorToSphereEdge, UsesTheDirectionAsAUnitVectorWhateverItsLength) {
  EXPECT_EQ(VectorToSphereEdge({0, 0, 0}, {0, 0, 0.5}, 10.0, false),
            TVector3(0, 0, 5));
  EXPECT_EQ(VectorToSphereEdge({0, 0, 0}, {0, 0, 2.0}, 10.0, false),
            TVector3(0, 0, 20));
}

TEST(VectorToSphereEdge, FollowsItsFormulaToTheLastBit) {
  const TVector3 start(123.4, -2345.6, 345.6);
  const TVector3 direction = TVector3(0.3, 0.5, -0.7).Unit();
  const double radius = 5860.0;
  const double m = start.Mag();
  const double b = (m + m) * std::cos(start.Angle(direction));
  const double c =
      (123.4 * 123.4 + 2345.6 * 2345.6 + 345.6 * 345.6) - radius * radius;
  const double root = std::sqrt(b * b - 4.0 * c);
  EXPECT_EQ(VectorToSphereEdge(start, direction, radius, false),
            start + ((root - b) * 0.5) * direction);
  EXPECT_EQ(VectorToSphereEdge(start, direction, radius, true),
            start + ((-b - root) * 0.5) * direction);
}

TEST(VectorToCylinderEdge, LeavesTheCylinderAlongARadius) {
  EXPECT_EQ(VectorToCylinderEdge({1, 0, 0}, {1, 0, 0}, {0, 0, 0}, 5.0),
            TVector3(5, 0, 0));
}

TEST(VectorToCylinderEdge, AddsTheShift) {
  EXPECT_EQ(VectorToCylinderEdge({1, 0, 0}, {1, 0, 0}, {10, 20, 30}, 5.0),
            TVector3(15, 20, 30));
}

TEST(VectorToCylinderEdge, IgnoresTheHeightOfTheStart) {
  EXPECT_EQ(VectorToCylinderEdge({1, 0, 777}, {1, 0, 0}, {0, 0, 0}, 5.0),
            TVector3(5, 0, 0));
}

TEST(VectorToCylinderEdge, RisesByTheTangentTimesTheHorizontalDistance) {
  const TVector3 direction(1, 0, 0.75);
  const double alpha = TVector3(1, 0, 0).Angle(direction);
  EXPECT_EQ(VectorToCylinderEdge({1, 0, 0}, direction, {0, 0, 30}, 5.0),
            TVector3(5, 0, 30 + 4 * std::tan(alpha)));
}

TEST(VectorToCylinderEdge, RisesEvenForADownwardDirection) {
  // The angle has no sign.
  EXPECT_EQ(VectorToCylinderEdge({1, 0, 0}, {1, 0, -0.75}, {0, 0, 0}, 5.0),
            VectorToCylinderEdge({1, 0, 0}, {1, 0, 0.75}, {0, 0, 0}, 5.0));
}

TEST(VectorToCylinderEdge, FallsIfTheEdgeIsBehindTheStart) {
  // Outside and heading outwards, the crossing is behind the start, more than
  // pi/2 away from the direction.
  const TVector3 direction(1, 0, 0.75);
  const double alpha = TVector3(-1, 0, 0).Angle(direction);
  const TVector3 edge =
      VectorToCylinderEdge({10, 0, 0}, direction, {0, 0, 0}, 5.0);
  EXPECT_EQ(edge, TVector3(-5, 0, 15 * std::tan(alpha)));
  EXPECT_LT(edge.Z(), 0.0);
}

TEST(VectorToCylinderEdge, DoesNotRenormaliseTheFlattenedDirection) {
  const TVector3 start(100, 200, 300);
  const TVector3 direction = TVector3(0.3, 0.4, 0.8).Unit();
  const TVector3 edge =
      VectorToSphereEdge(Flattened(start), Flattened(direction), 5880.0, false);
  EXPECT_LT(edge.Mag(), 5000.0);  // far from the cylinder
  const double alpha = edge.Unit().Angle(direction);
  const double dz = (edge - Flattened(start)).Mag() * std::tan(alpha);
  EXPECT_EQ(VectorToCylinderEdge(start, direction, {0, 0, 0}, 5880.0),
            edge + TVector3(0, 0, dz));
}

TEST(VectorToCylinderEdge, PassesAnAngleThatIsNotANumberToTheTangent) {
  const TVector3 edge =
      VectorToCylinderEdge({1, 0, 0}, {1, 0, std::nan("")}, {0, 0, 0}, 5.0);
  EXPECT_EQ(edge.X(), 5.0);
  EXPECT_TRUE(std::isnan(edge.Z()));
}

TEST(VectorToCylinderEdge, StaysAtAStartOnTheAxisWithAVerticalDirection) {
  EXPECT_EQ(VectorToCylinderEdge({0, 0, 9}, {0, 0, 1}, {1, 2, 3}, 5.0),
            TVector3(1, 2, 3));
}

/// A line that starts on the cylinder and whose flattened direction is half a
/// unit long. By the formula it leaves about perpendicular to the edge point.
class SquareLine {
 public:
  static TVector3 Start() { return {5, 0, 0}; }
  static TVector3 Direction(double y) { return {-0.3, y, 0.25}; }
  static TVector3 Edge(double y) {
    return VectorToSphereEdge(Start(), Flattened(Direction(y)), 5.0, false);
  }
  static double Alpha(double y) { return Edge(y).Unit().Angle(Direction(y)); }
  static TVector3 Crossing(double y) {
    return VectorToCylinderEdge(Start(), Direction(y), {10, 20, 30}, 5.0);
  }
};

TEST(VectorToCylinderEdge, AddsNoHeightAtExactlyARightAngle) {
  const auto y = FindExact(0.3, 0.5, SquareLine::Alpha, kHalfPi);
  ASSERT_TRUE(y.has_value());
  EXPECT_GT((SquareLine::Edge(*y) - SquareLine::Start()).Mag(), 1.0);
  EXPECT_EQ(SquareLine::Crossing(*y),
            SquareLine::Edge(*y) + TVector3(10, 20, 30));
  EXPECT_EQ(SquareLine::Crossing(*y).Z(), 30.0);
}

TEST(VectorToCylinderEdge, RisesVeryHighOneBitAwayFromARightAngle) {
  for (const double alpha : {Below(kHalfPi), Above(kHalfPi)}) {
    const auto y = FindExact(0.3, 0.5, SquareLine::Alpha, alpha);
    ASSERT_TRUE(y.has_value());
    const double way = (SquareLine::Edge(*y) - SquareLine::Start()).Mag();
    EXPECT_EQ(SquareLine::Crossing(*y).Z(),
              30.0 + way * std::tan(AtRunTime(alpha)));
    EXPECT_GT(std::abs(SquareLine::Crossing(*y).Z()), 1e12);
  }
}

TEST(ClosestAngle, IsTheAngleOfTheTangent) {
  EXPECT_EQ(ClosestAngle({2, 0, 0}, 1.0), kHalfPi - ArcCosine(0.5));
  EXPECT_EQ(ClosestAngle({0, 0, -2}, 1.0), kHalfPi - ArcCosine(0.5));
  EXPECT_EQ(ClosestAngle({2, 0, 0}, -1.0), kHalfPi - ArcCosine(-0.5));
}

TEST(ClosestAngle, IsARightAngleFromInside) {
  EXPECT_EQ(ClosestAngle({2, 0, 0}, 3.0), 1.5707963267948966);
  EXPECT_EQ(ClosestAngle({2, 0, 0}, -3.0), -1.5707963267948966);
}

TEST(ClosestAngle, IsARightAngleOnTheSphereAndSmallerJustOutside) {
  EXPECT_EQ(ClosestAngle({2, 0, 0}, 2.0), kHalfPi);
  EXPECT_EQ(ClosestAngle({2, 0, 0}, Above(2.0)), kHalfPi);
  EXPECT_EQ(ClosestAngle({2, 0, 0}, Below(2.0)),
            kHalfPi - ArcCosine(Below(1.0)));
  EXPECT_EQ(ClosestAngle({2, 0, 0}, -2.0), kHalfPi - ArcCosine(-1.0));
  EXPECT_EQ(ClosestAngle({2, 0, 0}, Below(-2.0)), -kHalfPi);
  EXPECT_EQ(ClosestAngle({2, 0, 0}, Above(-2.0)),
            kHalfPi - ArcCosine(Above(-1.0)));
}

TEST(ClosestAngle, IsARightAngleWithTheSignOfTheRadiusAtTheOrigin) {
  EXPECT_EQ(ClosestAngle({0, 0, 0}, 1.0), kHalfPi);
  EXPECT_EQ(ClosestAngle({0, 0, 0}, -1.0), -kHalfPi);
  EXPECT_EQ(ClosestAngle({0, 0, 0}, kInfinity), kHalfPi);
  EXPECT_TRUE(std::isnan(ClosestAngle({0, 0, 0}, 0.0)));
}

TEST(Flattened, SetsTheHeightToZeroAndKeepsTheRest) {
  EXPECT_EQ(Flattened({1, 2, 3}), TVector3(1, 2, 0));
}

TEST(Rotated, RotatesAboutTheVerticalAxis) {
  TVector3 expected(1, 2, 3);
  expected.RotateZ(0.5);
  EXPECT_EQ(Rotated({1, 2, 3}, 0.5), expected);
  EXPECT_EQ(Rotated({1, 2, 3}, 0.0), TVector3(1, 2, 3));
}

TEST(WithPhi, SetsTheAzimuth) {
  TVector3 expected(1, 2, 3);
  expected.SetPhi(-2.0);
  EXPECT_EQ(WithPhi({1, 2, 3}, -2.0), expected);
}

TEST(WithMag, SetsTheLength) {
  EXPECT_EQ(WithMag({0, 3, 4}, 10.0), TVector3(0, 6, 8));
}

TEST(WithMag, KeepsAZeroVectorAndLetsRootWarn) {
  const RootWarnings warnings;
  EXPECT_EQ(WithMag({0, 0, 0}, 10.0), TVector3(0, 0, 0));
  EXPECT_EQ(RootWarnings::Messages(),
            (std::vector<std::string>{Testing::kZeroVectorWarning}));
}

TEST(Constants, AreTheNumbersWrittenInTheFormulas) {
  EXPECT_EQ(kPi, 3.141592653589793);
  EXPECT_EQ(kTwoPi, 6.283185307179586);
  EXPECT_EQ(kHalfPi, 1.5707963267948966);
  EXPECT_EQ(kDegreesPerRadian, 57.29577951308232);
  EXPECT_EQ(kRopeEndSphereRadius, 8500.0);
  EXPECT_EQ(ZHat(), TVector3(0, 0, 1.0));
}

}  // namespace
}  // namespace ZARN::DU

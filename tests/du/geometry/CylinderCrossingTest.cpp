#include "du/geometry/CylinderCrossing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "tests/du/Answers.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::AnswerTally;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::Random;

/// A line, and the cylinder to which it is followed.
struct Line {
  TVector3 start;
  TVector3 direction;
  double radius;
};

/// The share of random lines that may be left open.
template <class Real>
constexpr double kMostUnsure = std::is_same_v<Real, double> ? 0.01 : 0.15;

template <class Real>
class CrossCylinderIn : public ::testing::Test {
 protected:
  using Bands = CrossingBands<Real>;

  static CylinderCrossing<Real> Cross(const Line& line) {
    const auto real = [](double value) { return static_cast<Real>(value); };
    return CrossCylinder(real(line.start.X()), real(line.start.Y()),
                         real(line.direction.X()), real(line.direction.Y()),
                         real(line.direction.Z()),
                         real(line.radius * line.radius));
  }

  static TVector3 Formula(const Line& line) {
    return VectorToCylinderEdge(line.start, line.direction, {}, line.radius,
                                eDiagnostics::kSilent);
  }

  static eAnswer JudgeHeight(const CylinderCrossing<Real>& crossing,
                             double limit) {
    const Real limit2 = static_cast<Real>(limit * limit);
    return AnswerOf(IsWithinHeight(crossing, limit2),
                    IsAboveHeight(crossing, limit2));
  }

  /// A line that is as wrong as the bands allow.
  Line Disturbed(Line line) {
    if constexpr (std::is_same_v<Real, float>) {
      const double s = std::hypot(line.radius, line.start.Perp());
      const double turn = errors_.Uniform(-1, 1) * Bands::kPathError;
      line.start += Bands::kPathError * s * errors_.Direction();
      line.direction.RotateZ(turn);
    }
    return line;
  }

  /// Compare the crossing, and heights around it, with the formula.
  void Check(const Line& line) {
    ++count_;
    const auto crossing = Cross(Disturbed(line));
    const TVector3 expected = Formula(line);
    const double height = std::abs(expected.Z());
    for (const double limit :
         {0.0, 10.0, 6000.0, 1e5, height, height * 1.1, height / 1.1,
          height * (1 + 1e-8), height * (1 - 1e-8), height * (1 + 1e-3),
          height * (1 - 1e-3)}) {
      heights_.Add(JudgeHeight(crossing, limit), !(height > limit), line.start);
    }
    if (!crossing.isSure) return;
    ++sure_;
    const double s = std::hypot(line.radius, line.start.Perp());
    const double off = std::hypot(double{crossing.x} - expected.X(),
                                  double{crossing.y} - expected.Y());
    const double length = line.direction.Perp();
    wayError_ = std::max(wayError_, off / s / std::max(length, 1.0));
    const TVector3 found(double{crossing.x}, double{crossing.y}, 0);
    azimuthError_ = std::max(azimuthError_, std::abs(found.DeltaPhi(expected)));
    CheckInSpace(crossing, expected);
  }

  /// The same for its direction from the centre, where that is reliable.
  void CheckInSpace(const CylinderCrossing<Real>& crossing,
                    const TVector3& expected) {
    if (!(crossing.along2 > Bands::kLeastCosine2InSpace * crossing.scale))
      return;
    const TVector3 found(double{crossing.x}, double{crossing.y},
                         double{crossing.Height()});
    constexpr double kLongestWay = CrossingBands<double>::kLongestWay;
    if (!(std::sqrt(double{crossing.way2}) < kLongestWay * found.Perp()))
      return;
    spaceError_ =
        std::max(spaceError_, std::abs(found.Theta() - expected.Theta()));
  }

  void ExpectTheStatedErrors() const {
    EXPECT_LE(wayError_, Bands::kWayError);
    EXPECT_LE(azimuthError_, Bands::kAzimuthError);
    EXPECT_LE(spaceError_, Bands::kSpaceError);
    heights_.ExpectNoneWrong();
  }

  Random errors_{9};
  int count_ = 0;
  int sure_ = 0;
  double wayError_ = 0.0;
  double azimuthError_ = 0.0;
  double spaceError_ = 0.0;
  AnswerTally heights_;
};

using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(CrossCylinderIn, Precisions);

/// From the vessel sphere to cylinders of about the same radius, in all
/// directions.
Line RandomLine(Random& random) {
  return {5860.0 * random.Direction(), random.Direction(),
          random.Uniform(5000, 7000)};
}

TYPED_TEST(CrossCylinderIn, IsRightAndMostlySureFromTheVessel) {
  Random random(10);
  for (int i = 0; i < 30000; ++i) this->Check(RandomLine(random));
  this->ExpectTheStatedErrors();
  EXPECT_GT(this->sure_, (1 - kMostUnsure<TypeParam>)*this->count_);
  // Only heights at the limit itself or next to it are left open.
  this->heights_.Expect(0.6);
}

TYPED_TEST(CrossCylinderIn, IsRightFromWaterToo) {
  Random random(11);
  for (int i = 0; i < 30000; ++i) {
    this->Check({random.Uniform(0, 9000) * random.Direction(),
                 random.Direction(), random.Uniform(3000, 7000)});
  }
  this->ExpectTheStatedErrors();
  EXPECT_GT(this->sure_, 0.8 * this->count_);
}

TYPED_TEST(CrossCylinderIn, IsRightWhereItIsSureNearEveryLimit) {
  Random random(12);
  const auto small = [&] {
    return (random.Chance(0.5) ? 1 : -1) * std::pow(10, random.Uniform(-17, 0));
  };
  for (int i = 0; i < 20000; ++i) {
    const Line line = RandomLine(random);
    TVector3 outward = line.start;
    outward.SetZ(0);
    outward = outward.Unit();
    TVector3 aside = outward;
    aside.RotateZ(kHalfPi);

    // From the cylinder itself, outwards or inwards: the far crossing is either
    // the start or on the opposite side.
    this->Check(
        {line.start, line.direction, line.start.Perp() * (1 + small())});
    // Past the cylinder so that the line only just touches or misses it.
    TVector3 tangent = aside;
    tangent.RotateZ(std::asin(std::min(1.0, 4000.0 / line.start.Perp())) -
                    kHalfPi + small());
    this->Check({line.start, (tangent + small() * ZHat()).Unit(), 4000.0});
    this->Check({line.start, tangent, 4000.0 * (1 + small())});
    // Nearly vertical and nearly horizontal.
    this->Check({line.start, (ZHat() + small() * outward).Unit(), line.radius});
    this->Check({line.start, (outward + small() * ZHat()).Unit(), line.radius});
    // Nearly perpendicular to the direction of the crossing.
    const TVector3 edge = VectorToCylinderEdge(
        line.start, line.direction, {}, line.radius, eDiagnostics::kSilent);
    TVector3 square(-edge.Y(), edge.X(), 0);
    this->Check({line.start, (square.Unit() + small() * line.direction).Unit(),
                 line.start.Perp()});
    // From the axis.
    this->Check({small() * line.start, line.direction, line.radius});
  }
  this->ExpectTheStatedErrors();
  EXPECT_GT(this->sure_, 0);
}

TYPED_TEST(CrossCylinderIn, IsRightForEveryRadiusAndDistance) {
  // Where the errors are largest: for crossings near the axis, along the edge
  // of the cylinder, and steeply upwards.
  Random random(15);
  for (int i = 0; i < 100000; ++i) {
    const double radius = std::pow(10, random.Uniform(0, 5));
    const TVector3 start = Rotated(
        {std::min(9.9e4, radius * std::pow(10, random.Uniform(-2, 2))), 0, 0},
        random.Uniform(-kPi, kPi));
    const double aside = std::asin(
        std::min(1.0, radius * random.Uniform(0, 1.2) / start.Perp()));
    TVector3 direction = Rotated(-start.Unit(), aside);
    direction.SetZ(std::pow(10, random.Uniform(-9, 2)));
    this->Check({start, random.Uniform(0.72, 1.4) * direction.Unit(), radius});
  }
  this->ExpectTheStatedErrors();
  EXPECT_GT(this->sure_, 0.3 * this->count_);
}

TYPED_TEST(CrossCylinderIn, IsRightForDirectionsOfAnotherLengthToo) {
  Random random(13);
  for (int i = 0; i < 20000; ++i) {
    Line line = RandomLine(random);
    line.direction *= random.Uniform(0.71, 1.41);
    this->Check(line);
  }
  this->ExpectTheStatedErrors();
  EXPECT_GT(this->sure_, 0.8 * this->count_);
}

TYPED_TEST(CrossCylinderIn, IsUnsureOfDirectionsFarFromUnitLength) {
  const TVector3 direction(0.6, 0, 0.8);
  const auto isSure = [&](double length) {
    return this->Cross({{100, 200, 0}, length * direction, 6000.0}).isSure;
  };
  EXPECT_TRUE(isSure(1.0));
  EXPECT_TRUE(isSure(0.71));
  EXPECT_TRUE(isSure(1.41));
  for (const double length : {0.0, 1e-30, 1e-3, 0.7, 1.42, 1e3, 1e30}) {
    EXPECT_FALSE(isSure(length)) << length;
  }
}

TYPED_TEST(CrossCylinderIn, IsUnsureOfPlacesFarFromTheDetector) {
  const auto isSure = [&](double x) {
    return this->Cross({{x, 0, 0}, {-1, 0, 0}, std::abs(x) / 2}).isSure;
  };
  EXPECT_TRUE(isSure(9.9e4));
  for (const double x : {1.01e5, -1e10, 1e19, 1e30}) {
    EXPECT_FALSE(isSure(x)) << x;
  }
}

TYPED_TEST(CrossCylinderIn, IsUnsureOfWhatIsNotFinite) {
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (const int axis : {0, 1, 2}) {
      TVector3 direction(0.6, 0, 0.8);
      direction[axis] = bad;
      EXPECT_FALSE(this->Cross({{1, 2, 3}, direction, 6000.0}).isSure);
      if (axis == 2) continue;  // the height of the start does not matter
      TVector3 start(1, 2, 3);
      start[axis] = bad;
      EXPECT_FALSE(this->Cross({start, {0.6, 0, 0.8}, 6000.0}).isSure);
    }
  }
  // The radius of a filter that judges nothing is NaN.
  const auto crossing = this->Cross({{1, 2, 3}, {0.6, 0, 0.8}, kNaN});
  EXPECT_FALSE(crossing.isSure);
  EXPECT_EQ(this->JudgeHeight(crossing, 6000.0), eAnswer::kUnsure);
  const auto good = this->Cross({{1, 2, 3}, {0.6, 0, 0.8}, 6000.0});
  EXPECT_TRUE(good.isSure);
  EXPECT_EQ(this->JudgeHeight(good, kNaN), eAnswer::kUnsure);
}

TYPED_TEST(CrossCylinderIn, IsUnsureWhereTheFormulaJumps) {
  // An exactly perpendicular direction adds no height; one bit away from that
  // the height is huge.
  const Line touching = {{6000, 0, 0}, {0, 1, 0}, 6000.0};
  EXPECT_FALSE(this->Cross(touching).isSure);
  const Line upwards = {{1, 2, 3}, {0, 0, 1}, 6000.0};
  EXPECT_FALSE(this->Cross(upwards).isSure);
  // On the cylinder and heading outwards the formula may find either side.
  const Line leaving = {{6000, 0, 0}, {1, 0, 0}, 6000.0};
  EXPECT_FALSE(this->Cross(leaving).isSure);
}

TYPED_TEST(CrossCylinderIn,
           IsUnsurePerpendicularToACrossingThatIsOtherwiseSure) {
  // If the direction is not horizontal the crossing is not on the cylinder, and
  // no other band is near its limit.
  const auto isSure = [&](double x) {
    return this->Cross({{x, 3000, 0}, {0.6, 0, 0.8}, 5000.0}).isSure;
  };
  EXPECT_FALSE(isSure(-6000));
  EXPECT_TRUE(isSure(-6100));
  EXPECT_TRUE(isSure(-5900));
  // On either side of it, too: the height of the formula is huge there.
  EXPECT_FALSE(isSure(-6002));
  EXPECT_FALSE(isSure(-5998));
}

TYPED_TEST(CrossCylinderIn, IsUnsureOfACrossingNearTheAxisOnly) {
  // The azimuth of such a crossing is arbitrary, and no other band is near its
  // limit: the direction is straight away from the axis.
  const auto isSure = [&](double x) {
    return this->Cross({{x, 1, 0}, {0.6, 0, 0.8}, 4000.0}).isSure;
  };
  EXPECT_FALSE(isSure(-5975));
  EXPECT_FALSE(isSure(-6025));
  EXPECT_TRUE(isSure(-3000));
  EXPECT_TRUE(isSure(-10000));
}

TYPED_TEST(CrossCylinderIn, StaysAtTheStartOfALineThatMisses) {
  const auto crossing = this->Cross({{0, 7000, 3}, {0.8, 0.6, 0}, 5000.0});
  EXPECT_TRUE(crossing.isSure);
  EXPECT_EQ(double{crossing.x}, 0.0);
  EXPECT_EQ(double{crossing.y}, 7000.0);
  EXPECT_EQ(double{crossing.Height()}, 0.0);
}

TEST(CrossCylinder, HasTheFormulasHeight) {
  Random random(14);
  int sure = 0;
  for (int i = 0; i < 30000; ++i) {
    const Line line = RandomLine(random);
    const auto crossing = CrossCylinder(
        line.start.X(), line.start.Y(), line.direction.X(), line.direction.Y(),
        line.direction.Z(), line.radius * line.radius);
    if (!crossing.isSure) continue;
    ++sure;
    const TVector3 expected =
        VectorToCylinderEdge(line.start, line.direction, {}, line.radius);
    ASSERT_NEAR(crossing.Height(), expected.Z(), 1e-7 * expected.Mag());
  }
  EXPECT_GT(sure, 29000);
}

}  // namespace
}  // namespace ZARN::DU

#include "du/geometry/AzimuthCell.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "du/geometry/Constants.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

template <class Real>
class AzimuthCellOf : public ::testing::Test {
 protected:
  static int Cell(double x, double y, int n) {
    return AzimuthCell(static_cast<Real>(x), static_cast<Real>(y),
                       static_cast<Real>(n) / Real(4), n);
  }
};

using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(AzimuthCellOf, Precisions);

TYPED_TEST(AzimuthCellOf, IncreasesAroundTheCircleFromTheNegativeYAxis) {
  constexpr int kCells = 64;
  constexpr int kSteps = 10000;
  int before = 0;
  std::set<int> met;
  for (int i = 0; i < kSteps; ++i) {
    const double phi = -kHalfPi + (i + 0.5) / kSteps * kTwoPi;
    const int cell = this->Cell(std::cos(phi), std::sin(phi), kCells);
    ASSERT_GE(cell, before) << phi;
    ASSERT_LT(cell, kCells) << phi;
    met.insert(cell);
    before = cell;
  }
  EXPECT_EQ(met.size(), std::size_t{kCells});
}

TYPED_TEST(AzimuthCellOf, GivesEachQuarterTurnAQuarterOfTheCells) {
  EXPECT_EQ(this->Cell(0, -1, 64), 0);
  EXPECT_EQ(this->Cell(1, 0, 64), 16);
  EXPECT_EQ(this->Cell(0, 1, 64), 32);
  EXPECT_EQ(this->Cell(-1, 0, 64), 48);
  // Halfway between the axes.
  EXPECT_EQ(this->Cell(1, -1, 64), 8);
  EXPECT_EQ(this->Cell(-1, -1, 64), 56);
}

TYPED_TEST(AzimuthCellOf, StaysInRangeWhereRoundingReachesTheFullTurn) {
  EXPECT_EQ(this->Cell(-1e-30, -1, 64), 63);
  EXPECT_EQ(this->Cell(1e-30, -1, 64), 0);
  EXPECT_EQ(this->Cell(-0.0, -1, 64), 0);
}

TEST(AzimuthCell, IsRightWithinItsErrorInSinglePrecision) {
  Testing::Random random(27);
  constexpr int kCells = 16384;
  int beside = 0;
  for (int i = 0; i < 200000; ++i) {
    const auto phi = random.Uniform(-kPi, kPi);
    const auto x = static_cast<float>(6000 * std::cos(phi));
    const auto y = static_cast<float>(6000 * std::sin(phi));
    const int cell = AzimuthCell(x, y, kCells / 4.0F, kCells);
    const auto cellOf = [&](double turned) {
      const double angle = std::atan2(double{y}, double{x}) + turned;
      return AzimuthCell(std::cos(angle), std::sin(angle), kCells / 4.0,
                         kCells);
    };
    if (cell == cellOf(0)) continue;
    ++beside;
    EXPECT_TRUE(cell == cellOf(kAzimuthCellError) ||
                cell == cellOf(-kAzimuthCellError))
        << phi;
  }
  EXPECT_GT(beside, 0);
}

TYPED_TEST(AzimuthCellOf, DoesNotDependOnTheLength) {
  for (const double length : {1e-30, 1e-3, 1e4, 1e30}) {
    EXPECT_EQ(this->Cell(-3 * length, 4 * length, 4096),
              this->Cell(-3, 4, 4096));
  }
}

TYPED_TEST(AzimuthCellOf, IsZeroIfThereIsOnlyOneCell) {
  for (const double x : {-1.0, 0.0, 1.0}) {
    for (const double y : {-1.0, 1.0}) EXPECT_EQ(this->Cell(x, y, 1), 0);
  }
}

}  // namespace
}  // namespace ZARN::DU

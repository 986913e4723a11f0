#include "du/geometry/OctahedralPlace.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "TVector3.h"
#include "tests/du/Neighbours.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::Random;

void ExpectPlace(const TVector3& direction, double u, double v) {
  const auto place = PlaceOf(direction.X(), direction.Y(), direction.Z());
  EXPECT_EQ(place.u, u);
  EXPECT_EQ(place.v, v);
}

TEST(OctahedralPlace, IsTheMiddleUpwardsAndACornerDownwards) {
  ExpectPlace({0, 0, 1}, 0, 0);
  ExpectPlace({0, 0, -1}, 1, 1);
  ExpectPlace({-1e-30, 1e-30, -1}, -1, 1);
  ExpectPlace({1e-30, -1e-30, -1}, 1, -1);
  ExpectPlace({-1e-30, -1e-30, -1}, -1, -1);
}

TEST(OctahedralPlace, IsTheMiddleOfASideAlongAHorizontalAxis) {
  ExpectPlace({1, 0, 0}, 1, 0);
  ExpectPlace({-1, 0, 0}, -1, 0);
  ExpectPlace({0, 1, 0}, 0, 1);
  ExpectPlace({0, -1, 0}, 0, -1);
}

TEST(OctahedralPlace, FoldsTheLowerHalfOutwardsOverTheDiagonal) {
  ExpectPlace({1, 2, 1}, 0.25, 0.5);
  ExpectPlace({1, 2, -1}, 0.5, 0.75);
  ExpectPlace({-1, -2, -1}, -0.5, -0.75);
}

TEST(OctahedralPlace, DoesNotDependOnTheLength) {
  ExpectPlace({1e-100, 2e-100, 1e-100}, 0.25, 0.5);
  ExpectPlace({1e100, 2e100, 1e100}, 0.25, 0.5);
}

TEST(OctahedralPlace, IsNearlyTheSameInSinglePrecision) {
  Random random(2);
  std::vector<TVector3> directions = {{1, 0, 0}, {0, 0, -1}, {1, 1, 0}};
  for (int i = 0; i < 100000; ++i) {
    directions.push_back(random.Direction());
    TVector3 nearAFold = directions.back();
    nearAFold[random.Whole(0, 2)] *= std::pow(10, random.Uniform(-12, 0));
    directions.push_back(nearAFold);
  }
  double largest = 0.0;
  for (TVector3 d : directions) {
    d *= 5860.0;
    const auto place = PlaceOf(d.X(), d.Y(), d.Z());
    const auto single =
        PlaceOf(static_cast<float>(d.X()), static_cast<float>(d.Y()),
                static_cast<float>(d.Z()));
    largest = std::max({largest, std::abs(place.u - double{single.u}),
                        std::abs(place.v - double{single.v})});
    ASSERT_LE(std::abs(single.u), 1.0F);
    ASSERT_LE(std::abs(single.v), 1.0F);
  }
  EXPECT_LE(largest, kPlaceError);
}

TEST(CellAlong, DividesTheSideIntoEqualParts) {
  EXPECT_EQ(CellAlong(-1.0, 4.0, 8), 0);
  EXPECT_EQ(CellAlong(-0.75, 4.0, 8), 1);
  EXPECT_EQ(CellAlong(Below(-0.75), 4.0, 8), 0);
  EXPECT_EQ(CellAlong(0.0, 4.0, 8), 4);
  EXPECT_EQ(CellAlong(0.99, 4.0, 8), 7);
}

TEST(CellAlong, GivesTheBorderToTheLastPart) {
  EXPECT_EQ(CellAlong(1.0, 4.0, 8), 7);
  EXPECT_EQ(CellAlong(Above(1.0), 4.0, 8), 7);
  EXPECT_EQ(CellAlong(1.0F, 512.0F, 1024), 1023);
}

}  // namespace
}  // namespace ZARN::DU

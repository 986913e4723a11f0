#include "du/geometry/OctahedralDirection.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Random;

TEST(DirectionAt, IsTheInverseOfPlaceOf) {
  Random random(3);
  for (int i = 0; i < 100000; ++i) {
    const double u = random.Uniform(-1, 1);
    const double v = random.Uniform(-1, 1);
    const Point direction = DirectionAt(u, v);
    EXPECT_NEAR(Squared(direction), 1.0, 1e-15);
    const auto place = PlaceOf(direction.x, direction.y, direction.z);
    ASSERT_NEAR(place.u, u, 1e-15);
    ASSERT_NEAR(place.v, v, 1e-15);
  }
}

TEST(DirectionAt, PointsUpFromTheMiddleAndDownFromEveryCorner) {
  EXPECT_EQ(DirectionAt(0, 0).z, 1.0);
  for (const double u : {-1.0, 1.0}) {
    for (const double v : {-1.0, 1.0}) EXPECT_EQ(DirectionAt(u, v).z, -1.0);
  }
}

TEST(DirectionAt, HasNoPointOfACellFartherFromItsMiddleThanACorner) {
  constexpr int kSide = 8;
  constexpr double kStep = 2.0 / kSide;
  Random random(4);
  for (int row = 0; row < kSide; ++row) {
    for (int column = 0; column < kSide; ++column) {
      const double u = column * kStep - 1;
      const double v = row * kStep - 1;
      const std::array<Point, 4> corners = {
          DirectionAt(u, v), DirectionAt(u + kStep, v),
          DirectionAt(u, v + kStep), DirectionAt(u + kStep, v + kStep)};
      Point middle;
      for (const Point& c : corners) {
        middle = {middle.x + c.x, middle.y + c.y, middle.z + c.z};
      }
      middle = Unit(middle);
      double farthest2 = 0.0;
      for (const Point& c : corners) {
        farthest2 = std::max(farthest2, SquaredDistance(c, middle));
      }
      for (int i = 0; i < 500; ++i) {
        // Half of them on the cell's edges.
        double across = random.Uniform(0, kStep);
        const double along = random.Uniform(0, kStep);
        if (i % 2 == 0) across = i % 4 == 0 ? 0 : kStep;
        const Point point = i % 8 < 4 ? DirectionAt(u + across, v + along)
                                      : DirectionAt(u + along, v + across);
        ASSERT_LE(SquaredDistance(point, middle), farthest2 + 1e-14)
            << row << " " << column;
      }
    }
  }
}

}  // namespace
}  // namespace ZARN::DU

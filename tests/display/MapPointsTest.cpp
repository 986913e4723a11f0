#include "display/MapPoints.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "display/Mollweide.hpp"

namespace ZARN::Display {
namespace {

std::vector<TVector3> All(const MapPoints& points) {
  return points.make(0, points.count);
}

/// The number of directions that a hemisphere has.
std::size_t CountAround(const std::vector<TVector3>& directions,
                        const TVector3& axis) {
  std::size_t count = 0;
  for (const TVector3& direction : directions) {
    count += direction.Dot(axis) > 0.0 ? 1U : 0U;
  }
  return count;
}

TEST(MapPoints, AreTheSameInPieces) {
  const std::vector<TVector3> points = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
  const MapPoints list = PointsOf(points);
  EXPECT_EQ(All(list), points);
  EXPECT_EQ(list.make(1, 2), std::vector<TVector3>{points[1]});
  const MapPoints even = EvenDirections(50);
  const std::vector<TVector3> all = All(even);
  for (std::size_t i = 0; i < even.count; ++i) {
    EXPECT_EQ(even.make(i, i + 1).front(), all[i]);
  }
}

TEST(EvenDirections, AreUnitVectorsSpreadEvenly) {
  const std::vector<TVector3> directions = All(EvenDirections(10000));
  ASSERT_EQ(directions.size(), 10000U);
  for (const TVector3& direction : directions) {
    EXPECT_NEAR(direction.Mag(), 1.0, 1e-15);
  }
  for (const TVector3& axis : {TVector3(0, 0, 1), TVector3(1, 0, 0),
                               TVector3(0.6, -0.8, 0), TVector3(1, 1, -1)}) {
    EXPECT_NEAR(static_cast<double>(CountAround(directions, axis)), 5000.0,
                20.0);
  }
  EXPECT_EQ(All(EvenDirections(1)).front(), TVector3(1, 0, 0));
  EXPECT_TRUE(All(EvenDirections(0)).empty());
}

TEST(JudgedPixels, AreThoseThatStandForADirectionRowByRow) {
  for (const MapGrid grid : {MapGrid{40, 20}, MapGrid{41, 21}, MapGrid{7, 30},
                             MapGrid{1, 1}, MapGrid{2, 9}}) {
    SCOPED_TRACE(grid.columns);
    std::vector<std::uint32_t> wanted;
    for (std::uint32_t pixel = 0; pixel < grid.columns * grid.rows; ++pixel) {
      const auto direction =
          grid.FindDirection(pixel % grid.columns, pixel / grid.columns);
      if (direction.has_value()) wanted.push_back(pixel);
    }
    EXPECT_EQ(JudgedPixels(grid), wanted);
  }
}

TEST(DirectionsOf, ThePixelsAreThoseOfTheGrid) {
  const MapGrid grid = {40, 20};
  const auto pixels = JudgedPixels(grid);
  const std::vector<TVector3> directions = All(DirectionsOf(grid, pixels));
  ASSERT_EQ(directions.size(), pixels.size());
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    EXPECT_EQ(directions[i],
              *grid.FindDirection(pixels[i] % 40, pixels[i] / 40));
  }
}

TEST(EndsOnSphere, LieInTheirDirectionsFromThePointOfView) {
  constexpr double kRadius = 8300.0;
  const std::vector<TVector3> directions = All(EvenDirections(500));
  for (const TVector3& from :
       {TVector3(), TVector3(0, 0, 3000), TVector3(-5000, 6600, 10)}) {
    const std::vector<TVector3> ends =
        All(EndsOnSphere(EvenDirections(500), from, kRadius));
    ASSERT_EQ(ends.size(), directions.size());
    for (std::size_t i = 0; i < ends.size(); ++i) {
      EXPECT_NEAR(ends[i].Mag(), kRadius, 1e-9);
      EXPECT_LT(((ends[i] - from).Unit() - directions[i]).Mag(), 1e-11);
    }
  }
}

TEST(EndsOnSphere, LieOnSpheresWhoseSquaresAreNoNumbers) {
  const std::vector<TVector3> directions = All(EvenDirections(500));
  for (const double radius : {1e-200, 1e200, 1.7e308}) {
    for (const TVector3& from : {TVector3(), TVector3(0.3, 0, -0.4)}) {
      SCOPED_TRACE(radius);
      const std::vector<TVector3> ends =
          All(EndsOnSphere(EvenDirections(500), from * radius, radius));
      for (std::size_t i = 0; i < ends.size(); ++i) {
        const TVector3 end(ends[i].X() / radius, ends[i].Y() / radius,
                           ends[i].Z() / radius);
        EXPECT_NEAR(end.Mag(), 1.0, 1e-15);
        EXPECT_LT(((end - from).Unit() - directions[i]).Mag(), 1e-14);
      }
    }
  }
}

}  // namespace
}  // namespace ZARN::Display

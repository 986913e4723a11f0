#include "du/geometry/NearestPoint.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::kInfinity;
using Testing::kNaN;
using Testing::Random;

/// The position of the nearest point, by a loop over all; none if no distance
/// is finite.
std::optional<std::size_t> NearestByLoop(const std::vector<TVector3>& points,
                                         const TVector3& place) {
  double nearest = kInfinity;
  std::optional<std::size_t> position;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double distance = (place - points[i]).Mag();
    if (!(distance < nearest)) continue;
    nearest = distance;
    position = i;
  }
  return position;
}

/// Points along a curve or anywhere, some of them odd or listed twice.
std::vector<TVector3> AnyPoints(Random& random, std::size_t count) {
  std::vector<TVector3> points;
  const TVector3 direction = random.Direction();
  const double step = random.Uniform(0, 20);
  for (std::size_t i = 0; i < count; ++i) {
    if (!points.empty() && random.Chance(0.1)) {
      points.push_back(points[random.Below(points.size())]);
    } else if (random.Chance(0.01)) {
      points.emplace_back(random.Chance(0.5) ? kNaN : kInfinity, 0, 5);
    } else if (random.Chance(0.5)) {
      points.push_back(static_cast<double>(i) * step * direction);
    } else {
      points.push_back(random.Uniform(0, 8000) * random.Direction());
    }
  }
  return points;
}

TEST(NearestPoint, IsTheOneThatALoopFinds) {
  Random random(93);
  for (const std::size_t count : {1U, 2U, 15U, 16U, 17U, 33U, 500U, 3000U}) {
    const auto points = AnyPoints(random, count);
    const NearestPoint tree(points);
    for (int i = 0; i < 500; ++i) {
      TVector3 place = random.Uniform(0, 9000) * random.Direction();
      if (random.Chance(0.3)) place = points[random.Below(count)];
      if (random.Chance(0.3)) place += random.Uniform(0, 5) * TVector3(1, 1, 1);
      EXPECT_EQ(tree.To(place), NearestByLoop(points, place));
    }
  }
}

TEST(NearestPoint, IsTheFirstWhoseRoundedDistanceIsTheSmallest) {
  // Squares that differ in the last bits can have the same root.
  Random random(95);
  std::vector<TVector3> points;
  for (int i = 0; i < 400; ++i) {
    points.push_back((1 + 1e-16 * random.Whole(-2, 2)) * 3.0 *
                     random.Direction());
  }
  const NearestPoint tree(points);
  for (int i = 0; i < 2000; ++i) {
    const TVector3 place = random.Uniform(0, 3e-16) * random.Direction();
    EXPECT_EQ(tree.To(place), NearestByLoop(points, place));
  }
}

TEST(NearestPoint, IsThereForOddPlaces) {
  Random random(94);
  const auto points = AnyPoints(random, 200);
  const NearestPoint tree(points);
  for (const double x : {0.0, 1e-300, 1e9, -1e150, 1e200, kInfinity, kNaN}) {
    const TVector3 place(x, 1.0, -x);
    EXPECT_EQ(tree.To(place), NearestByLoop(points, place)) << x;
  }
}

TEST(NearestPoint, IsNoneOfPointsWithoutADistance) {
  EXPECT_FALSE(NearestPoint().To({1, 2, 3}));
  EXPECT_FALSE(NearestPoint({{kNaN, 0, 0}, {0, kInfinity, 0}}).To({1, 2, 3}));
  // The square overflows.
  EXPECT_FALSE(NearestPoint({{1e200, 0, 0}}).To({0, 0, 0}));
}

}  // namespace
}  // namespace ZARN::DU

#include "du/geometry/QuarteredBox.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "du/geometry/OctahedralDirection.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Random;

constexpr Shell kShell = {5860.0, 1.0, 0.02};

/// The distance of a point from a quarter of a box without its margin, found by
/// moving along one edge after the other.
double DistanceToQuarter(const QuarteredBox& box, std::size_t quarter,
                         const Point& point) {
  Point away = point - box.BallAround(quarter).centre;
  constexpr std::array kMost = {0.5, 0.5, 1.0};
  std::array<double, 3> at = {};
  for (int turn = 0; turn < 100; ++turn) {
    for (std::size_t i = 0; i < at.size(); ++i) {
      const Point& edge = box.edges[i];
      if (Squared(edge) == 0.0) continue;
      const double wanted = at[i] + Dot(away, edge) / Squared(edge);
      const double next = std::clamp(wanted, -kMost[i], kMost[i]);
      away = away - Scaled(edge, next - at[i]);
      at[i] = next;
    }
  }
  return std::sqrt(Squared(away));
}

struct RandomSquare {
  /// @param size  cells along a side, of @p cells
  RandomSquare(Random& random, int cells, int size)
      : column(random.Whole(0, cells / size - 1)),
        row(random.Whole(0, cells / size - 1)),
        side(2.0 * size / cells) {}

  OctahedralSquare Square() const {
    return {(column + 0.5) * side - 1.0, (row + 0.5) * side - 1.0, side / 2};
  }
  bool IsFolded() const {
    return std::abs(1 - std::abs(Square().u) - std::abs(Square().v)) < side / 4;
  }
  /// The direction of a place in a quarter, often at an edge or corner.
  Point DirectionIn(std::size_t quarter, Random& random) const {
    const auto along = [&](std::size_t half) {
      const double inside =
          random.Chance(0.6) ? random.Whole(0, 1) : random.Uniform(0, 1);
      return (static_cast<double>(half) + inside) / 2;
    };
    const double u = (column + along(quarter % 2)) * side - 1.0;
    return DirectionAt(u, (row + along(quarter / 2)) * side - 1.0);
  }

  int column;
  int row;
  double side;
};

TEST(QuarteredBox, HoldsWhatIsAssignedToTheQuartersOfASquare) {
  Random random(90);
  for (const int cells : {16, 96, 1024}) {
    for (int i = 0; i < 4000; ++i) {
      int size = 2 << random.Whole(0, 8);
      while (cells % size != 0) size /= 2;
      const RandomSquare square(random, cells, size);
      const QuarteredBox box = BoxAround(square.Square(), kShell);
      for (std::size_t quarter = 0; quarter < 4; ++quarter) {
        const Point on = square.DirectionIn(quarter, random);
        const TVector3 aside = kShell.aside * random.Direction();
        const double height = random.Whole(-1, 1) * kShell.height;
        const Point point = Scaled(on, kShell.radius + height) +
                            Point{aside.X(), aside.Y(), aside.Z()};
        constexpr double kRounding = 1e-9;
        ASSERT_LE(DistanceToQuarter(box, quarter, point),
                  box.margin + kRounding)
            << cells << " cells, " << size << " at " << square.row << ", "
            << square.column << ", quarter " << quarter;
        const Ball ball = box.BallAround(quarter);
        ASSERT_LE(std::sqrt(SquaredDistance(point, ball.centre)),
                  ball.radius + kRounding);
      }
    }
  }
}

TEST(QuarteredBox, HoldsLittleElseAroundASmallSquare) {
  Random random(91);
  int folded = 0;
  for (int i = 0; i < 2000; ++i) {
    const RandomSquare square(random, 1024, 2);
    const QuarteredBox box = BoxAround(square.Square(), kShell);
    // A cell is 20 mm wide.
    EXPECT_LT(box.quarterRadius, 60.0);
    if (square.IsFolded()) {
      ++folded;
      continue;
    }
    EXPECT_LT(box.margin, 0.3);
    EXPECT_LT(box.quarterRadius, 27.0);
    EXPECT_NEAR(std::sqrt(Squared(box.edges[2])), kShell.height, 1e-9);
  }
  EXPECT_LT(folded, 20);
}

TEST(QuarteredBox, IsABallAroundTheSphereIfTheSquareIsLarge) {
  const QuarteredBox box = BoxAround({0.0, 0.0, 1.0 / 3.0}, kShell);
  for (std::size_t quarter = 0; quarter < 4; ++quarter) {
    const Ball ball = box.BallAround(quarter);
    EXPECT_EQ(Squared(ball.centre), 0.0);
    EXPECT_DOUBLE_EQ(ball.radius, 5861.02);
  }
}

}  // namespace
}  // namespace ZARN::DU

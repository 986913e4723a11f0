#include "display/Mollweide.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace ZARN::Display {
namespace {

constexpr double kPi = 3.14159265358979323846;

TVector3 Direction(double azimuth, double z) {
  const double across = std::sqrt((1.0 - z) * (1.0 + z));
  return {across * std::cos(azimuth), across * std::sin(azimuth), z};
}

TEST(Mollweide, PutsTheAxesWhereTheyAreSeenFromInside) {
  const MapPoint front = ProjectDirection({8300.0, 0.0, 0.0});
  EXPECT_DOUBLE_EQ(front.x, 0.0);
  EXPECT_NEAR(front.y, 0.0, 1e-15);
  EXPECT_NEAR(ProjectDirection({0.0, 5.0, 0.0}).x, -1.0, 1e-15);
  EXPECT_NEAR(ProjectDirection({0.0, -5.0, 0.0}).x, 1.0, 1e-15);
  EXPECT_NEAR(std::abs(ProjectDirection({-1.0, 0.0, 0.0}).x), 2.0, 1e-15);
  EXPECT_DOUBLE_EQ(ProjectDirection({0.0, 0.0, 3.0}).y, 1.0);
  EXPECT_DOUBLE_EQ(ProjectDirection({0.0, 0.0, -3.0}).y, -1.0);
}

TEST(Mollweide, AgreesWithTheClosedFormOfParallels) {
  for (int i = -899; i <= 899; ++i) {
    const double theta = 0.1 * i * kPi / 180.0;
    const double z = (2.0 * theta + std::sin(2.0 * theta)) / kPi;
    const double azimuth = 0.003 * i;
    SCOPED_TRACE(theta);
    const MapPoint point = ProjectDirection(Direction(azimuth, z));
    EXPECT_NEAR(point.y, std::sin(theta), 1e-12);
    EXPECT_NEAR(point.x, -2.0 / kPi * azimuth * std::cos(theta), 1e-9);
  }
}

TEST(Mollweide, IsUndoneByItsInverse) {
  std::mt19937_64 random(20231);
  std::uniform_real_distribution<double> part(-1.0, 1.0);
  for (int i = 0; i < 20000; ++i) {
    // A quarter of them close to a pole.
    double z = part(random);
    if (i % 4 == 0) {
      z = std::copysign(1.0 - std::pow(10.0, -12.0 * std::abs(z)), z);
    }
    const TVector3 direction = Direction(kPi * part(random), z);
    SCOPED_TRACE(i);
    const auto back = FindDirection(ProjectDirection(direction));
    ASSERT_TRUE(back.has_value());
    EXPECT_NEAR((*back - direction).Mag(), 0.0, 2e-8);
    if (std::abs(z) < 0.999) {
      EXPECT_NEAR((*back - direction).Mag(), 0.0, 1e-12);
    }
  }
}

TEST(Mollweide, MakesEqualSolidAnglesEqualAreas) {
  // The integral of 2 / pi * azimuth * sqrt(1 - y^2) over y.
  const auto integral = [](double y) {
    return 0.5 * (std::asin(y) + y * std::sqrt((1.0 - y) * (1.0 + y)));
  };
  constexpr int kBands = 200;
  for (int i = 0; i < kBands; ++i) {
    const double low = -1.0 + 2.0 * i / kBands;
    const double high = -1.0 + 2.0 * (i + 1) / kBands;
    const double area = 2.0 / kPi * 0.3 *
                        (integral(ProjectDirection(Direction(0.1, high)).y) -
                         integral(ProjectDirection(Direction(0.1, low)).y));
    SCOPED_TRACE(low);
    // Half of the solid angle: the ellipse has 2 pi, the sphere 4 pi.
    EXPECT_NEAR(area / (0.5 * 0.3 * (high - low)), 1.0, 1e-9);
  }
}

TEST(Mollweide, HasNoDirectionOutsideTheEllipse) {
  EXPECT_FALSE(FindDirection({2.0, 1.0}).has_value());
  EXPECT_FALSE(FindDirection({0.0, 1.001}).has_value());
  EXPECT_FALSE(FindDirection({2.001, 0.0}).has_value());
  EXPECT_FALSE(FindDirection({0.0, std::numeric_limits<double>::quiet_NaN()})
                   .has_value());
  EXPECT_TRUE(FindDirection({0.0, 1.0}).has_value());
}

TEST(Mollweide, GivesTheDirectionOfTheCentreOfAPixel) {
  const MapGrid grid = {400, 200};
  EXPECT_FALSE(grid.FindDirection(0, 0).has_value());
  const auto direction = grid.FindDirection(150, 60);
  ASSERT_TRUE(direction.has_value());
  const MapPoint point = ProjectDirection(*direction);
  EXPECT_NEAR(point.x, 4.0 * 150.5 / 400 - 2.0, 1e-12);
  EXPECT_NEAR(point.y, 1.0 - 2.0 * 60.5 / 200, 1e-12);
}

TEST(Mollweide, KnowsWhichVectorsHaveADirection) {
  EXPECT_TRUE(HasDirection({0.0, 0.0, 1e-300}));
  EXPECT_TRUE(HasDirection({1e300, 1e300, 0.0}));
  EXPECT_FALSE(HasDirection({0.0, 0.0, 0.0}));
  EXPECT_FALSE(HasDirection({std::nan(""), 1.0, 0.0}));
  EXPECT_FALSE(
      HasDirection({std::numeric_limits<double>::infinity(), 1.0, 0.0}));
}

}  // namespace
}  // namespace ZARN::Display

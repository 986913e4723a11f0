#include "lightpath/SweptAngle.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Random;

constexpr double kHalfPi = 1.5707963267948966;

struct Case {
  RayFamily family;
  PerSite<double> reaches;
};

/// Every family, in random media.
std::vector<Case> Cases(int perFamily) {
  struct Kind {
    eLightPathType type;
    eSense launch;
    eMedium start;
  };
  const std::vector<Kind> kinds = {
      {kInnerAVToWater, eSense::kOutward, eMedium::kInnerAV},
      {kInnerAVToWater, eSense::kInward, eMedium::kInnerAV},
      {kAVToWater, eSense::kOutward, eMedium::kAcrylic},
      {kAVToWater, eSense::kInward, eMedium::kAcrylic},
      {kAVThroughInnerAVToWater, eSense::kInward, eMedium::kAcrylic},
      {kWaterThroughAV, eSense::kInward, eMedium::kWater},
      {kWaterThroughInnerAV, eSense::kInward, eMedium::kWater},
      {kWaterReflection, eSense::kInward, eMedium::kWater}};
  Random random(7);
  std::vector<Case> cases;
  for (const Kind& kind : kinds) {
    for (int i = 0; i < perFamily; ++i) {
      ConcentricMedia media;
      media.OuterRadius = 6000;
      media.InnerRadius = random.Uniform(1000, 5990);
      for (double& n : media.RefractiveIndex) n = random.Uniform(1, 2);
      double event = random.Uniform(10, media.InnerRadius);
      if (kind.start == eMedium::kAcrylic) {
        event = random.Uniform(media.InnerRadius, media.OuterRadius);
      } else if (kind.start == eMedium::kWater) {
        event = random.Uniform(media.OuterRadius, 9000);
      }
      cases.push_back({RayFamily(kind.type, kind.launch),
                       ReachesOf(media, event, random.Uniform(6000, 9000))});
    }
  }
  return cases;
}

TEST(SweptAngle, EqualsTheSumOfArcSines) {
  for (const Case& c : Cases(50)) {
    const SweptAngle angle(c.family, c.reaches);
    for (const double t : {0.1, 0.7, 1.3, 1.5}) {
      double expected = c.family.Base;
      for (std::size_t i = 0; i < c.reaches.size(); ++i) {
        if (c.family.Turns[i] == 0) continue;
        const double sine = angle.Highest() * std::sin(t) / c.reaches[i];
        expected += c.family.Turns[i] * std::asin(sine);
      }
      EXPECT_NEAR(angle.At(t).Angle, expected, 1e-13);
    }
  }
}

TEST(SweptAngle, HasACentralRayThatEqualsTheComputedOne) {
  for (const Case& c : Cases(5)) {
    const SweptAngle angle(c.family, c.reaches);
    const auto central = angle.Central();
    const auto computed = angle.At(0.0);
    EXPECT_EQ(central.Angle, computed.Angle);
    EXPECT_NEAR(central.Slope, computed.Slope, 1e-15);
    EXPECT_NEAR(central.GrowingCurve, computed.GrowingCurve, 1e-14);
    EXPECT_NEAR(central.ShrinkingCurve, computed.ShrinkingCurve, 1e-14);
    EXPECT_EQ(central.Curve, 0.0);
    EXPECT_NEAR(central.Third, computed.Third, 1e-14);
    for (std::size_t i = 0; i < c.reaches.size(); ++i) {
      if (c.family.Turns[i] == 0) continue;
      EXPECT_NEAR(central.Cosines[i], computed.Cosines[i], 1e-15);
      EXPECT_EQ(central.Sines[i], computed.Sines[i]);
    }
  }
}

TEST(SweptAngle, HasTheStatedDerivatives) {
  constexpr double kStep = 1e-5;
  for (const Case& c : Cases(50)) {
    const SweptAngle angle(c.family, c.reaches);
    for (const double t : {0.2, 0.8, 1.2}) {
      const auto before = angle.At(t - kStep);
      const auto ray = angle.At(t);
      const auto after = angle.At(t + kStep);
      const auto difference = [](double a, double b) {
        return (b - a) / (2 * kStep);
      };
      EXPECT_NEAR(ray.Slope, difference(before.Angle, after.Angle), 1e-7);
      EXPECT_NEAR(ray.Curve, difference(before.Slope, after.Slope),
                  1e-7 * (1 + std::abs(ray.Third)));
      EXPECT_NEAR(ray.Third, difference(before.Curve, after.Curve),
                  1e-5 * (1 + std::abs(ray.Third)));
    }
  }
}

TEST(SweptAngle, IsFiniteIfSeveralSitesAreGrazedAtOnce) {
  ConcentricMedia media;
  media.InnerRadius = 5800;
  media.OuterRadius = 5860;
  media.RefractiveIndex = {1.5, 1.5, 1.5};
  const RayFamily family(kAVThroughInnerAVToWater, eSense::kInward);
  const SweptAngle angle(family, ReachesOf(media, 5800, 8300));
  const auto ray = angle.At(kHalfPi);
  EXPECT_NEAR(ray.Angle, std::acos(5800.0 / 8300), 1e-14);
  EXPECT_TRUE(std::isfinite(ray.Slope));
  EXPECT_TRUE(std::isfinite(ray.Curve));
}

TEST(SweptAngle, TurnsBackNoMoreOftenThanStated) {
  constexpr int kSteps = 2000;
  int turnedBack = 0;
  for (const Case& c : Cases(200)) {
    const SweptAngle angle(c.family, c.reaches);
    int extrema = 0;
    int inflections = 0;
    auto before = angle.At(0.5 * kHalfPi / kSteps);
    for (int i = 1; i < kSteps; ++i) {
      const auto ray = angle.At((i + 0.5) * kHalfPi / kSteps);
      if (before.Slope * ray.Slope < 0) ++extrema;
      if (before.Curve * ray.Curve < 0) ++inflections;
      before = ray;
    }
    EXPECT_LE(extrema, angle.MostExtrema());
    EXPECT_LE(inflections, angle.MostInflections());
    turnedBack += extrema;
  }
  EXPECT_GT(turnedBack, 100) << "the cases are too easy";
}

TEST(SweptAngle, HasTheOpticalLengthOfTheRay) {
  // A ray from the inside along x = 1000 in one medium: a straight line.
  ConcentricMedia media;
  media.InnerRadius = 5800;
  media.OuterRadius = 5860;
  media.RefractiveIndex = {1.5, 1.5, 1.5};
  const double event = std::hypot(1000.0, 2000.0);
  const auto reaches = ReachesOf(media, event, 8300);
  const double toPMT = std::sqrt(8300.0 * 8300 - 1000.0 * 1000);
  const SweptAngle out(RayFamily(kInnerAVToWater, eSense::kOutward), reaches);
  const SweptAngle in(RayFamily(kInnerAVToWater, eSense::kInward), reaches);
  const double t = std::asin(1000.0 / event);
  EXPECT_NEAR(out.OpticalLength(out.At(t)), 1.5 * (toPMT - 2000), 1e-9);
  EXPECT_NEAR(in.OpticalLength(in.At(t)), 1.5 * (toPMT + 2000), 1e-9);
}

}  // namespace
}  // namespace ZARN::DU

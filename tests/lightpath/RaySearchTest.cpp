#include "lightpath/RaySearch.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Random;

constexpr double kPi = 3.141592653589793;

ConcentricMedia RealMedia() {
  ConcentricMedia media;
  media.InnerRadius = 5800;
  media.OuterRadius = 5860;
  media.RefractiveIndex = {1.5274, 1.5077, 1.3443};  // at 400 nm
  return media;
}

/// Event and PMT whose light has to go through the vessel.
PathEnds EndsThroughVessel(Random& random, const ConcentricMedia& media) {
  const double outer = media.OuterRadius;
  PathEnds ends{};
  ends.PMTRadius = random.Uniform(outer, 1.6 * outer);
  ends.EventRadius = random.Uniform(0.001 * outer, 1.5 * outer);
  double least = 0.0;
  if (media.At(ends.EventRadius) == eMedium::kWater) {
    least =
        std::acos(outer / ends.EventRadius) + std::acos(outer / ends.PMTRadius);
  }
  ends.Angle = random.Uniform(least, kPi);
  return ends;
}

/// Distance, as a swept angle, from the nearest caustic, where two rays become
/// one and vanish.
double DistanceFromCaustic(const ConcentricMedia& media, const PathEnds& ends) {
  std::vector<RayFamily> families = {{kWaterThroughInnerAV, eSense::kInward}};
  if (media.At(ends.EventRadius) == eMedium::kInnerAV) {
    families = {{kInnerAVToWater, eSense::kInward},
                {kInnerAVToWater, eSense::kOutward}};
  } else if (media.At(ends.EventRadius) == eMedium::kAcrylic) {
    families = {{kAVThroughInnerAVToWater, eSense::kInward},
                {kAVToWater, eSense::kInward},
                {kAVToWater, eSense::kOutward}};
  }
  const auto reaches = ReachesOf(media, ends.EventRadius, ends.PMTRadius);
  double least = kPi;
  for (const RayFamily& family : families) {
    const SweptAngle angle(family, reaches);
    auto before = angle.Central();
    for (int i = 1; i <= 1000; ++i) {
      const auto ray = angle.At(0.5 * kPi * i / 1000);
      if (before.Slope * ray.Slope <= 0) {
        for (const double target : {ends.Angle, 2 * kPi - ends.Angle}) {
          least = std::min(least, std::abs(ray.Angle - target));
        }
      }
      before = ray;
    }
  }
  return least;
}

TEST(FindShortestRay, NeedsFewerThanTenEvaluationsAwayFromCaustics) {
  constexpr int kPairs = 100000;
  // The numbers that docs/light-paths.md states.
  constexpr double kNearCaustic = 0.2;  // rad
  constexpr double kGrazedTogether = 0.003;
  const ConcentricMedia media = RealMedia();
  Random random(11);
  int most = 0;
  int withTen = 0;
  for (int i = 0; i < kPairs; ++i) {
    const PathEnds ends = EndsThroughVessel(random, media);
    const int evaluations = FindShortestRay(media, ends).Evaluations;
    most = std::max(most, evaluations);
    if (evaluations < 10) continue;
    ++withTen;
    const auto reaches = ReachesOf(media, ends.EventRadius, ends.PMTRadius);
    const double share = reaches[IndexOf(eSite::kEvent)] /
                         reaches[IndexOf(eSite::kOuterFromWater)];
    if (std::abs(share - 1) < kGrazedTogether) continue;
    EXPECT_LT(DistanceFromCaustic(media, ends), kNearCaustic)
        << "event at " << ends.EventRadius << ", PMT at " << ends.PMTRadius
        << ", angle " << ends.Angle;
  }
  EXPECT_LT(withTen, kPairs / 100);
  EXPECT_LE(most, 14);
}

TEST(FindShortestRay, TerminatesInAnyMediaAndOnCaustics) {
  constexpr int kPairs = 100000;
  Random random(12);
  int most = 0;
  for (int i = 0; i < kPairs; ++i) {
    ConcentricMedia media;
    media.OuterRadius = 6000;
    media.InnerRadius = 6000 * random.Uniform(0.1, 0.999);
    for (double& n : media.RefractiveIndex) n = random.Uniform(1, 3);
    PathEnds ends = EndsThroughVessel(random, media);
    // Half of them exactly at an angle where a family of rays turns back.
    if (random.Chance(0.5)) {
      for (const JoiningRay& ray : FindAllRays(media, ends)) {
        const SweptAngle angle(
            *ray.Family, ReachesOf(media, ends.EventRadius, ends.PMTRadius));
        double low = 0.0;
        double high = 0.5 * kPi;
        if (angle.At(low).Slope * angle.At(high).Slope > 0) continue;
        for (int step = 0; step < 60; ++step) {
          const double middle = 0.5 * (low + high);
          const bool isLow = angle.At(middle).Slope * angle.At(high).Slope < 0;
          (isLow ? low : high) = middle;
        }
        const double turned = std::fmod(angle.At(low).Angle, 2 * kPi);
        ends.Angle = turned > kPi ? 2 * kPi - turned : turned;
      }
    }
    most = std::max(most, FindShortestRay(media, ends).Evaluations);
  }
  EXPECT_LE(most, 100);
}

TEST(FindShortestRay, FindsTheShortestRay) {
  Random random(13);
  int withSeveral = 0;
  for (int i = 0; i < 20000; ++i) {
    ConcentricMedia media = RealMedia();
    for (double& n : media.RefractiveIndex) n = random.Uniform(1, 2);
    const PathEnds ends = EndsThroughVessel(random, media);
    const auto all = FindAllRays(media, ends);
    const auto shortest = FindShortestRay(media, ends).Joining;
    ASSERT_EQ(shortest.Family == nullptr, all.empty());
    if (all.empty()) continue;
    if (all.size() > 1) ++withSeveral;
    double least = all.front().OpticalLength;
    for (const JoiningRay& ray : all)
      least = std::min(least, ray.OpticalLength);
    EXPECT_NEAR(shortest.OpticalLength, least, 1e-9);
  }
  EXPECT_GT(withSeveral, 500) << "too few cases with several rays";
}

}  // namespace
}  // namespace ZARN::DU

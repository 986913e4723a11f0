#include "lightpath/RefractedPaths.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/LightPathPairs.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainLightTracer.hpp"

namespace ZARN::Testing {
namespace {

using DU::RefractedPath;
using Reference::LaunchScan;
using Reference::TracedRay;
using Reference::TraceRay;

constexpr int kShards = 8;
constexpr int kLaunches = 100000;
constexpr int kAnglesPerScan = 25;
/// Pairs of the other property tests per pair here: a scan costs as much as
/// 10,000 paths.
constexpr int kPairsPerPair = 100;

/// A swept angle as an angle between 0 and pi.
double Folded(double swept) {
  const double turned = std::fmod(swept, kTwoPi);
  return turned > kPi ? kTwoPi - turned : turned;
}

double EventRadius(const DU::ConcentricMedia& media, Random& random) {
  const double inner = media.InnerRadius;
  const double outer = media.OuterRadius;
  const double side = random.Chance(0.5) ? 1.0 : -1.0;
  switch (random.Below(8)) {
    case 0:
    case 1:
      return inner * random.Uniform(0.001, 1.0);
    case 2:
      return inner * LogUniform(random, -9, 0);
    case 3:
      return random.Uniform(inner, outer);
    case 4:
      return inner * (1.0 + side * LogUniform(random, -9, -1));
    case 5:
      return outer * (1.0 + side * LogUniform(random, -9, -1));
    default:
      return outer * random.Uniform(1.0, 3.0);
  }
}

double PmtRadius(const DU::ConcentricMedia& media, Random& random) {
  switch (random.Below(4)) {
    case 0:
      return media.OuterRadius * 1.43;
    case 1:
      return media.OuterRadius * (1.0 + LogUniform(random, -9, 0));
    default:
      return media.OuterRadius * random.Uniform(1.0, 3.0);
  }
}

std::vector<double> Angles(const DU::ConcentricMedia& media,
                           const LaunchScan& scan, Random& random) {
  std::vector<double> angles;
  const auto add = [&](double angle) {
    if (angle > 0.0 && angle < kPi) angles.push_back(angle);
  };
  while (angles.size() < kAnglesPerScan) {
    switch (random.Below(4)) {
      case 0:
        add(random.Uniform(0.0, kPi));
        break;
      case 1:
        add(Folded(TraceRay(media, scan.EventRadius(), scan.PmtRadius(),
                            random.Uniform(0.0, kPi))
                       .SweptAngle));
        break;
      case 2:
        add(random.Chance(0.5) ? LogUniform(random, -9, 0)
                               : kPi - LogUniform(random, -9, 0));
        break;
      default:
        if (scan.Ends().empty()) break;
        add(Folded(random.Pick(scan.Ends()).SweptAngle +
                   (random.Chance(0.5) ? 1.0 : -1.0) *
                       LogUniform(random, -12, -1)));
    }
  }
  return angles;
}

/// Difference between the end of a ray and the angle, in either sense.
double Missed(const TracedRay& ray, double angle) {
  double missed = kTwoPi;
  for (const double way : LaunchScan::WaysAround(angle)) {
    missed = std::min(missed, std::abs(ray.SweptAngle - way));
  }
  return missed;
}

struct Tally {
  int pairs = 0;
  int nearAnEnd = 0;
  int solutions = 0;
  int unseen = 0;  // true solutions that the scan did not separate
  int pairsWithThree = 0;
  int pairsWithNone = 0;
  int onceAround = 0;
  std::array<int, DU::kNumberOfLightPathTypes> ofType{};
};

class RefractedPaths : public testing::TestWithParam<int> {
 protected:
  void CheckScan(const DU::ConcentricMedia& media, Random& random);

  Tally tally_;

 private:
  void CheckPair(const LaunchScan& scan, double angle);
  std::string FlawOfSolution(const RefractedPath& path, double angle) const;
  double SteepnessAt(const TracedRay& ray) const;
  TracedRay Trace(double launchAngle) const {
    return TraceRay(media_, eventRadius_, pmtRadius_, launchAngle);
  }

  DU::ConcentricMedia media_;
  double eventRadius_ = 0.0;
  double pmtRadius_ = 0.0;
};

/// The smallest change of the swept angle with the launch angle nearby.
double RefractedPaths::SteepnessAt(const TracedRay& ray) const {
  double steepness = std::numeric_limits<double>::infinity();
  for (const double step : {-1e-7, -1e-9, 1e-9, 1e-7}) {
    const TracedRay beside = Trace(ray.LaunchAngle + step);
    if (beside.Type != ray.Type) continue;
    const double change = std::abs(beside.SweptAngle - ray.SweptAngle);
    steepness = std::min(steepness, change / std::abs(step));
  }
  return steepness;
}

/// Traces the ray of a solution, and rays with launch angles within the
/// solver's error of it, and returns the first flaw.
std::string RefractedPaths::FlawOfSolution(const RefractedPath& path,
                                           double angle) const {
  const auto ways = LaunchScan::WaysAround(angle);
  const bool leadsThere = std::any_of(
      ways.begin(), ways.end(),
      [&](double way) { return std::abs(path.SweptAngle - way) <= 1e-14; });
  if (!leadsThere) return "swept angle leads elsewhere";

  constexpr int kNudges = 10;
  const double most = 2e-13 + LaunchScan::BlurOf(path.LaunchAngle);
  bool isBelow = false;
  bool isAbove = false;
  bool isAtEnd = false;
  double lowest = kTwoPi * 2.0;
  double highest = 0.0;
  double closest = std::numeric_limits<double>::infinity();
  double opticalGap = closest;
  for (int k = -kNudges; k <= kNudges; ++k) {
    const TracedRay ray = Trace(path.LaunchAngle + most * k / kNudges);
    if (ray.Type != path.Type) {
      isAtEnd = true;
      continue;
    }
    lowest = std::min(lowest, ray.SweptAngle);
    highest = std::max(highest, ray.SweptAngle);
    const double gap = ray.SweptAngle - path.SweptAngle;
    (gap < 0.0 ? isBelow : isAbove) = true;
    if (std::abs(gap) < closest) {
      closest = std::abs(gap);
      // The optical length changes by n r sin, which is conserved, per angle
      // swept.
      const double perAngle = media_.IndexIn(DU::eMedium::kWater) * pmtRadius_;
      opticalGap =
          std::abs(ray.OpticalLength - path.OpticalLength) - perAngle * closest;
    }
  }
  // At the steep end of a family the last ray may be that far away.
  const double enough = 1e-12 + (isAtEnd ? 2.0 * (highest - lowest) : 0.0);
  const bool isReached = closest <= enough || (isBelow && isAbove);
  if (!isReached) return "its ray sweeps another angle, by " + Exact(closest);
  const double longest = (eventRadius_ + pmtRadius_) * 3.0;
  if (!(opticalGap <= 1e-13 * longest)) {
    return "optical length is off by " + Exact(opticalGap);
  }
  return "";
}

/// The solutions of the scan and of the solver, one per line.
std::string Solutions(const std::vector<TracedRay>& rays,
                      const std::vector<RefractedPath>& paths) {
  std::string text;
  for (const TracedRay& ray : rays) {
    text += "\n  scan:   " + std::string(DU::kLightPathTypeNames[ray.Type]) +
            ", launch " + Exact(ray.LaunchAngle) + ", swept " +
            Exact(ray.SweptAngle) + ", optical " + Exact(ray.OpticalLength);
  }
  for (const RefractedPath& path : paths) {
    text += "\n  solver: " + std::string(DU::kLightPathTypeNames[path.Type]) +
            ", launch " + Exact(path.LaunchAngle) + ", swept " +
            Exact(path.SweptAngle) + ", optical " + Exact(path.OpticalLength);
  }
  return text;
}

void RefractedPaths::CheckPair(const LaunchScan& scan, double angle) {
  const std::vector<TracedRay> rays = scan.PathsTo(angle);
  const std::vector<RefractedPath> paths =
      DU::FindRefractedPaths(media_, eventRadius_, pmtRadius_, angle);
  const auto replay = [&] {
    return Exact(media_) + "; event radius " + Exact(eventRadius_) +
           ", PMT radius " + Exact(pmtRadius_) + ", angle " + Exact(angle) +
           Solutions(rays, paths);
  };

  const bool isNearAnEnd = scan.IsNearAnEnd(angle, 1e-6);
  ++tally_.pairs;
  if (isNearAnEnd) ++tally_.nearAnEnd;
  if (rays.size() >= 3) ++tally_.pairsWithThree;
  if (rays.empty()) ++tally_.pairsWithNone;

  for (const RefractedPath& path : paths) {
    const std::string flaw = FlawOfSolution(path, angle);
    EXPECT_EQ(flaw, "") << "launch " << Exact(path.LaunchAngle) << "\n"
                        << replay();
  }

  std::vector<bool> isTaken(paths.size(), false);
  for (const TracedRay& ray : rays) {
    ++tally_.solutions;
    ++tally_.ofType[ray.Type];
    if (ray.SweptAngle > kTwoPi) ++tally_.onceAround;
    // The launch angle of a ray traced in doubles is inaccurate if the swept
    // angle or the sine hardly changes with it.
    const double missed = Missed(ray, angle);
    const double tolerance = 1e-12 + (2e-14 + 4.0 * missed) / SteepnessAt(ray) +
                             LaunchScan::BlurOf(ray.LaunchAngle);
    bool isFound = false;
    for (std::size_t i = 0; i < paths.size(); ++i) {
      const bool isSame =
          paths[i].Type == ray.Type &&
          std::abs(paths[i].SweptAngle - ray.SweptAngle) < 1e-5 &&
          std::abs(paths[i].LaunchAngle - ray.LaunchAngle) <= tolerance;
      if (!isSame) continue;
      isFound = true;
      isTaken[i] = true;
    }
    // Two paths that are about to vanish: rounding decides.
    const bool mayBeGone = scan.IsNearAnEnd(angle, 1e-12);
    EXPECT_TRUE(isFound || mayBeGone)
        << "not found: launch " << Exact(ray.LaunchAngle) << "\n"
        << replay();
  }
  // Solutions that the scan missed are correct, as their traced rays show; but
  // far from the limits of paths the scan finds all.
  const auto taken = std::count(isTaken.begin(), isTaken.end(), true);
  const auto unseen = static_cast<int>(paths.size()) - static_cast<int>(taken);
  tally_.unseen += unseen;
  if (!isNearAnEnd) {
    EXPECT_EQ(unseen, 0) << replay();
    EXPECT_EQ(paths.size(), rays.size()) << "one appears twice\n" << replay();
  }
}

void RefractedPaths::CheckScan(const DU::ConcentricMedia& media,
                               Random& random) {
  media_ = media;
  eventRadius_ = EventRadius(media, random);
  pmtRadius_ = PmtRadius(media, random);
  const LaunchScan scan(media_, eventRadius_, pmtRadius_, kLaunches);
  for (const double angle : Angles(media, scan, random)) {
    CheckPair(scan, angle);
    if (HasFailure()) return;
  }
}

TEST_P(RefractedPaths, MatchAScanOfAllLaunchAngles) {
  const std::vector<Vessel> vessels = Vessels();
  const int scans =
      std::max(1, PairsInAll() / kPairsPerPair / kAnglesPerScan / kShards);
  Random random(static_cast<std::uint64_t>(GetParam()) * 104729U + 1U);
  for (int scan = 0; scan < scans && !HasFailure(); ++scan) {
    const DU::ConcentricMedia media =
        random.Chance(0.7) ? random.Pick(vessels).Media : RandomMedia(random);
    SCOPED_TRACE("shard " + std::to_string(GetParam()) + ", scan " +
                 std::to_string(scan));
    CheckScan(media, random);
  }

  RecordProperty("pairs", tally_.pairs);
  RecordProperty("solutions", tally_.solutions);
  RecordProperty("unseen", tally_.unseen);
  RecordProperty("nearAnEnd", tally_.nearAnEnd);
  RecordProperty("onceAround", tally_.onceAround);
  if (scans < 40) return;  // rare cases may be absent from few scans
  EXPECT_LT(tally_.unseen, tally_.solutions / 20);
  EXPECT_LT(tally_.nearAnEnd, tally_.pairs / 4);
  EXPECT_GT(tally_.pairsWithThree, tally_.pairs / 50);
  EXPECT_GT(tally_.pairsWithNone, tally_.pairs / 50);
  for (const DU::eLightPathType type :
       {DU::kInnerAVToWater, DU::kAVThroughInnerAVToWater, DU::kAVToWater,
        DU::kWaterThroughInnerAV, DU::kWaterThroughAV}) {
    EXPECT_GT(tally_.ofType[type], 20) << DU::kLightPathTypeNames[type];
  }
}

INSTANTIATE_TEST_SUITE_P(Shards, RefractedPaths, testing::Range(0, kShards));

TEST(RefractedPaths, AreThreeBehindTheFocusOfABallLens) {
  // Behind the focus of a strong ball lens, rays from both sides of the axis
  // have crossed.
  const DU::ConcentricMedia media{5800, 5860, {1.9, 1.6, 1.0}};
  const std::vector<RefractedPath> paths =
      DU::FindRefractedPaths(media, 6500, 20000, kPi - 0.01);
  ASSERT_EQ(paths.size(), 3U);
  for (const RefractedPath& path : paths) {
    EXPECT_EQ(path.Type, DU::kWaterThroughInnerAV);
  }
  const auto longWay = std::count_if(
      paths.begin(), paths.end(),
      [](const RefractedPath& path) { return path.SweptAngle > kPi; });
  EXPECT_EQ(longWay, 1);
}

TEST(RefractedPaths, CanTurnOnceAroundTheCentre) {
  // Distant ends, a wall with a much higher index than the water and a core
  // with an even higher one: light at the wall's critical angle turns by more
  // than a full circle.
  const DU::ConcentricMedia media{3400, 5860, {3.0, 1.75, 1.0}};
  const LaunchScan scan(media, 200000, 200000, kLaunches);
  constexpr double kAngle = 0.2;
  const auto turnsOnce = [](const auto& path) {
    return path.SweptAngle > kTwoPi;
  };
  const std::vector<TracedRay> rays = scan.PathsTo(kAngle);
  ASSERT_EQ(std::count_if(rays.begin(), rays.end(), turnsOnce), 1);
  const std::vector<RefractedPath> paths =
      DU::FindRefractedPaths(media, 200000, 200000, kAngle);
  EXPECT_EQ(std::count_if(paths.begin(), paths.end(), turnsOnce), 1);
}

TEST(RefractedPaths, DoNotReachTheDarkZoneBesideTheVessel) {
  // Light that enters the vessel from the water is bent towards the centre.
  // This leaves a dark zone between it and the light that passes beside the
  // vessel.
  const DU::ConcentricMedia media{5800, 5860, {1.5, 1.49, 1.33}};
  const LaunchScan scan(media, 6500, 8400, kLaunches);
  int dark = 0;
  for (int i = 1; i < 300; ++i) {
    const double angle = kPi * i / 300.0;
    const bool isDark =
        scan.PathsTo(angle).empty() && !scan.IsNearAnEnd(angle, 1e-6);
    if (!isDark) continue;
    ++dark;
    EXPECT_TRUE(DU::FindRefractedPaths(media, 6500, 8400, angle).empty())
        << "angle " << Exact(angle);
  }
  EXPECT_GT(dark, 10);
}

}  // namespace
}  // namespace ZARN::Testing

#include "display/PathTrace.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "lightpath/LightPathCalculator.hpp"
#include "tests/lightpath/LightPathPairs.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Repetitions.hpp"

namespace ZARN::Display {
namespace {

using DU::eLight;
using DU::eMedium;
using DU::LightPathCalculator;
using Testing::Exact;
using Testing::Random;

/// As a page does.
PathPoints Traced(const LightPathCalculator& light, eLight kind) {
  const DU::LightPath& path = light.GetLightPath();
  const auto angle = static_cast<float>(LaunchAngle(path));
  return TracePath(light.GetMedia(), path.StartPos, path.EndPos,
                   static_cast<double>(angle), kind);
}

/// What a page would show wrongly; empty if nothing. Compares with the getters
/// of the calculator and not with PointsOf and AreSame.
std::string Flaw(const LightPathCalculator& light, const PathPoints& path) {
  std::vector<TVector3> points = {light.GetStartPos()};
  for (const auto& point : {light.GetAVPoint1(), light.GetAVPoint2(),
                            light.GetAVPoint3(), light.GetAVPoint4()}) {
    if (point != TVector3()) points.push_back(point);
  }
  points.push_back(light.GetEndPos());
  if (path.count != points.size()) return "number of points";
  DU::PerMedium lengths = {};
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (!((path.points[i] - points[i]).Mag() <= 0.05)) {
      return "point " + std::to_string(i) + " " + Exact(path.points[i]) +
             " instead of " + Exact(points[i]);
    }
    if (i == 0) continue;
    lengths[DU::IndexOf(path.media[i - 1])] +=
        (path.points[i] - path.points[i - 1]).Mag();
  }
  for (const eMedium medium :
       {eMedium::kInnerAV, eMedium::kAcrylic, eMedium::kWater}) {
    const double apart = lengths[DU::IndexOf(medium)] - light.GetLength(medium);
    if (!(std::abs(apart) <= 0.1)) return "length in a medium";
  }
  const double time = TimeOfFlight(path, light.GetGroupIndices());
  if (!(std::abs(time - light.GetTimeOfFlight()) <= 5e-4)) return "time";
  return "";
}

struct Tally {
  int paths = 0;
  int stored = 0;
  std::set<DU::eLightPathType> types;

  std::string Text() const {
    return std::to_string(stored) + " of " + std::to_string(paths);
  }
};

/// Trace the light path of the calculator, if it has one.
void Check(const LightPathCalculator& light, eLight kind, Tally& tally) {
  if (!light.HasPath()) return;
  ++tally.paths;
  tally.types.insert(light.GetLightPathType());
  const PathPoints exact = PointsOf(light.GetLightPath());
  ASSERT_EQ(Flaw(light, exact), "");
  const PathPoints traced = Traced(light, kind);
  if (!AreSame(exact, traced, light.GetGroupIndices())) {
    ++tally.stored;
    return;
  }
  ASSERT_EQ(Flaw(light, traced), "") << Testing::Replay(
      light.GetMedia(), light.GetStartPos(), light.GetEndPos());
}

void CheckBoth(LightPathCalculator& light, const TVector3& event,
               const TVector3& pmt, Tally& tally) {
  light.CalcByPosition(event, pmt);
  Check(light, eLight::kDirect, tally);
  light.CalcReflectionByPosition(event, pmt);
  Check(light, eLight::kReflected, tally);
}

class PathTraceTest : public testing::Test {
 protected:
  LightPathCalculator light_ =
      Testing::CalculatorFor({5800, 5860, {1.5, 1.49, 1.33}});
};

TEST_F(PathTraceTest, GivesNearlyEveryPathOfARealDetector) {
  constexpr double kPMTs = 8300.0;
  Random random(900);
  const int pairs = Testing::Repetitions(200'000, 5'000);
  Tally reflected;
  for (const auto& [low, high] :
       {std::pair(0.0, 5799.0), {5801.0, 5859.0}, {5861.0, 8200.0}}) {
    Tally direct;
    for (int i = 0; i < pairs; ++i) {
      const double radius =
          std::cbrt(random.Uniform(low * low * low, high * high * high));
      const TVector3 event = radius * random.Direction();
      const TVector3 pmt = kPMTs * random.Direction();
      light_.CalcByPosition(event, pmt);
      Check(light_, eLight::kDirect, direct);
      light_.CalcReflectionByPosition(event, pmt);
      Check(light_, eLight::kReflected, reflected);
      if (HasFatalFailure()) return;
    }
    EXPECT_LT(direct.stored, 0.0001 * direct.paths)
        << direct.Text() << ", events from " << low << " mm";
  }
  // Light that grazes the vessel goes far aside for the last bit of its angle.
  EXPECT_LT(reflected.stored, 0.04 * reflected.paths) << reflected.Text();
}

TEST_F(PathTraceTest, IsRightInStrangeVesselsWhereThePathIsNotStored) {
  Random random(901);
  const int pairs = Testing::Repetitions(4'000, 100);
  std::vector<DU::ConcentricMedia> media;
  for (const Testing::Vessel& vessel : Testing::Vessels()) {
    media.push_back(vessel.Media);
  }
  for (int i = 0; i < 40; ++i) media.push_back(Testing::RandomMedia(random));
  Tally tally;
  for (const DU::ConcentricMedia& one : media) {
    LightPathCalculator light = Testing::CalculatorFor(one);
    for (int i = 0; i < pairs; ++i) {
      Testing::Pair pair = Testing::DrawPair(one, random);
      if (random.Chance(0.5)) Testing::AimByTracing(pair, one, random);
      Testing::PlacePmt(pair, random);
      CheckBoth(light, pair.Event, pair.Pmt, tally);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_EQ(tally.types.size(), 7U);
  EXPECT_LT(tally.stored, 0.1 * tally.paths) << tally.Text();
}

TEST_F(PathTraceTest, IsStraightThroughTheCentre) {
  Random random(902);
  Tally tally;
  for (int i = 0; i < 1000; ++i) {
    const TVector3 direction = random.Direction();
    const TVector3 pmt = 8300 * direction;
    for (const double radius :
         {0.0, 1e-200, 1.0, -1.0, 5799.0, -5799.0, 5800.0, -5800.0, 5850.0,
          -5850.0, 5860.0, -5860.0, 7000.0, -7000.0, 9000.0}) {
      CheckBoth(light_, radius * direction, pmt, tally);
      ASSERT_FALSE(HasFatalFailure()) << radius;
    }
  }
  EXPECT_EQ(tally.types.size(), 6U);  // no straight path stays in the wall
  EXPECT_EQ(tally.stored, 0);
}

TEST_F(PathTraceTest, IsStraightInWaterAlsoFromBehindThePMT) {
  Random random(904);
  Tally tally;
  for (int i = 0; i < 5000; ++i) {
    const TVector3 pmt = 8300 * random.Direction();
    light_.CalcByPosition(9500 * random.Direction(), pmt);
    if (light_.GetLightPathType() != DU::kWater) continue;
    Check(light_, eLight::kDirect, tally);
    ASSERT_FALSE(HasFatalFailure());
  }
  EXPECT_GT(tally.paths, 1000);
  EXPECT_EQ(tally.stored, 0);
}

TEST_F(PathTraceTest, HasTheSignOfTheWayAroundTheCentre) {
  Random random(903);
  Tally longer;
  for (const Testing::Vessel& vessel : Testing::Vessels()) {
    const DU::ConcentricMedia& media = vessel.Media;
    LightPathCalculator light = Testing::CalculatorFor(media);
    for (int i = 0; i < 2000; ++i) {
      const TVector3 event =
          media.OuterRadius * random.Uniform(0.1, 1.3) * random.Direction();
      const TVector3 pmt = 1.4 * media.OuterRadius * random.Direction();
      light.CalcByPosition(event, pmt);
      if (!light.HasPath()) continue;
      const double angle = LaunchAngle(light.GetLightPath());
      EXPECT_NEAR(std::abs(angle), light.GetInitialDirection().Angle(event),
                  1e-7);
      const TVector3 around = event.Cross(light.GetInitialDirection());
      EXPECT_EQ(angle < 0, around.Dot(event.Cross(pmt)) < 0);
      if (angle < 0) Check(light, eLight::kDirect, longer);
    }
  }
  EXPECT_GT(longer.paths, 100);
  EXPECT_LT(longer.stored, 0.1 * longer.paths) << longer.Text();
}

TEST_F(PathTraceTest, TellsPathsApart) {
  light_.CalcByPosition({1000, 2000, 3000}, {0, 0, 8300});
  const PathPoints path = PointsOf(light_.GetLightPath());
  const DU::PerMedium& groupIndices = light_.GetGroupIndices();
  ASSERT_EQ(path.count, 4U);
  EXPECT_TRUE(AreSame(path, path, groupIndices));
  PathPoints other = path;
  other.points[1].SetX(other.points[1].X() + 0.019);
  EXPECT_TRUE(AreSame(path, other, groupIndices));
  other.points[1].SetX(other.points[1].X() + 0.002);
  EXPECT_FALSE(AreSame(path, other, groupIndices));
  other = path;
  other.media[1] = eMedium::kWater;
  EXPECT_FALSE(AreSame(path, other, {1, 1, 1}));
  other = path;
  other.count = 3;
  EXPECT_FALSE(AreSame(path, other, groupIndices));
  other = path;
  other.points[2].SetX(std::nan(""));
  EXPECT_FALSE(AreSame(path, other, groupIndices));
  DU::PerMedium slow = groupIndices;
  for (double& index : slow) index *= 1e5;
  other = path;
  other.points[1] *= 1 + 1e-6;
  EXPECT_FALSE(AreSame(path, other, slow));
}

}  // namespace
}  // namespace ZARN::Display

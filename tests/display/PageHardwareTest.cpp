#include "display/PageHardware.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "display/PageItems.hpp"
#include "du/hardware/HardwareItem.hpp"
#include "tests/du/Detector.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Display {
namespace {

using DU::eShadowingComponent;

const DU::ShadowingCalculator& Detector() {
  static const DU::ShadowingCalculator detector =
      Testing::InRun(Testing::DetectorTables());
  return detector;
}

const PageHardware& Of(const PageHardwareList& list,
                       eShadowingComponent component) {
  return list[static_cast<std::size_t>(component) - 1];
}

double DistanceToLine(const TVector3& point,
                      const std::vector<TVector3>& line) {
  double least = (point - line.front()).Mag();
  for (std::size_t i = 0; i + 1 < line.size(); ++i) {
    const TVector3 way = line[i + 1] - line[i];
    if (way.Mag2() == 0) continue;
    const double share = (point - line[i]).Dot(way) / way.Mag2();
    const TVector3 nearest =
        line[i] + std::min(1.0, std::max(0.0, share)) * way;
    least = std::min(least, (point - nearest).Mag());
  }
  return least;
}

/// The distance from a point to the nearest tube that has the name.
double DistanceToTubes(const TVector3& point, const PageHardware& hardware,
                       const std::string& name) {
  double least = 1e9;
  for (const PageTube& tube : hardware.tubes) {
    if (tube.name != name) continue;
    least = std::min(least, DistanceToLine(point, tube.points));
  }
  return least;
}

std::string NameOf(DU::eShadowingRule rule, std::size_t position) {
  return DU::NameOf(*DU::ItemOf(Detector().GetHardware(), rule, position));
}

class PageHardwareTest : public testing::Test {
 protected:
  const PageHardwareList list_ = PageHardwareOf(Detector());
};

TEST_F(PageHardwareTest, HasEverySampleOfTheRopesOnTheVessel) {
  const PageHardware& ropes = Of(list_, eShadowingComponent::kAVHDRope);
  const DU::AVHDRopeModel& model = Detector().GetAVHDRopes();
  std::size_t corners = 0;
  for (const PageTube& tube : ropes.tubes) {
    EXPECT_EQ(tube.radius, model.AVHDRopeRadius);
    corners += tube.points.size();
  }
  EXPECT_LT(corners, model.AVHDRopeSurfacePoints.size() / 10);
  for (std::size_t i = 0; i < model.AVHDRopeSurfacePoints.size(); ++i) {
    EXPECT_LE(DistanceToTubes(model.AVHDRopeSurfacePoints[i], ropes,
                              NameOf(DU::eShadowingRule::kSurfacePoint, i)),
              1.001);
  }
}

TEST_F(PageHardwareTest, DrawsNoRopeWhereNoSampleIs) {
  const PageHardware& ropes = Of(list_, eShadowingComponent::kAVHDRope);
  const auto& samples = Detector().GetAVHDRopes().AVHDRopeSurfacePoints;
  for (const PageTube& tube : ropes.tubes) {
    if (tube.name.empty() || tube.name.find("leg") != std::string::npos) {
      continue;
    }
    for (std::size_t i = 0; i + 1 < tube.points.size(); ++i) {
      const TVector3 middle = 0.5 * (tube.points[i] + tube.points[i + 1]);
      double least = 1e9;
      for (const TVector3& sample : samples) {
        least = std::min(least, (middle - sample).Mag());
      }
      // Near the equator the samples are this far apart.
      EXPECT_LT(least, 110) << tube.name;
    }
  }
}

TEST_F(PageHardwareTest, LetsRopesOverTheVesselReachTheirLegs) {
  const PageHardware& ropes = Of(list_, eShadowingComponent::kAVHDRope);
  const DU::AVHDRopeModel& model = Detector().GetAVHDRopes();
  for (std::size_t rope = 0; rope < model.AVHDRopeRolls.size(); ++rope) {
    const std::string name = NameOf(DU::eShadowingRule::kSurfacePoint,
                                    model.AVHDRopeSurfaceBegins[rope]);
    const auto tube =
        std::find_if(ropes.tubes.begin(), ropes.tubes.end(),
                     [&](const PageTube& one) { return one.name == name; });
    ASSERT_NE(tube, ropes.tubes.end()) << name;
    EXPECT_EQ(tube->points.front(), model.AVHDRopeEndPoints[2 * rope]);
    EXPECT_EQ(tube->points.back(), model.AVHDRopeEndPoints[2 * rope + 1]);
  }
}

TEST_F(PageHardwareTest, HasEachArcOfTheRingInOnePiece) {
  // Also arcs across azimuth 0, where the model begins to sample.
  for (const double roll : {0.0, 40.0, 130.0, 216.0, 300.0}) {
    Testing::Tables tables = Testing::DetectorTables();
    tables.Set("GEO_LOCATIONS", "rolls", "roll", std::vector<double>{roll});
    const PageHardwareList list = PageHardwareOf(Testing::InRun(tables));
    const auto& tubes = Of(list, eShadowingComponent::kAVHDRope).tubes;
    const auto arcs =
        std::count_if(tubes.begin(), tubes.end(), [](const PageTube& tube) {
          return tube.name == "rope 0, arc of the ring";
        });
    EXPECT_EQ(arcs, 2) << "roll " << roll;
  }
}

TEST_F(PageHardwareTest, HasTheLegsDownToTheirFeet) {
  const PageHardware& ropes = Of(list_, eShadowingComponent::kAVHDRope);
  const DU::AVHDRopeModel& model = Detector().GetAVHDRopes();
  // The model samples the leg at P1 and that at P4 in turn.
  const std::size_t ofRope =
      model.AVHDRopeLegPoints.size() / model.AVHDRopeRolls.size();
  for (std::size_t i = 0; i < model.AVHDRopeLegPoints.size(); ++i) {
    const std::string rope = "rope " + std::to_string(i / ofRope);
    const double toLeg =
        DistanceToTubes(model.AVHDRopeLegPoints[i], ropes,
                        rope + (i % 2 == 0 ? ", leg P1" : ", leg P4"));
    const double toOther =
        DistanceToTubes(model.AVHDRopeLegPoints[i], ropes, "");
    EXPECT_LT(std::min(toLeg, toOther), 0.01) << rope;
  }
}

TEST_F(PageHardwareTest, HasEveryItemThatCanBlock) {
  std::set<std::string> names = {""};
  for (const PageHardware& part : list_) {
    EXPECT_EQ(part.state, eComponentState::kTested);
    for (const PageTube& tube : part.tubes) names.insert(tube.name);
    for (const PagePatch& patch : part.patches) names.insert(patch.name);
    for (const PageSpot& spot : part.spots) names.insert(spot.name);
  }
  const std::vector<std::string> items =
      PageItems(Detector().GetHardware()).Names();
  EXPECT_EQ(names, std::set<std::string>(items.begin(), items.end()));
  EXPECT_EQ(items.front(), "");
}

TEST_F(PageHardwareTest, HasTheSamplesOfSupportRopesAndPipes) {
  const PageHardware& ropes = Of(list_, eShadowingComponent::kSupportRope);
  for (const TVector3& point :
       Detector().GetSupportRopes().SupportRopeLinePoints) {
    double least = 1e9;
    for (const PageTube& tube : ropes.tubes) {
      least = std::min(least, DistanceToLine(point, tube.points));
    }
    EXPECT_LT(least, 1e-6);
  }
  const PageHardware& pipes = Of(list_, eShadowingComponent::kAVPipe);
  EXPECT_EQ(pipes.tubes.size(), 7U);
  for (const TVector3& point : Detector().GetAVPipes().AVPipePoints) {
    EXPECT_LT(DistanceToTubes(point, pipes, ""), 1.001);
  }
}

TEST_F(PageHardwareTest, OutlinesThePlatesOnTheirSphere) {
  const PageHardware& plates = Of(list_, eShadowingComponent::kBellyPlate);
  const DU::BellyPlateModel& model = Detector().GetBellyPlates();
  ASSERT_EQ(plates.patches.size(), model.BellyPlatePositions.size());
  for (std::size_t i = 0; i < plates.patches.size(); ++i) {
    const auto& outline = plates.patches[i].points;
    const TVector3& centre = model.BellyPlatePositions[i];
    EXPECT_EQ(outline.front(), outline.back());
    double highest = 0;
    double lowest = 0;
    for (const TVector3& point : outline) {
      EXPECT_NEAR(point.Mag(), centre.Mag(), 1e-6);
      highest = std::max(highest, point.Z() - centre.Z());
      lowest = std::min(lowest, point.Z() - centre.Z());
    }
    // On the sphere the plate is a little lower than its tangent.
    EXPECT_NEAR(highest, model.BellyPlateHalfHeight, 10);
    EXPECT_NEAR(lowest, -model.BellyPlateHalfHeight, 10);
  }
}

TEST_F(PageHardwareTest, HasAnchorsAndTheEdgeOfTheBoss) {
  const PageHardware& anchors = Of(list_, eShadowingComponent::kNCDAnchor);
  const DU::NCDAnchorModel& model = Detector().GetNCDAnchors();
  ASSERT_EQ(anchors.spots.size(), model.NCDAnchorPositions.size());
  EXPECT_EQ(anchors.spots[0].at, model.NCDAnchorPositions[0]);
  EXPECT_EQ(anchors.spots[0].radius, model.NCDAnchorHalfZ);
  const PageHardware& boss = Of(list_, eShadowingComponent::kNeckBoss);
  ASSERT_EQ(boss.rings.size(), 2U);
  for (const PageRing& ring : boss.rings) {
    EXPECT_NEAR(std::atan2(ring.radius, ring.z),
                Detector().GetNeckBoss().NeckBossAngle, 1e-12);
  }
}

TEST(PageHardware, HasNoPartsOfWhatIsOff) {
  const DU::ShadowingCalculator empty = Testing::InRun(Testing::VesselTables());
  const PageHardwareList list = PageHardwareOf(empty);
  for (const PageHardware& part : list) {
    EXPECT_EQ(part.state, eComponentState::kNotLoaded);
    EXPECT_TRUE(part.tubes.empty() && part.patches.empty() &&
                part.spots.empty() && part.rings.empty());
  }
  EXPECT_EQ(NeckTopOf(empty, list), empty.GetOuterAVRadius());
  EXPECT_EQ(PageItems(empty.GetHardware()).Names(),
            std::vector<std::string>({""}));
}

TEST(PageHardware, GivesTheNeckTheHeightOfWhatIsInIt) {
  PageHardwareList list;
  list[4].tubes.push_back({"", 25, {{800, 0, 7800}, {800, 0, 6000}}});
  list[4].tubes.push_back({"", 25, {{3000, 0, 9000}}});
  EXPECT_EQ(NeckTopOf(Detector(), list), 7800);
}

TEST(Thinned, LeavesNoPointFarAway) {
  Testing::Random random(920);
  for (const double tolerance : {0.1, 1.0, 10.0}) {
    std::vector<TVector3> points;
    for (int i = 0; i < 500; ++i) {
      const double phi = 0.01 * i;
      points.emplace_back(1000 * std::cos(phi), 1000 * std::sin(phi),
                          20 * std::sin(5 * phi));
    }
    const auto thinned = Thinned(points, tolerance);
    EXPECT_EQ(thinned.front(), points.front());
    EXPECT_EQ(thinned.back(), points.back());
    EXPECT_LT(thinned.size(), points.size());
    for (const TVector3& point : points) {
      EXPECT_LE(DistanceToLine(point, thinned), tolerance * 1.000001);
    }
  }
  EXPECT_TRUE(Thinned({}, 1).empty());
  EXPECT_EQ(Thinned({{1, 2, 3}}, 1).size(), 1U);
  // A line that comes back to where it began.
  EXPECT_EQ(Thinned({{0, 0, 0}, {9, 0, 0}, {0, 0, 0}}, 1).size(), 3U);
}

}  // namespace
}  // namespace ZARN::Display

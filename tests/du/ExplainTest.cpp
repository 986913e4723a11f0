#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::BlockedPath;
using Testing::Detector;
using Testing::DetectorTables;
using Testing::FreePath;
using Testing::InRun;
using Testing::InWater;
using Testing::kBlockedSpot;
using Testing::kNaN;
using Testing::kUnnamedType;
using Testing::OneCrossing;
using Testing::Only;
using Testing::PathsAtHardware;
using Testing::Tables;
using Testing::TwoCrossings;
using Testing::VariedTables;

using eComponent = eShadowingComponent;
using eState = ComponentExplanation::eState;
using ePart = HardwareItem::ePart;

/// The only finding of a component.
ShadowingFinding FindingOf(const LightPath& path, eComponent component,
                           const ShadowingCalculator& detector = Detector()) {
  const ComponentExplanation found = detector.Explain(path, component);
  EXPECT_EQ(found.findings.size(), 1U);
  return found.findings.empty() ? ShadowingFinding() : found.findings.front();
}

TEST(Explain, TellsThatEveryComponentBlocksAndWhichIsFirst) {
  const ShadowingExplanation all = Detector().Explain(BlockedPath());
  EXPECT_EQ(all.by, eComponent::kAVHDRope);
  for (std::size_t i = 0; i < kNumberOfComponents; ++i) {
    EXPECT_EQ(all.components[i].component, kShadowingComponents[i]);
    EXPECT_EQ(all.components[i].state, eState::kOn);
    EXPECT_TRUE(all.components[i].IsBlocking())
        << NameOf(kShadowingComponents[i]);
  }
}

TEST(Explain, TellsWhyNoneBlocks) {
  const ShadowingExplanation all = Detector().Explain(FreePath());
  EXPECT_EQ(all.by, eComponent::kNone);
  for (const ComponentExplanation& component : all.components) {
    EXPECT_FALSE(component.IsBlocking());
    EXPECT_EQ(component.findings.size(), 1U) << NameOf(component.component);
  }
}

TEST(Explain, AgreesWithTheVerdictAtTheLimits) {
  const ShadowingCalculator detector = InRun(VariedTables());
  for (const LightPath& path : PathsAtHardware(detector, 13).Make(2000)) {
    EXPECT_EQ(detector.Explain(path).by, detector.FindShadowing(path));
  }
}

TEST(FindBlockingTest, IsTheFirstTestThatBlocksInAnExplanation) {
  const ShadowingCalculator detector = InRun(VariedTables());
  int blocked = 0;
  for (const LightPath& path : PathsAtHardware(detector, 14).Make(2000)) {
    for (const ComponentExplanation& component :
         detector.Explain(path).components) {
      const auto found = detector.FindBlockingTest(path, component.component);
      ASSERT_EQ(found.has_value(), component.IsBlocking());
      if (!found.has_value()) continue;
      const auto& findings = component.findings;
      const ShadowingTest& wanted = findings.front().test.IsBlocking()
                                        ? findings.front().test
                                        : findings.back().test;
      EXPECT_EQ(found->rule, wanted.rule);
      EXPECT_EQ(found->segment, wanted.segment);
      EXPECT_EQ(found->position, wanted.position);
      EXPECT_EQ(found->quantity, wanted.quantity);
      ++blocked;
    }
  }
  EXPECT_GT(blocked, 1000);
}

TEST(FindBlockingTest, FindsNothingWhereAComponentIsOff) {
  const ShadowingCalculator empty;
  for (const eComponent component : kShadowingComponents) {
    EXPECT_FALSE(empty.FindBlockingTest(BlockedPath(), component));
    EXPECT_FALSE(Detector().FindBlockingTest(FreePath(), component));
  }
}

TEST(Explain, GivesTheDistanceToTheNearestSurfacePoint) {
  const auto& points = Detector().GetAVHDRopes().AVHDRopeSurfacePoints;
  const std::size_t last = points.size() - 1;
  const ShadowingFinding found = FindingOf(
      OneCrossing(points[last] + TVector3(0, 0, 0.25)), eComponent::kAVHDRope);
  EXPECT_EQ(found.test.rule, eShadowingRule::kSurfacePoint);
  EXPECT_EQ(found.test.quantity, 0.25);
  EXPECT_EQ(found.test.limit, 162.0);
  EXPECT_EQ(found.test.position, last);
  ASSERT_TRUE(found.item.has_value());
  EXPECT_EQ(found.item->table, "GEO_LOCATIONS");
  EXPECT_EQ(found.item->index, "rolls");
  EXPECT_EQ(found.item->position, 1U);
  EXPECT_EQ(found.item->part, ePart::kOverVessel);
  EXPECT_EQ(NameOf(*found.item), "rope 1, over the vessel");
}

TEST(Explain, NamesTheRopeAndPartOfEverySurfacePoint) {
  const AVHDRopeModel& ropes = Detector().GetAVHDRopes();
  ASSERT_EQ(ropes.AVHDRopeSurfaceParts.size(),
            ropes.AVHDRopeSurfacePoints.size());
  std::vector<std::size_t> overVessel(2);
  for (std::size_t i = 0; i < ropes.AVHDRopeSurfacePoints.size(); ++i) {
    const auto item =
        ItemOf(Detector().GetHardware(), eShadowingRule::kSurfacePoint, i);
    ASSERT_TRUE(item.has_value());
    EXPECT_EQ(item->position, i < ropes.AVHDRopeSurfaceBegins[1] ? 0U : 1U);
    if (item->part == ePart::kOverVessel) {
      ++overVessel[item->position];
    } else {
      EXPECT_EQ(item->part, ePart::kRingArc);
      // The ring is level with P2 and P3.
      EXPECT_NEAR(ropes.AVHDRopeSurfacePoints[i].Perp(), 3000.0, 1.0);
    }
  }
  EXPECT_EQ(overVessel, std::vector<std::size_t>({2000, 2000}));
}

TEST(Explain, NamesTheLegsOfARopeAndOfItsOpposite) {
  // Below the leg tops, so that the legs are tested; P1 is at azimuth 90.
  const auto below = [](double degrees) {
    TVector3 outward(1, 0, 0);
    outward.SetPhi(degrees / kDegreesPerRadian);
    return OneCrossing(5774 * outward - TVector3(0, 0, 1000), outward);
  };
  Tables tables = DetectorTables();
  tables.Set("GEO_LOCATIONS", "rolls", "roll", std::vector<double>{20, 200});
  const ShadowingCalculator paired = InRun(tables);
  const auto nameAt = [&](double degrees, const ShadowingCalculator& detector) {
    const ShadowingFinding found =
        FindingOf(below(degrees), eComponent::kAVHDRope, detector);
    EXPECT_EQ(found.test.rule, eShadowingRule::kLeg);
    EXPECT_TRUE(found.test.IsBlocking());
    return found.item.has_value() ? NameOf(*found.item) : "";
  };
  EXPECT_EQ(nameAt(110, paired), "rope 0, leg P1");
  EXPECT_EQ(nameAt(290, paired), "rope 1, leg P1");
  const double azimuth4 = kDegreesPerRadian * TVector3(-5000, -3094, 0).Phi();
  EXPECT_EQ(nameAt(azimuth4 + 20, paired), "rope 0, leg P4");
  EXPECT_EQ(nameAt(azimuth4 + 200, paired), "rope 1, leg P4");
  // Rolls 0 and 216 have no opposite.
  EXPECT_EQ(nameAt(270, Detector()), "rope 0, leg P1 opposite");
  EXPECT_EQ(nameAt(90 + 216 - 180, Detector()), "rope 1, leg P1 opposite");
}

TEST(Explain, NamesBothRopesOfASupportPair) {
  const auto& feet = Detector().GetSupportRopes().SupportRopePositions;
  const auto at = [](const TVector3& foot) {
    TVector3 point(foot.X(), foot.Y(), 0);
    point.SetMag(5800);
    point.SetZ(100);
    return OneCrossing(point, TVector3(foot.X(), foot.Y(), 0).Unit());
  };
  for (std::size_t i = 0; i < feet.size(); ++i) {
    const ShadowingFinding found =
        FindingOf(at(feet[i]), eComponent::kSupportRope);
    EXPECT_EQ(found.test.rule, eShadowingRule::kSupportRope);
    ASSERT_TRUE(found.item.has_value());
    EXPECT_EQ(NameOf(*found.item), "support ropes " + std::to_string(i / 2) +
                                       (i % 2 == 0 ? ", forward" : ", back"));
    EXPECT_EQ(found.item->index, "rope_anchors");
  }
}

TEST(Explain, NamesPlateAndAnchor) {
  const ShadowingFinding plate =
      FindingOf(OneCrossing({5860, 30, -700}), eComponent::kBellyPlate);
  EXPECT_EQ(plate.test.rule, eShadowingRule::kBellyPlate);
  EXPECT_TRUE(plate.test.IsBlocking());
  EXPECT_EQ(NameOf(plate.item.value()), "plate 1");
  EXPECT_EQ(plate.item->index, "plates");

  const ShadowingFinding anchor =
      FindingOf(OneCrossing({0, -4100, -4110}), eComponent::kNCDAnchor);
  EXPECT_EQ(anchor.test.rule, eShadowingRule::kNCDAnchor);
  EXPECT_EQ(anchor.test.quantity, 10.0);
  EXPECT_EQ(anchor.test.limit, 210.0);
  EXPECT_EQ(NameOf(anchor.item.value()), "anchor 1");
  EXPECT_EQ(anchor.item->index, "anchors");
}

TEST(Explain, GivesTheAzimuthBesideItsBandAndThePolarAngle) {
  const ShadowingFinding pipe =
      FindingOf(OneCrossing(kBlockedSpot), eComponent::kAVPipe);
  EXPECT_EQ(pipe.test.rule, eShadowingRule::kAVPipeBand);
  EXPECT_DOUBLE_EQ(pipe.test.quantity, 90.0);
  EXPECT_EQ(pipe.test.lowerLimit, 80.0);
  EXPECT_EQ(pipe.test.limit, 100.0);
  EXPECT_FALSE(pipe.item.has_value());
  const ShadowingFinding boss =
      FindingOf(OneCrossing(kBlockedSpot), eComponent::kNeckBoss);
  EXPECT_EQ(boss.test.quantity, kBlockedSpot.Theta());
  EXPECT_EQ(boss.test.limit, Detector().GetNeckBoss().NeckBossAngle);
}

TEST(Explain, TellsWhatLeavesARopeTestClear) {
  const auto ruleOf = [](const LightPath& path, eComponent component) {
    return FindingOf(path, component).test.rule;
  };
  // Across the vessel and steeply down, so that the light meets the cylinder
  // below the ropes.
  const LightPath steep = OneCrossing({0, -3000, -5034}, {0, 0.5, -0.87});
  EXPECT_EQ(ruleOf(steep, eComponent::kAVHDRope), eShadowingRule::kBeyondRopes);
  EXPECT_EQ(ruleOf(steep, eComponent::kSupportRope),
            eShadowingRule::kBelowRopes);
  const LightPath inside = InWater({0, 100, 0}, {0, 200, 0}, {0, 1, 0});
  EXPECT_EQ(ruleOf(inside, eComponent::kAVHDRope),
            eShadowingRule::kInsideRopeCylinder);
  EXPECT_EQ(ruleOf(inside, eComponent::kSupportRope),
            eShadowingRule::kInsideRopeCylinder);
  const LightPath across = InWater({0, 7000, 0}, {0, -7000, 0}, {0, -1, 0});
  EXPECT_EQ(ruleOf(across, eComponent::kAVHDRope), eShadowingRule::kEndsApart);
  EXPECT_EQ(ruleOf(across, eComponent::kSupportRope),
            eShadowingRule::kEndsApart);
  const LightPath plate = OneCrossing({5860, 0, 751});
  EXPECT_EQ(ruleOf(plate, eComponent::kBellyPlate),
            eShadowingRule::kOffPlateBand);
  // An end exactly on the legs' cylinder, the other beyond both.
  const double legs = LimitsOfAVHDRopes(Detector().GetAVHDRopes()).radius;
  const LightPath outside = InWater({0, legs, 0}, {0, 6000, 0}, {0, 1, 0});
  EXPECT_EQ(ruleOf(outside, eComponent::kAVHDRope),
            eShadowingRule::kInsideRopeCylinder);
}

TEST(Explain, NamesTheLegThatTheSupportRopeTestMeetsInWater) {
  const LightPath path =
      InWater({5000, -5000, 0}, {5100, -5100, 10}, {0.7, -0.7, 0.1});
  const ComponentExplanation found =
      Detector().Explain(path, eComponent::kSupportRope);
  ASSERT_EQ(found.findings.size(), 2U);
  for (const ShadowingFinding& finding : found.findings) {
    EXPECT_EQ(finding.test.rule, eShadowingRule::kLeg);
    EXPECT_EQ(finding.item.value().component, eComponent::kAVHDRope);
  }
}

TEST(Explain, TellsThatAPathInWaterIsNotTestedAtCrossings) {
  const ShadowingExplanation all =
      Detector().Explain(InWater({0, 100, 0}, {0, 200, 0}, {0, 1, 0}));
  for (const eComponent component :
       {eComponent::kBellyPlate, eComponent::kNCDAnchor, eComponent::kAVPipe,
        eComponent::kNeckBoss}) {
    const auto& found = all.components[static_cast<std::size_t>(component) - 1];
    EXPECT_EQ(found.state, eState::kOn);
    EXPECT_TRUE(found.findings.empty()) << NameOf(component);
  }
}

TEST(Explain, GivesAFindingForEachSegment) {
  const ComponentExplanation found = Detector().Explain(
      TwoCrossings({5860, 0, 0}, kBlockedSpot), eComponent::kBellyPlate);
  ASSERT_EQ(found.findings.size(), 2U);
  EXPECT_EQ(found.findings[0].test.segment, eWaterSegment::kFirst);
  EXPECT_EQ(NameOf(found.findings[0].item.value()), "plate 1");
  EXPECT_EQ(found.findings[1].test.segment, eWaterSegment::kSecond);
  EXPECT_EQ(NameOf(found.findings[1].item.value()), "plate 0");
}

TEST(Explain, TellsWhichComponentsAreOffOrEmpty) {
  Tables tables = Only({eComponent::kNCDAnchor, eComponent::kAVHDRope});
  tables.SetPositions("GEO_LOCATIONS", "anchors", {});
  tables.Set("GEO_LOCATIONS", "rolls", "roll", std::vector<double>());
  const ShadowingExplanation all = InRun(tables).Explain(BlockedPath());
  for (const ComponentExplanation& component : all.components) {
    const bool isEmpty = component.component == eComponent::kNCDAnchor ||
                         component.component == eComponent::kAVHDRope;
    EXPECT_EQ(component.state, isEmpty ? eState::kNothingToTest : eState::kOff);
    EXPECT_TRUE(component.findings.empty());
  }
  EXPECT_EQ(all.by, eComponent::kNone);
}

TEST(Explain, JudgesUnusualTypesAsTheVerdictDoes) {
  const auto at = [](eLightPathType type) {
    return Detector().Explain(Testing::AllAt(type, kBlockedSpot));
  };
  EXPECT_EQ(at(kUnnamedType).by, eComponent::kNeckBoss);
  EXPECT_EQ(at(kUnnamedType).segments.size(), 1U);
  EXPECT_EQ(at(kUninitialised).by, eComponent::kNone);
  EXPECT_TRUE(at(kUninitialised).segments.empty());
}

TEST(Explain, NamesTheFirstItemIfNoQuantityIsANumber) {
  const ShadowingFinding found =
      FindingOf(OneCrossing({kNaN, 0, 0}), eComponent::kNCDAnchor);
  EXPECT_FALSE(found.test.IsBlocking());
  EXPECT_EQ(found.test.position, 0U);
}

}  // namespace
}  // namespace ZARN::DU

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/InRealVessel.hpp"
#include "tests/lightpath/LightPathFlaws.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainLightTracer.hpp"
#include "tests/support/Repetitions.hpp"

namespace ZARN::Testing {
namespace {

using DU::LightPathCalculator;
using Reference::LaunchScan;
using Reference::TracedRay;

class DegenerateLightPaths : public InRealVessel {
 protected:
  /// Expects the path that a scan of all launch angles finds, without flaws.
  void ExpectAsScanned(const LaunchScan& scan, const TVector3& eventPos,
                       const TVector3& pmtPos);
};

void DegenerateLightPaths::ExpectAsScanned(const LaunchScan& scan,
                                           const TVector3& eventPos,
                                           const TVector3& pmtPos) {
  SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
  Calculate(eventPos, pmtPos);
  if (calculator_.HasPath()) {
    EXPECT_EQ(FlawOf(calculator_, media_, eventPos, pmtPos), "");
  }
  const double angle = AngleBetween(eventPos, pmtPos);
  if (scan.IsNearAnEnd(angle, 1e-6)) return;
  if (calculator_.GetLightPathType() == DU::kWater) return;
  const std::vector<TracedRay> rays = scan.PathsTo(angle);
  ASSERT_EQ(calculator_.HasPath(), !rays.empty());
  if (rays.empty()) return;
  const TracedRay& shortest = *std::min_element(
      rays.begin(), rays.end(), [](const TracedRay& a, const TracedRay& b) {
        return a.OpticalLength < b.OpticalLength;
      });
  EXPECT_EQ(calculator_.GetLightPathType(), shortest.Type);
  EXPECT_NEAR(calculator_.GetOpticalLength(), shortest.OpticalLength, 1e-8);
}

TEST_F(DegenerateLightPaths, FromTheCentreAreStraight) {
  ExpectExactly({0, 0, 0}, {0, 0, 8400}, DU::kInnerAVToWater, {0, 0, 1},
                {{0, 0, kInner}, {0, 0, kOuter}});
  ExpectExactly({0, 0, 0}, {-8400, 0, 0}, DU::kInnerAVToWater, {-1, 0, 0},
                {{-kInner, 0, 0}, {-kOuter, 0, 0}});
  ExpectExactly({-0.0, 0.0, -0.0}, {0, 8400, 0}, DU::kInnerAVToWater, {0, 1, 0},
                {{0, kInner, 0}, {0, kOuter, 0}});
}

TEST_F(DegenerateLightPaths, FromTheCentreAreStraightInAnyDirection) {
  Random random(3);
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    LightPathCalculator calculator = CalculatorFor(vessel.Media);
    for (int i = 0; i < 200; ++i) {
      const TVector3 direction = random.Direction();
      const double radius = vessel.Media.OuterRadius * random.Uniform(1.01, 3);
      const TVector3 pmtPos = radius * direction;
      calculator.CalcByPosition({0, 0, 0}, pmtPos);
      ASSERT_EQ(calculator.GetLightPathType(), DU::kInnerAVToWater);
      ASSERT_EQ(FlawOf(calculator, vessel.Media, {0, 0, 0}, pmtPos), "");
      ASSERT_LE((calculator.GetInitialDirection() - direction).Mag(), 1e-15);
      ASSERT_LE((calculator.GetFinalDirection() - direction).Mag(), 1e-15);
    }
  }
}

TEST_F(DegenerateLightPaths, OnOneLineWithTheCentreAreStraight) {
  const TVector3 up(0, 0, 1);
  const TVector3 pmtPos(0, 0, 8400);
  const TVector3 inner(0, 0, kInner);
  const TVector3 outer(0, 0, kOuter);
  // Event on the same side as the PMT.
  ExpectExactly({0, 0, 3000}, pmtPos, DU::kInnerAVToWater, up, {inner, outer});
  ExpectExactly({0, 0, 5830}, pmtPos, DU::kAVToWater, up, {outer});
  ExpectExactly({0, 0, 7000}, pmtPos, DU::kWater, up, {});
  ExpectExactly({0, 0, 9000}, pmtPos, DU::kWater, -up, {});
  // Event on the opposite side.
  ExpectExactly({0, 0, -3000}, pmtPos, DU::kInnerAVToWater, up, {inner, outer});
  ExpectExactly({0, 0, -5830}, pmtPos, DU::kAVThroughInnerAVToWater, up,
                {-inner, inner, outer});
  ExpectExactly({0, 0, -7000}, pmtPos, DU::kWaterThroughInnerAV, up,
                {-outer, -inner, inner, outer});
}

TEST_F(DegenerateLightPaths, OnAnyLineThroughTheCentreAreStraight) {
  Random random(5);
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    const DU::ConcentricMedia& media = vessel.Media;
    LightPathCalculator calculator = CalculatorFor(media);
    for (int i = 0; i < 400; ++i) {
      const TVector3 direction = random.Direction();
      const double radius = media.OuterRadius * random.Uniform(1.01, 3.0);
      const TVector3 pmtPos = radius * direction;
      // Exactly on one line: scaled by powers of two, or along an axis.
      constexpr std::array kShares = {-4.0, -2.0, -1.0,   -0.5, -0.25, -0x1p-9,
                                      4.0,  2.0,  0x1p-9, 0.5,  0.25,  0x1p-40};
      const double share = random.Pick(kShares);
      const TVector3 eventPos = share * pmtPos;
      calculator.CalcByPosition(eventPos, pmtPos);
      SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
      ASSERT_TRUE(calculator.HasPath());
      ASSERT_EQ(FlawOf(calculator, media, eventPos, pmtPos), "");
      const TVector3 straight = share > 1.0 ? -direction : direction;
      ASSERT_LE((calculator.GetInitialDirection() - straight).Mag(), 2e-15);
      ASSERT_LE((calculator.GetFinalDirection() - straight).Mag(), 2e-15);
      for (const TVector3& corner : CornersOf(calculator)) {
        ASSERT_LE(corner.Cross(direction).Mag(),
                  2e-15 * radius * std::max(1.0, std::abs(share)));
      }
    }
  }
}

TEST_F(DegenerateLightPaths, NearlyOnOneLineAreNearlyStraight) {
  // Not a ball lens: no other path competes with the straight one.
  for (const double aside : {1e-300, 1e-18, 1e-13, 1e-9, 1e-6}) {
    for (const double z : {3000.0, 5830.0, 7000.0, -3000.0}) {
      SCOPED_TRACE("aside " + Exact(aside) + ", z " + Exact(z));
      const TVector3 eventPos(aside, 0, z);
      const TVector3 pmtPos(0, 0, 8400);
      Calculate(eventPos, pmtPos);
      ASSERT_TRUE(calculator_.HasPath());
      EXPECT_EQ(FlawOf(calculator_, media_, eventPos, pmtPos), "");
      for (const TVector3& corner : CornersOf(calculator_)) {
        EXPECT_LE(corner.Perp(), 3.0 * aside + 1e-11);
      }
    }
  }
}

TEST_F(DegenerateLightPaths, OfEventsOnASurfaceStartInTheMediumOutside) {
  const TVector3 pmtPos(0, 0, 8400);
  const TVector3 up(0, 0, 1);
  const TVector3 inner(0, 0, kInner);
  const TVector3 outer(0, 0, kOuter);
  const auto at = [](double z) { return TVector3(0, 0, z); };
  ExpectExactly(at(Below(kInner)), pmtPos, DU::kInnerAVToWater, up,
                {inner, outer});
  ExpectExactly(at(kInner), pmtPos, DU::kAVToWater, up, {outer});
  ExpectExactly(at(Above(kInner)), pmtPos, DU::kAVToWater, up, {outer});
  ExpectExactly(at(Below(kOuter)), pmtPos, DU::kAVToWater, up, {outer});
  ExpectExactly(at(kOuter), pmtPos, DU::kWater, up, {});
  ExpectExactly(at(Above(kOuter)), pmtPos, DU::kWater, up, {});

  ExpectExactly(at(-Below(kInner)), pmtPos, DU::kInnerAVToWater, up,
                {inner, outer});
  ExpectExactly(at(-kInner), pmtPos, DU::kAVThroughInnerAVToWater, up,
                {-inner, inner, outer});
  ExpectExactly(at(-Above(kInner)), pmtPos, DU::kAVThroughInnerAVToWater, up,
                {-inner, inner, outer});
  ExpectExactly(at(-Below(kOuter)), pmtPos, DU::kAVThroughInnerAVToWater, up,
                {-inner, inner, outer});
  ExpectExactly(at(-kOuter), pmtPos, DU::kWaterThroughInnerAV, up,
                {-outer, -inner, inner, outer});
  ExpectExactly(at(-Above(kOuter)), pmtPos, DU::kWaterThroughInnerAV, up,
                {-outer, -inner, inner, outer});
}

TEST_F(DegenerateLightPaths, OfEventsOnASurfaceMatchAScan) {
  int paths = 0;
  for (const double surface : {kInner, kOuter}) {
    for (const double radius : {Below(surface), surface, Above(surface)}) {
      const LaunchScan scan(media_, radius, 8400, 20000);
      for (int i = 1; i < 180; ++i) {
        const double angle = kPi * i / 180.0;
        const TVector3 eventPos(0, radius, 0);
        TVector3 pmtPos(8400 * std::sin(angle), 8400 * std::cos(angle), 0);
        ExpectAsScanned(scan, eventPos, pmtPos);
        if (calculator_.HasPath()) ++paths;
      }
    }
  }
  EXPECT_GT(paths, 500);
}

TEST_F(DegenerateLightPaths, ToAPmtOnTheOuterSurfaceEndOnIt) {
  const TVector3 up(0, 0, 1);
  ExpectExactly({0, 0, 0}, {0, 0, kOuter}, DU::kInnerAVToWater, up,
                {{0, 0, kInner}, {0, 0, kOuter}});
  ExpectExactly({0, 0, 5830}, {0, 0, kOuter}, DU::kAVToWater, up,
                {{0, 0, kOuter}});
  ExpectExactly({0, 0, 7000}, {0, 0, kOuter}, DU::kWater, -up, {});
  ExpectExactly(
      {0, 0, -kOuter}, {0, 0, kOuter}, DU::kWaterThroughInnerAV, up,
      {{0, 0, -kOuter}, {0, 0, -kInner}, {0, 0, kInner}, {0, 0, kOuter}});
  int paths = 0;
  for (const double radius : {1000.0, 5700.0, 5830.0, kOuter, 7000.0}) {
    for (const double pmtRadius : {kOuter, Above(kOuter)}) {
      const LaunchScan scan(media_, radius, pmtRadius, 20000);
      for (int i = 1; i < 90; ++i) {
        const double angle = kPi * i / 90.0;
        TVector3 pmtPos(pmtRadius * std::cos(angle), 0,
                        pmtRadius * std::sin(angle));
        while (pmtPos.Mag() < kOuter) pmtPos *= 1.0 + 4e-16;
        ExpectAsScanned(scan, {radius, 0, 0}, pmtPos);
        if (calculator_.HasPath()) ++paths;
      }
    }
  }
  EXPECT_GT(paths, 300);
}

TEST_F(DegenerateLightPaths, DoNotExistToAPmtOutsideTheWater) {
  for (const double z :
       {0.0, 100.0, Below(kInner), kInner, 5830.0, Below(kOuter)}) {
    for (const TVector3& eventPos :
         {TVector3(0, 0, 0), TVector3(100, 200, 300), TVector3(0, 5830, 0),
          TVector3(0, 0, 7000), TVector3(0, 0, -7000), TVector3(0, 0, z)}) {
      SCOPED_TRACE("z " + Exact(z) + ", event " + Exact(eventPos));
      Calculate({0, 0, 100}, {0, 8400, 0});
      ASSERT_TRUE(calculator_.HasPath());
      Calculate(eventPos, {0, 0, z});
      ExpectNoPath(calculator_);
    }
  }
}

TEST_F(DegenerateLightPaths, DoNotExistFromAnEventAtThePmt) {
  for (const TVector3& position :
       {TVector3(0, 0, 8400), TVector3(3000, 5000, -6000),
        TVector3(0, kOuter, 0), TVector3(0, 0, 0), TVector3(1, 2, 3)}) {
    Calculate({0, 0, 100}, {0, 8400, 0});
    ASSERT_TRUE(calculator_.HasPath());
    Calculate(position, position);
    ExpectNoPath(calculator_);
  }
  // One rounding step away there is a path.
  ExpectExactly({0, 0, Below(8400)}, {0, 0, 8400}, DU::kWater, {0, 0, 1}, {});
  // Also for the smallest number, unless the sum rounds it away.
  Calculate({0, 5e-324, 8400}, {0, 0, 8400});
  if (calculator_.HasPath()) {
    EXPECT_EQ(calculator_.GetInitialDirection(), TVector3(0, -1, 0));
  } else {
    ExpectNoPath(calculator_);
  }
}

TEST_F(DegenerateLightPaths, DoNotExistForPositionsThatAreNotFinite) {
  const TVector3 inside(100, 200, 300);
  const TVector3 pmtPos(3000, 5000, -6000);
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (int axis = 0; axis < 3; ++axis) {
      SCOPED_TRACE("axis " + std::to_string(axis) + ": " + Exact(bad));
      for (const TVector3& good : {inside, pmtPos, TVector3(0, 0, 0)}) {
        TVector3 event = good;
        event[axis] = bad;
        Calculate(inside, pmtPos);
        ASSERT_TRUE(calculator_.HasPath());
        Calculate(event, pmtPos);
        ExpectNoPath(calculator_);

        TVector3 pmt = good;
        pmt[axis] = bad;
        Calculate(inside, pmtPos);
        ASSERT_TRUE(calculator_.HasPath());
        Calculate(inside, pmt);
        ExpectNoPath(calculator_);
        Calculate(pmt, pmt);
        ExpectNoPath(calculator_);
      }
    }
  }
}

TEST_F(DegenerateLightPaths,
       OfHugeAndTinyPositionsHaveUnitDirectionsOrDoNotExist) {
  std::vector<TVector3> positions;
  for (const double size :
       {1e-320, 1e-308, 1e-200, 1e-160, 1e-30, 1e3, 5830.0, 8400.0, 1e9, 1e16,
        1e30, 1e154, 1e155, 1e200, 1e308, std::numeric_limits<double>::max()}) {
    for (const TVector3& direction :
         {TVector3(1, 0, 0), TVector3(0, -1, 0), TVector3(0.6, 0, 0.8),
          TVector3(1, 1, 1), TVector3(-1, 1, -1e-9), TVector3(-1, 1e-200, 0)}) {
      positions.push_back(size * direction);
    }
  }
  int paths = 0;
  for (const TVector3& eventPos : positions) {
    for (const TVector3& pmtPos : positions) {
      SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
      Calculate(eventPos, pmtPos);
      if (!calculator_.HasPath()) {
        ExpectNoPath(calculator_);
        continue;
      }
      ++paths;
      ASSERT_NEAR(calculator_.GetInitialDirection().Mag(), 1.0, 1e-14);
      ASSERT_NEAR(calculator_.GetFinalDirection().Mag(), 1.0, 1e-14);
      for (const TVector3& corner : CornersOf(calculator_)) {
        ASSERT_TRUE(std::isfinite(corner.X()) && std::isfinite(corner.Y()) &&
                    std::isfinite(corner.Z()));
      }
      const bool areUsual = pmtPos.Mag() < 1e10 && eventPos.Mag() < 1e10;
      if (areUsual) {
        ASSERT_EQ(FlawOf(calculator_, media_, eventPos, pmtPos), "");
      }
    }
  }
  EXPECT_GT(paths, 200);
}

TEST_F(DegenerateLightPaths,
       OfAnEventVeryCloseToTheCentreAreThoseFromTheCentre) {
  const TVector3 pmtPos(2000, 3000, -7000);
  Calculate({0, 0, 0}, pmtPos);
  const std::vector<TVector3> corners = CornersOf(calculator_);
  for (const double hair : {5e-324, 1e-310, 1e-200, 1e-100, 1e-20}) {
    for (const TVector3& side :
         {TVector3(1, 0, 0), TVector3(0, -1, 1), TVector3(-2, -3, 7)}) {
      Calculate(hair * side, pmtPos);
      ASSERT_EQ(calculator_.GetLightPathType(), DU::kInnerAVToWater);
      for (std::size_t i = 1; i < corners.size(); ++i) {
        EXPECT_LE((CornersOf(calculator_)[i] - corners[i]).Mag(), 1e-11)
            << Exact(hair);
      }
    }
  }
}

TEST_F(DegenerateLightPaths, AtCriticalAnglesHaveNoFlaw) {
  // For every type in every vessel: rays with launch angles down to the last
  // digit from the first one of the type, and the paths to their ends.
  Random random(7);
  int paths = 0;
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    const DU::ConcentricMedia& media = vessel.Media;
    LightPathCalculator calculator = CalculatorFor(media);
    for (int i = 0; i < Repetitions(60, 6); ++i) {
      const double radius = media.OuterRadius * random.Uniform(0.01, 1.5);
      const double pmtRadius = media.OuterRadius * random.Uniform(1.0, 2.0);
      const LaunchScan scan(media, radius, pmtRadius, 500);
      for (const LaunchScan::End& end : scan.Ends()) {
        for (int power = -16; power < -1; ++power) {
          for (const double side : {-1.0, 0.0, 1.0}) {
            const double angle = end.SweptAngle + side * std::pow(10.0, power);
            const TVector3 eventPos(radius, 0, 0);
            TVector3 pmtPos(pmtRadius * std::cos(angle), 0,
                            pmtRadius * std::sin(angle));
            while (pmtPos.Mag() < media.OuterRadius) pmtPos *= 1.0 + 4e-16;
            calculator.CalcByPosition(eventPos, pmtPos);
            if (!calculator.HasPath()) continue;
            ++paths;
            ASSERT_EQ(FlawOf(calculator, media, eventPos, pmtPos), "")
                << Exact(media) << "; event " << Exact(eventPos) << ", PMT "
                << Exact(pmtPos);
          }
        }
      }
    }
  }
  EXPECT_GT(paths, 10000);
}

}  // namespace
}  // namespace ZARN::Testing

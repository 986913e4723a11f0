#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "log/Log.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/SameBits.hpp"
#include "tests/reference/PlainLightTracer.hpp"
#include "tests/support/Captured.hpp"

namespace {

/// How often this program has asked for memory.
std::atomic<long> allocations{0};

void* Allocate(std::size_t size) noexcept {
  allocations.fetch_add(1, std::memory_order_relaxed);
  return std::malloc(size > 0 ? size : 1);
}

}  // namespace

// All forms that this program uses, so that none pairs with a replaced one. Not
// inlined: where the compiler sees free beside a new that it does not see into,
// it takes them for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
  return operator new(size);
}
[[gnu::noinline]] void* operator new(std::size_t size,
                                     const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size,
                                       const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory,
                                       std::size_t /*size*/) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory,
                                         std::size_t /*size*/) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory,
                                       const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete[](
    void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}

namespace ZARN::Testing {
namespace {

using DU::LightPathCalculator;
using Reference::LaunchScan;
using Reference::TracedRay;

constexpr double kInner = 5800.0;
constexpr double kOuter = 5860.0;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Below(double value) { return std::nextafter(value, 0.0); }
double Above(double value) { return std::nextafter(value, kInfinity); }

std::vector<TVector3> PointsOf(const LightPathCalculator& path) {
  return {path.GetAVPoint1(), path.GetAVPoint2(), path.GetAVPoint3(),
          path.GetAVPoint4()};
}

/// Nothing of a path, and nothing of the path before it.
void ExpectNoPath(const LightPathCalculator& path) {
  EXPECT_FALSE(path.HasPath());
  EXPECT_EQ(path.GetLightPathType(), DU::kUninitialised);
  for (const TVector3& point : PointsOf(path)) {
    EXPECT_EQ(point, TVector3()) << Exact(point);
  }
  EXPECT_EQ(path.GetInitialDirection(), TVector3());
  EXPECT_EQ(path.GetFinalDirection(), TVector3());
  for (const DU::eMedium medium :
       {DU::eMedium::kInnerAV, DU::eMedium::kAcrylic, DU::eMedium::kWater}) {
    EXPECT_EQ(path.GetLength(medium), 0.0);
  }
  EXPECT_EQ(path.GetOpticalLength(), 0.0);
  EXPECT_EQ(path.GetTimeOfFlight(), 0.0);
  EXPECT_EQ(path.GetIncidenceAngle(), 0.0);
}

/// In the liquid, acrylic and water of a real vessel.
class DegenerateLightPaths : public testing::Test {
 protected:
  void Calculate(const TVector3& eventPos, const TVector3& pmtPos) {
    calculator_.CalcByPosition(eventPos, pmtPos);
  }

  /// The straight path, to the last bit.
  void ExpectExactly(const TVector3& eventPos, const TVector3& pmtPos,
                     DU::eLightPathType type, const TVector3& direction,
                     std::vector<TVector3> points) {
    SCOPED_TRACE("event " + Exact(eventPos) + ", PMT " + Exact(pmtPos));
    Calculate(eventPos, pmtPos);
    EXPECT_EQ(calculator_.GetLightPathType(), type);
    EXPECT_EQ(calculator_.GetStartPos(), eventPos);
    EXPECT_EQ(calculator_.GetEndPos(), pmtPos);
    EXPECT_EQ(calculator_.GetInitialDirection(), direction)
        << Exact(calculator_.GetInitialDirection());
    EXPECT_EQ(calculator_.GetFinalDirection(), direction)
        << Exact(calculator_.GetFinalDirection());
    points.resize(4);
    const std::vector<TVector3> found = PointsOf(calculator_);
    for (std::size_t i = 0; i < points.size(); ++i) {
      EXPECT_EQ(found[i], points[i]) << "point " << i + 1 << Exact(found[i]);
    }
  }

  /// The path is what a scan of all launch angles finds, and has no flaw.
  void ExpectAsScanned(const LaunchScan& scan, const TVector3& eventPos,
                       const TVector3& pmtPos);

  const DU::ConcentricMedia media_{kInner, kOuter, {1.5, 1.49, 1.33}};
  LightPathCalculator calculator_ = CalculatorFor(media_);
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

TEST_F(DegenerateLightPaths, FromTheCentreGoStraightOut) {
  ExpectExactly({0, 0, 0}, {0, 0, 8400}, DU::kInnerAVToWater, {0, 0, 1},
                {{0, 0, kInner}, {0, 0, kOuter}});
  ExpectExactly({0, 0, 0}, {-8400, 0, 0}, DU::kInnerAVToWater, {-1, 0, 0},
                {{-kInner, 0, 0}, {-kOuter, 0, 0}});
  ExpectExactly({-0.0, 0.0, -0.0}, {0, 8400, 0}, DU::kInnerAVToWater, {0, 1, 0},
                {{0, kInner, 0}, {0, kOuter, 0}});
}

TEST_F(DegenerateLightPaths, FromTheCentreGoStraightOutInAnyDirection) {
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

TEST_F(DegenerateLightPaths, AlongOneLineWithTheCentreAreStraight) {
  const TVector3 up(0, 0, 1);
  const TVector3 pmtPos(0, 0, 8400);
  const TVector3 inner(0, 0, kInner);
  const TVector3 outer(0, 0, kOuter);
  // On the side of the PMT.
  ExpectExactly({0, 0, 3000}, pmtPos, DU::kInnerAVToWater, up, {inner, outer});
  ExpectExactly({0, 0, 5830}, pmtPos, DU::kAVToWater, up, {outer});
  ExpectExactly({0, 0, 7000}, pmtPos, DU::kWater, up, {});
  ExpectExactly({0, 0, 9000}, pmtPos, DU::kWater, -up, {});
  // On the other side.
  ExpectExactly({0, 0, -3000}, pmtPos, DU::kInnerAVToWater, up, {inner, outer});
  ExpectExactly({0, 0, -5830}, pmtPos, DU::kAVThroughInnerAVToWater, up,
                {-inner, inner, outer});
  ExpectExactly({0, 0, -7000}, pmtPos, DU::kWaterThroughInnerAV, up,
                {-outer, -inner, inner, outer});
}

TEST_F(DegenerateLightPaths, AlongAnyLineWithTheCentreAreStraight) {
  Random random(5);
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    const DU::ConcentricMedia& media = vessel.Media;
    LightPathCalculator calculator = CalculatorFor(media);
    for (int i = 0; i < 400; ++i) {
      const TVector3 direction = random.Direction();
      const double radius = media.OuterRadius * random.Uniform(1.01, 3.0);
      const TVector3 pmtPos = radius * direction;
      // Exactly on one line: by powers of two, or by one of three axes.
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

TEST_F(DegenerateLightPaths, NearlyAlongOneLineAreNearlyStraight) {
  // No ball lens: nothing else competes with the straight path.
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

TEST_F(DegenerateLightPaths, OfEventsOnASurfaceBelongToTheMediumOutside) {
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

TEST_F(DegenerateLightPaths, OfEventsOnASurfaceAreThoseThatAScanFinds) {
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

TEST_F(DegenerateLightPaths, ToAPmtOnTheOuterSurfaceEndThere) {
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

TEST_F(DegenerateLightPaths, AreNoneToAPmtThatIsNotInTheWater) {
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

TEST_F(DegenerateLightPaths, AreNoneFromAnEventAtThePmt) {
  for (const TVector3& position :
       {TVector3(0, 0, 8400), TVector3(3000, 5000, -6000),
        TVector3(0, kOuter, 0), TVector3(0, 0, 0), TVector3(1, 2, 3)}) {
    Calculate({0, 0, 100}, {0, 8400, 0});
    ASSERT_TRUE(calculator_.HasPath());
    Calculate(position, position);
    ExpectNoPath(calculator_);
  }
  // One step beside it there is one.
  ExpectExactly({0, 0, Below(8400)}, {0, 0, 8400}, DU::kWater, {0, 0, 1}, {});
  // Or the smallest number beside it, if that still counts.
  Calculate({0, 5e-324, 8400}, {0, 0, 8400});
  if (calculator_.HasPath()) {
    EXPECT_EQ(calculator_.GetInitialDirection(), TVector3(0, -1, 0));
  } else {
    ExpectNoPath(calculator_);
  }
}

TEST_F(DegenerateLightPaths, AreNoneForPositionsThatAreNotFinite) {
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
       OfHugeAndTinyPositionsHaveUnitDirectionsOrAreNone) {
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

TEST_F(DegenerateLightPaths, OfAnEventAHairFromTheCentreAreThoseFromTheCentre) {
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

TEST_F(DegenerateLightPaths, TouchingTheVesselFromOutsideAreStraight) {
  const auto expectStraight = [&](const TVector3& a, const TVector3& b) {
    SCOPED_TRACE("event " + Exact(a) + ", PMT " + Exact(b));
    Calculate(a, b);
    EXPECT_EQ(calculator_.GetLightPathType(), DU::kWater);
    EXPECT_EQ(FlawOf(calculator_, media_, a, b), "");
  };
  for (const double height : {kOuter, Above(kOuter), Above(Above(kOuter))}) {
    expectStraight({-3000, height, 0}, {7000, height, 0});
    expectStraight({0, height, -3000}, {0, height, 7000});
    expectStraight({7000, 0, -height}, {-1, 0, -height});
    // Touching with an end, too.
    expectStraight({0, height, 0}, {7000, height, 0});
    expectStraight({7000, height, 0}, {0, height, 0});
    expectStraight({0, height, 0}, {7000, 8000, 0});
  }
  // A touch between whole numbers in no special plane: (3, 4, 0)/5 and (4, -3,
  // 0)/5 are at right angles.
  const TVector3 touch = 1172.0 * TVector3(3, 4, 0);
  const TVector3 along(4, -3, 0);
  expectStraight(touch - 1000.0 * along, touch + 900.0 * along);
  expectStraight(touch - 1000.0 * along + TVector3(0, 0, 8),
                 touch + 900.0 * along + TVector3(0, 0, 8));
}

/// Positions of a touch that are not whole numbers are rounded: so many steps
/// of the last digit deeper still count, or do not.
constexpr int kRoundedSteps = 3;

double BelowBy(double value, int steps) {
  for (int i = 0; i < steps; ++i) value = Below(value);
  return value;
}

TEST_F(DegenerateLightPaths, AFewStepsBelowTheTouchAreInTheShadow) {
  // The light that enters here is bent away: none arrives straight behind.
  for (int steps = 1; steps <= 10; ++steps) {
    const double height = BelowBy(kOuter, steps);
    SCOPED_TRACE("height " + Exact(height));
    const TVector3 eventPos(-3000, height, 0);
    const TVector3 pmtPos(7000, height, 0);
    Calculate(eventPos, pmtPos);
    if (steps <= kRoundedSteps && calculator_.HasPath()) {
      EXPECT_EQ(calculator_.GetLightPathType(), DU::kWater);
      EXPECT_EQ(FlawOf(calculator_, media_, eventPos, pmtPos), "");
    } else {
      ExpectNoPath(calculator_);
    }
  }
}

TEST(DegenerateLightPathsOfEqualIndices,
     AFewStepsBelowTheTouchGoThroughTheWall) {
  for (const double inner : {3000.0, 5800.0, 5859.9999}) {
    const DU::ConcentricMedia media{inner, kOuter, {1.33, 1.33, 1.33}};
    LightPathCalculator calculator = CalculatorFor(media);
    const auto expectType = [&](double height, DU::eLightPathType type) {
      SCOPED_TRACE("inner " + Exact(inner) + ", height " + Exact(height));
      const TVector3 eventPos(-7000, height, 0);
      const TVector3 pmtPos(8000, height, 0);
      calculator.CalcByPosition(eventPos, pmtPos);
      ASSERT_EQ(calculator.GetLightPathType(), type);
      EXPECT_EQ(FlawOf(calculator, media, eventPos, pmtPos), "");
      for (const TVector3& corner : CornersOf(calculator)) {
        EXPECT_NEAR(corner.Y(), height, 1e-9);
        EXPECT_EQ(corner.Z(), 0.0);
      }
      EXPECT_NEAR(calculator.GetInitialDirection().Y(), 0.0, 1e-14);
      EXPECT_NEAR(calculator.GetFinalDirection().Y(), 0.0, 1e-14);
    };
    expectType(kOuter, DU::kWater);
    for (int steps = kRoundedSteps + 1; steps < 12; ++steps) {
      expectType(BelowBy(kOuter, steps), DU::kWaterThroughAV);
    }
    for (const double deep : {1e-11, 1e-9, 1e-6, 1e-5}) {
      expectType(kOuter - deep, DU::kWaterThroughAV);
    }
    for (const double deep : {1e-10, 1e-9, 1e-6, 1e-3, 1.0}) {
      expectType(inner * (1.0 - deep), DU::kWaterThroughInnerAV);
    }
    for (const double high : {1e-10, 1e-9}) {
      expectType(inner * (1.0 + high), DU::kWaterThroughAV);
    }
  }
}

TEST(DegenerateLightPathsOfEqualIndices,
     AreThereFromAnEventRightAtTheInnerSurface) {
  // The straight line touches the inner surface, to the last digits: it belongs
  // to the end of one family of rays and the beginning of another.
  constexpr double kIndex = 1.2769303342202885;
  const DU::ConcentricMedia media{
      5549.0023833975001, kOuter, {kIndex, kIndex, kIndex}};
  const TVector3 eventPos(5549.0023844151892, 0, 0);
  const TVector3 pmtPos(5548.9521607736715, 2622.3652760915243, 0);
  LightPathCalculator calculator = CalculatorFor(media);
  calculator.CalcByPosition(eventPos, pmtPos);
  ASSERT_TRUE(calculator.HasPath());
  EXPECT_EQ(FlawOf(calculator, media, eventPos, pmtPos), "");
  const double apart = (pmtPos - eventPos).Mag();
  EXPECT_NEAR(calculator.GetOpticalLength(), kIndex * apart, 1e-8);
  for (const TVector3& corner : CornersOf(calculator)) {
    EXPECT_LE(DistanceFromSegment(corner, eventPos, pmtPos), 1e-9);
  }
}

TEST_F(DegenerateLightPaths, AlongACriticalAngleHaveNoFlaw) {
  // For every type of every vessel: launch angles down to the last digit from
  // where the type begins, and what comes out where they end.
  Random random(7);
  int paths = 0;
  for (const Vessel& vessel : Vessels()) {
    SCOPED_TRACE(vessel.Name);
    const DU::ConcentricMedia& media = vessel.Media;
    LightPathCalculator calculator = CalculatorFor(media);
    for (int i = 0; i < 60; ++i) {
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

TEST_F(DegenerateLightPaths, SayNothingWhetherThereIsOneOrNot) {
  const Captured warnings(ZARN::warn);
  const Captured diagnostics(ZARN::debug);
  const TVector3 pmtPos(0, 0, 8400);
  int without = 0;
  for (int i = 0; i <= 180; ++i) {
    const double angle = kPi * i / 180.0;
    for (const double radius : {0.0, 5700.0, 5799.9, 5830.0, kOuter, 6500.0}) {
      Calculate({radius * std::sin(angle), 0, radius * std::cos(angle)},
                pmtPos);
      if (calculator_.HasPath()) continue;
      ++without;
      ExpectNoPath(calculator_);
    }
  }
  EXPECT_GT(without, 50);
  Calculate({kNaN, 0, 0}, pmtPos);
  Calculate({0, 0, 0}, {0, 0, 0});
  Calculate(pmtPos, pmtPos);
  calculator_.CalcReflectionByPosition({0, 0, -7000}, pmtPos);
  calculator_.CalcReflectionByPosition({0, 7000, 0}, pmtPos);
  EXPECT_EQ(warnings.Text(), "");
  EXPECT_EQ(diagnostics.Text(), "");
}

TEST_F(DegenerateLightPaths, LeaveNothingOfTheFormerPath) {
  const TVector3 pmtPos(0, 0, 8400);
  Calculate({0, 0, -7000}, pmtPos);
  ASSERT_NE(calculator_.GetAVPoint4(), TVector3());
  ExpectExactly({0, 0, 100}, pmtPos, DU::kInnerAVToWater, {0, 0, 1},
                {{0, 0, kInner}, {0, 0, kOuter}});
  ExpectExactly({0, 0, 7000}, pmtPos, DU::kWater, {0, 0, 1}, {});
  Calculate({0, 0, -7000}, pmtPos);
  // Into the shadow beside the vessel.
  Calculate({-3000, kOuter - 1.0, 0}, {7000, kOuter - 1.0, 0});
  ExpectNoPath(calculator_);
  // What was set by hand goes, too.
  calculator_.SetAVPoint3({1, 2, 3});
  ExpectExactly({0, 0, 5830}, pmtPos, DU::kAVToWater, {0, 0, 1},
                {{0, 0, kOuter}});
}

TEST(LightPathCalculatorBeforeItsRun, Refuses) {
  LightPathCalculator calculator;
  EXPECT_THROW(calculator.CalcByPosition({0, 0, 0}, {0, 0, 8400}),
               std::logic_error);
  EXPECT_THROW(calculator.CalcReflectionByPosition({0, 0, 7000}, {0, 0, 8400}),
               std::logic_error);
  EXPECT_THROW(calculator.CalcByPosition({kNaN, 0, 0}, {0, 0, 8400}),
               std::logic_error);
}

/// Pairs of all kinds, for the tests that compare whole runs of them.
std::vector<std::array<TVector3, 2>> ManyPairs(int count) {
  Random random(11);
  std::vector<std::array<TVector3, 2>> pairs;
  pairs.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    pairs.push_back({random.Uniform(0.0, 9000.0) * random.Direction(),
                     random.Uniform(5870.0, 12000.0) * random.Direction()});
  }
  return pairs;
}

TEST_F(DegenerateLightPaths, AskForNoMemory) {
  const auto pairs = ManyPairs(5000);
  std::array<int, DU::kNumberOfLightPathTypes> ofType{};
  const long before = allocations.load();
  for (const auto& [eventPos, pmtPos] : pairs) {
    calculator_.CalcByPosition(eventPos, pmtPos);
    ++ofType[calculator_.GetLightPathType()];
    calculator_.CalcReflectionByPosition(eventPos, pmtPos);
    ++ofType[calculator_.GetLightPathType()];
  }
  calculator_.CalcByPosition({0, 0, 0}, {0, 0, 8400});
  calculator_.CalcByPosition({kNaN, 0, 0}, {0, 0, 8400});
  const long after = allocations.load();
  EXPECT_EQ(after - before, 0);
  for (const DU::eLightPathType type :
       {DU::kUninitialised, DU::kInnerAVToWater, DU::kAVToWater,
        DU::kWaterThroughInnerAV, DU::kWater, DU::kWaterReflection}) {
    EXPECT_GT(ofType[type], 0) << DU::kLightPathTypeNames[type];
  }
  // The counter counts.
  const std::vector<int> memory(100);
  EXPECT_GT(allocations.load(), after);
}

bool AreSamePaths(const DU::LightPath& a, const DU::LightPath& b) {
  return a.LightPathType == b.LightPathType &&
         AreSame(a.StartPos, b.StartPos) && AreSame(a.EndPos, b.EndPos) &&
         AreSame(a.InitialDirection, b.InitialDirection) &&
         AreSame(a.FinalDirection, b.FinalDirection) &&
         AreSame(a.AVPoint1, b.AVPoint1) && AreSame(a.AVPoint2, b.AVPoint2) &&
         AreSame(a.AVPoint3, b.AVPoint3) && AreSame(a.AVPoint4, b.AVPoint4);
}

TEST_F(DegenerateLightPaths, AreTheSameInEveryThreadAndInEveryOrder) {
  constexpr int kThreads = 4;
  const int count = std::clamp(PairsInAll() / 50, 100, 20000);
  const auto pairs = ManyPairs(count);
  std::vector<DU::LightPath> expected;
  expected.reserve(pairs.size());
  for (const auto& [eventPos, pmtPos] : pairs) {
    calculator_.CalcByPosition(eventPos, pmtPos);
    expected.push_back(calculator_.GetLightPath());
  }
  std::vector<int> different(kThreads, 0);
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread, calculator = calculator_]() mutable {
      for (std::size_t i = 0; i < pairs.size(); ++i) {
        // Each thread its own order: nothing may hang on the pair before.
        const std::size_t pick = thread % 2 == 0 ? i : pairs.size() - 1 - i;
        calculator.CalcByPosition(pairs[pick][0], pairs[pick][1]);
        if (!AreSamePaths(calculator.GetLightPath(), expected[pick])) {
          ++different[thread];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(different, std::vector<int>(kThreads, 0));
}

TEST_F(DegenerateLightPaths, ReadersFollowWhatIsSetByHand) {
  calculator_.SetLightPathType(DU::kAVToWater);
  calculator_.SetStartPos({0, 0, 5830});
  calculator_.SetAVPoint1({0, 0, 5860});
  calculator_.SetAVPoint2({1, 2, 3});  // not of this type
  calculator_.SetEndPos({0, 0, 8360});
  calculator_.SetFinalDirection({0, 0, 1});
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kInnerAV), 0.0);
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kAcrylic), 30.0);
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kWater), 2500.0);
  EXPECT_DOUBLE_EQ(calculator_.GetOpticalLength(), 1.49 * 30 + 1.33 * 2500);
  EXPECT_DOUBLE_EQ(calculator_.GetTimeOfFlight(),
                   (1.49 * 30 + 1.33 * 2500) / 299.792458);
  EXPECT_EQ(calculator_.GetIncidenceAngle(), 0.0);
  calculator_.SetFinalDirection({0, 3, 3});
  EXPECT_DOUBLE_EQ(calculator_.GetIncidenceAngle(), kPi / 4.0);

  const auto ownType =
      static_cast<DU::eLightPathType>(DU::kNumberOfLightPathTypes + 1);
  calculator_.SetLightPathType(ownType);
  EXPECT_EQ(calculator_.GetLength(DU::eMedium::kWater), 0.0);
  EXPECT_EQ(calculator_.GetOpticalLength(), 0.0);
  EXPECT_EQ(calculator_.GetTimeOfFlight(), 0.0);
  EXPECT_EQ(calculator_.GetIncidenceAngle(), 0.0);
}

TEST(LightPathOfDispersiveMedia, HasLengthByPhaseAndTimeByGroupIndex) {
  // Straight out from the centre: 5800 mm of liquid, 60 of acrylic, 2540 of
  // water. The indices fall evenly by 3e-4, 2e-4 and 1e-4 per nm, so that n -
  // wavelength dn/dwavelength, the group index, is what they come to at 0 nm.
  Tables tables = TablesOf({kInner, kOuter, {1.5, 1.49, 1.33}});
  const std::vector<double> wavelengths = {300.0, 400.0, 500.0};
  const auto set = [&](const char* index, std::vector<double> n) {
    tables.Remove("OPTICS", index);
    tables.Set("OPTICS", index, "wavelength", wavelengths);
    tables.Set("OPTICS", index, "refractive_index", std::move(n));
  };
  set("inner_av", {1.56, 1.53, 1.50});
  set("acrylic", {1.54, 1.52, 1.50});
  set("water", {1.36, 1.35, 1.34});
  tables.Load();
  LightPathCalculator calculator;
  calculator.SetWavelength(450.0);
  calculator.BeginOfRun();
  calculator.CalcByPosition({0, 0, 0}, {0, 0, 8400});
  EXPECT_NEAR(calculator.GetOpticalLength(),
              1.515 * 5800 + 1.51 * 60 + 1.345 * 2540, 1e-8);
  EXPECT_NEAR(calculator.GetTimeOfFlight(),
              (1.65 * 5800 + 1.60 * 60 + 1.39 * 2540) / 299.792458, 1e-10);
}

TEST_F(DegenerateLightPaths, FromStraightAheadMeetThePmtHeadOn) {
  Calculate({0, 0, 100}, {0, 0, 8400});
  EXPECT_EQ(calculator_.GetIncidenceAngle(), 0.0);
  Calculate({0, 0, 9000}, {0, 0, 8400});
  EXPECT_EQ(calculator_.GetIncidenceAngle(), kPi);
  // From behind its own plane at a right angle.
  Calculate({100, 0, 8400}, {0, 0, 8400});
  EXPECT_EQ(calculator_.GetIncidenceAngle(), kPi / 2.0);
}

TEST_F(DegenerateLightPaths, FromNearlyAheadMeetThePmtAtAnAngleOfAllDigits) {
  // An arc cosine would have lost half of the digits here.
  Random random(13);
  for (int i = 0; i < 2000; ++i) {
    const double angle = std::pow(10.0, random.Uniform(-12.0, 0.0));
    const TVector3 eventPos(random.Uniform(1000.0, 9000.0), 0, 0);
    const TVector3 pmtPos(8400 * std::cos(angle), 8400 * std::sin(angle), 0);
    Calculate(eventPos, pmtPos);
    if (!calculator_.HasPath()) continue;
    const double expected =
        AngleBetween(calculator_.GetFinalDirection(), pmtPos);
    ASSERT_NEAR(calculator_.GetIncidenceAngle(), expected, 2e-15)
        << "event " << Exact(eventPos) << ", PMT " << Exact(pmtPos);
    const TVector3 inWater(random.Uniform(5861.0, 9000.0), 0, 0);
    calculator_.CalcReflectionByPosition(inWater, pmtPos);
    if (!calculator_.HasPath()) continue;
    ASSERT_NEAR(calculator_.GetIncidenceAngle(),
                AngleBetween(calculator_.GetFinalDirection(), pmtPos), 2e-15)
        << "event " << Exact(inWater) << ", PMT " << Exact(pmtPos);
  }
}

}  // namespace
}  // namespace ZARN::Testing

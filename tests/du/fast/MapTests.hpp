#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "du/fast/NeckBossCap.hpp"
#include "du/fast/ShadowMap.hpp"
#include "du/geometry/OctahedralDirection.hpp"
#include "du/geometry/PointTree.hpp"
#include "du/hardware/NeckBoss.hpp"
#include "tests/property/Random.hpp"

// Tests of single points that the tests of the shadow map paint.

namespace ZARN::Testing {

using namespace DU;

inline constexpr double kRadius = 5860.0;  // mm
inline constexpr double kShell = ShadowMap::kShell;

inline std::size_t Index(eMappedTest test) {
  return static_cast<std::size_t>(test);
}

/// Spots on the vessel, and a cap on its top.
class TwoTests {
 public:
  TwoTests() {
    Random random(30);
    for (int i = 0; i < 40; ++i) {
      centres_.push_back(kRadius * random.Direction());
    }
    // Where the square is folded, and at its corners.
    for (const int axis : {0, 1, 2}) {
      TVector3 centre;
      centre[axis] = -kRadius;
      centres_.push_back(centre);
    }
    tree_ = PointTree(centres_, kReach);
    boss_.NeckBossAngle = 0.5;
    cap_ = std::make_unique<NeckBossCap>(boss_);
  }

  ShadowMap Map(int cells, double radius = kRadius) const {
    ShadowMap::Tests tests = {};
    tests[Index(eMappedTest::kNCDAnchor)] = &tree_;
    tests[Index(eMappedTest::kNeckBoss)] = cap_.get();
    return {radius, tests, cells};
  }

  bool IsSpot(const TVector3& point) const { return tree_.HasPointNear(point); }
  const PointTree& Spots() const { return tree_; }
  bool IsCap(const TVector3& point) const {
    return IsUnderNeckBoss(boss_, point);
  }

  static std::vector<TVector3> PointsAnywhere(int count) {
    Random random(32);
    std::vector<TVector3> points;
    points.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
      points.push_back(InTheShell(random.Direction(), random));
    }
    return points;
  }

  /// Points at limits of the spots, moved to an edge of cells or just beside.
  static std::vector<TVector3> PointsAtBorders(
      const std::vector<TVector3>& points, int cells) {
    Random random(33);
    std::vector<TVector3> moved;
    moved.reserve(points.size());
    for (const TVector3& point : points) {
      auto place = PlaceOf(point.X(), point.Y(), point.Z());
      const auto move = [&](double& along) {
        const double step = 2.0 / cells;
        along = std::round(along / step) * step;
        if (random.Chance(0.7)) {
          along += (random.Chance(0.5) ? 1 : -1) *
                   std::pow(10, random.Uniform(-17, -6));
        }
        along = std::clamp(along, -1.0, 1.0);
      };
      const int which = random.Whole(0, 2);
      if (which != 0) move(place.u);
      if (which != 1) move(place.v);
      const Point direction = DirectionAt(place.u, place.v);
      moved.push_back(InTheShell(AsTVector3(direction), random));
    }
    return moved;
  }

  /// Points at limits of the tests, and at the axes and folds of the square.
  std::vector<TVector3> PointsAtLimits(int count) const {
    Random random(31);
    const auto small = [&] {
      return (random.Chance(0.5) ? 1 : -1) *
             std::pow(10, random.Uniform(-12, -1));
    };
    std::vector<TVector3> points;
    while (static_cast<int>(points.size()) < count) {
      TVector3 point = random.Direction();
      point[random.Whole(0, 2)] *= small();
      points.push_back(point);
      const TVector3 centre = random.Pick(centres_).Unit();
      const TVector3 axis = centre.Cross(random.Direction()).Unit();
      point = centre;
      point.Rotate(2 * std::asin(kReach / kRadius / 2) * (1 + small()), axis);
      points.push_back(point);
      point.SetMagThetaPhi(1, boss_.NeckBossAngle * (1 + small()),
                           random.Uniform(-4, 4));
      points.push_back(point);
    }
    for (TVector3& point : points) point = InTheShell(point, random);
    return points;
  }

 private:
  static constexpr double kReach = 400.0;

  static TVector3 InTheShell(const TVector3& direction, Random& random) {
    return (kRadius + random.Uniform(-0.999, 0.999) * ShadowMap::kShell) *
           direction.Unit();
  }

  std::vector<TVector3> centres_;
  PointTree tree_;
  NeckBossModel boss_;
  std::unique_ptr<NeckBossCap> cap_;
};

/// Unsure for large balls; one and the same answer for small ones.
class SmallBallTest final : public BallTest {
 public:
  SmallBallTest(double radius, eAnswer answer)
      : radius_(radius), answer_(answer) {}

  Items AllItems() const override { return {0, 1, 2}; }
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override {
    // Open items are passed from ball to ball; at first all are open.
    EXPECT_TRUE(items == Items({0, 1, 2}) || items == Items{1});
    ++asked_;
    if (ball.radius < radius_) return answer_;
    open = {1};
    return eAnswer::kUnsure;
  }
  void AppendEntries(const Items& items, StretchLists& list) const override {
    for (const std::uint32_t item : items) list.Append(item, item + 1);
  }
  int Asked() const { return asked_; }

 private:
  double radius_;
  eAnswer answer_;
  mutable int asked_ = 0;
};

}  // namespace ZARN::Testing

#include "du/fast/VerticalRopeFilter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "du/geometry/Primitives.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using eCrossings = RopeDirections::eCrossings;
using Testing::Above;
using Testing::AnswerTally;
using Testing::Below;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::Random;

constexpr RopeCylinderLimits kLimits = {5880.0, 6138.0};
constexpr double kAngleTolerance = 0.0275;

const std::vector<TVector3> kRopes = {
    {5880, 0, -5}, {0, 5880, -5}, {-4000, -4300, 5}, {3000, -5050, 0}};

VerticalRopeFilter Filter(eCrossings crossings,
                          const RopeCylinderLimits& limits = kLimits) {
  return {limits, RopeDirections(kRopes, kAngleTolerance, crossings, 4096)};
}

/// What the filter replaces: the crossing, its height, and the ropes.
bool IsBlocked(const SegmentView& segment, eCrossings crossings) {
  const WaterSegment copy = segment.Copy();
  TVector3 crossing = VectorToCylinderEdge(
      copy.point, copy.direction, {}, kLimits.radius, eDiagnostics::kSilent);
  if (std::abs(crossing.Z()) > kLimits.height) return false;
  if (crossings == eCrossings::kFlattened) crossing.SetZ(0);
  return std::any_of(kRopes.begin(), kRopes.end(), [&](const TVector3& rope) {
    return kAngleTolerance > crossing.Angle(rope);
  });
}

eAnswer Judge(const VerticalRopeFilter& filter, const SegmentView& segment,
              eCrossings crossings) {
  return crossings == eCrossings::kFlattened ? filter.JudgeFlattened(segment)
                                             : filter.JudgeInSpace(segment);
}

class VerticalRopeFilterTest : public ::testing::TestWithParam<eCrossings> {
 protected:
  void Ask(const TVector3& point, const TVector3& direction, double sense) {
    const SegmentView segment = {point, direction, sense};
    tally_.Add(Judge(filter_, segment, GetParam()),
               IsBlocked(segment, GetParam()), point);
  }

  double SmallNumber() {
    return (random_.Chance(0.5) ? 1 : -1) *
           std::pow(10, random_.Uniform(-16, -1));
  }

  const VerticalRopeFilter filter_ = Filter(GetParam());
  Random random_{24};
  AnswerTally tally_;
};

INSTANTIATE_TEST_SUITE_P(Crossings, VerticalRopeFilterTest,
                         ::testing::Values(eCrossings::kFlattened,
                                           eCrossings::kInSpace),
                         [](const auto& crossings) {
                           return crossings.param == eCrossings::kFlattened
                                      ? "Flattened"
                                      : "InSpace";
                         });

TEST_P(VerticalRopeFilterTest, IsNeverWrongAndNearlyAlwaysSure) {
  for (int i = 0; i < 50000; ++i) {
    Ask(random_.Uniform(3000, 9000) * random_.Direction(), random_.Direction(),
        random_.Chance(0.5) ? 1.0 : -1.0);
  }
  tally_.Expect(0.01);
}

TEST_P(VerticalRopeFilterTest, IsNeverWrongAtARopesEdge) {
  for (int i = 0; i < 20000; ++i) {
    // Straight away from the axis, almost to an edge of a rope.
    const TVector3& rope = random_.Pick(kRopes);
    TVector3 out = Rotated(
        {1, 0, 0}, rope.Phi() + (random_.Chance(0.5) ? 1 : -1) *
                                    kAngleTolerance * (1 + SmallNumber()));
    const TVector3 point = random_.Uniform(100, 5800) * out;
    out.SetZ(random_.Uniform(-0.02, 0.02));
    Ask(point, out.Unit(), 1.0);
    Ask(point, -out.Unit(), -1.0);
  }
  tally_.Expect(0.7);
}

TEST_P(VerticalRopeFilterTest, IsNeverWrongAtTheRopesEnds) {
  for (int i = 0; i < 20000; ++i) {
    // Across the axis to a rope, so steeply that the crossing is almost at the
    // limit of the ropes' height: it rises by the direction's z along the
    // distance to the cylinder.
    const TVector3 out = Rotated({1, 0, 0}, random_.Pick(kRopes).Phi());
    const double start = random_.Uniform(500, 3000);
    const double sine =
        kLimits.height / (kLimits.radius + start) * (1 + SmallNumber());
    if (!(sine < 1)) continue;
    TVector3 direction = std::sqrt(1 - sine * sine) * out;
    direction.SetZ(random_.Chance(0.5) ? sine : -sine);
    Ask(-start * out, direction, 1.0);
    Ask(-start * out, -direction, -1.0);
  }
  tally_.ExpectNoneWrong();
  EXPECT_GT(tally_.Count(eAnswer::kClear), tally_.Count() / 5);
  // At this height the angle in space is never near that of a rope.
  EXPECT_EQ(tally_.Count(eAnswer::kBlocks) > tally_.Count() / 10,
            GetParam() == eCrossings::kFlattened);
}

TEST_P(VerticalRopeFilterTest, LeavesWhatIsNotFiniteOrHasNoLengthOpen) {
  const TVector3 point(100, 200, 300);
  const TVector3 direction(0.6, 0, 0.8);
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (const int axis : {0, 1, 2}) {
      TVector3 v = direction;
      v[axis] = bad;
      EXPECT_EQ(Judge(filter_, {point, v, 1.0}, GetParam()), eAnswer::kUnsure);
      TVector3 p = point;
      p[axis] = bad;
      if (axis == 2) continue;  // heights do not matter
      EXPECT_EQ(Judge(filter_, {p, direction, 1.0}, GetParam()),
                eAnswer::kUnsure);
    }
  }
  const TVector3 zero;
  EXPECT_EQ(Judge(filter_, {point, zero, 1.0}, GetParam()), eAnswer::kUnsure);
  EXPECT_EQ(Judge(filter_, {zero, zero, 1.0}, GetParam()), eAnswer::kUnsure);
  const TVector3 tiny(1e-170, 0, 1e-170);
  EXPECT_EQ(Judge(filter_, {point, tiny, 1.0}, GetParam()), eAnswer::kUnsure);
  const TVector3 huge(1e200, 0, 0);
  EXPECT_EQ(Judge(filter_, {point, huge, 1.0}, GetParam()), eAnswer::kUnsure);
  EXPECT_EQ(Judge(filter_, {huge, direction, 1.0}, GetParam()),
            eAnswer::kUnsure);
}

TEST_P(VerticalRopeFilterTest, JudgesNothingWithoutAReliableCylinder) {
  const TVector3 direction(1, 0, 0);
  const auto judges = [&](const RopeCylinderLimits& limits) {
    const VerticalRopeFilter filter = Filter(GetParam(), limits);
    const TVector3 point(0.5 * limits.radius, 0, 0);
    const eAnswer answer = Judge(filter, {point, direction, 1.0}, GetParam());
    EXPECT_EQ(filter.Radius2() > 0.0, answer != eAnswer::kUnsure);
    return answer != eAnswer::kUnsure;
  };
  EXPECT_TRUE(judges({1.0, 6138.0}));
  EXPECT_FALSE(judges({Below(1.0), 6138.0}));
  EXPECT_TRUE(judges({1e5, 6138.0}));
  EXPECT_FALSE(judges({Above(1e5), 6138.0}));
  EXPECT_TRUE(judges({5880.0, 1e6}));
  EXPECT_FALSE(judges({5880.0, Above(1e6)}));
  EXPECT_FALSE(judges({5880.0, 0.0}));
  for (const double bad : {0.0, -5880.0, kNaN, kInfinity, -kInfinity}) {
    EXPECT_FALSE(judges({bad, 6138.0}));
    EXPECT_FALSE(judges({5880.0, bad}));
  }
  const TVector3 point(3000, 0, 0);
  EXPECT_EQ(Judge(VerticalRopeFilter(), {point, direction, 1.0}, GetParam()),
            eAnswer::kUnsure);
}

TEST(VerticalRopeFilter, LeavesTheHeightAfterALongWayOpen) {
  // The formula treats the path as horizontal, because the cosine of such a
  // small angle is 1, and misses the rope by 3e-7; in fact the path rises by
  // 1.8 mm.
  constexpr double kNarrowRadius = 1100.0;
  const TVector3 rope(-1099.5840796, 0, 30.2465173);
  const TVector3 start(99000, 0, 0);
  const TVector3 direction(-1, 0, 1.8e-8);
  const TVector3 crossing = VectorToCylinderEdge(
      start, direction, {}, kNarrowRadius, eDiagnostics::kSilent);
  EXPECT_EQ(crossing.Z(), 0.0);
  EXPECT_GT(crossing.Angle(rope), kAngleTolerance);
  const auto filter = [&](eCrossings crossings) {
    return VerticalRopeFilter(
        {kNarrowRadius, 6138.0},
        RopeDirections({rope}, kAngleTolerance, crossings, 4096));
  };
  const SegmentView segment = {start, direction, 1.0};
  EXPECT_EQ(filter(eCrossings::kInSpace).JudgeInSpace(segment),
            eAnswer::kUnsure);
  // Without its height the crossing is sure.
  EXPECT_EQ(filter(eCrossings::kFlattened).JudgeFlattened(segment),
            eAnswer::kClear);
}

TEST(VerticalRopeFilter, KeepsTheHeightInTheAngleOnlyInSpace) {
  // Outwards at a rope's azimuth, but high above the point to which the rope's
  // angle is measured.
  const TVector3 point(3000, 0, 0);
  const TVector3 up(0.8, 0, 0.6);
  const SegmentView segment = {point, up, 1.0};
  EXPECT_EQ(Filter(eCrossings::kFlattened).JudgeFlattened(segment),
            eAnswer::kBlocks);
  EXPECT_EQ(Filter(eCrossings::kInSpace).JudgeInSpace(segment),
            eAnswer::kClear);
}

TEST(VerticalRopeFilter, GivesTheSquaresOfItsLimits) {
  const VerticalRopeFilter filter = Filter(eCrossings::kFlattened);
  EXPECT_EQ(filter.Radius2(), 5880.0 * 5880.0);
  EXPECT_EQ(filter.Height2(), 6138.0 * 6138.0);
  EXPECT_EQ(filter.Ropes().Table().Cells(), 4096);
}

}  // namespace
}  // namespace ZARN::DU

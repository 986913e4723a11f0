#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "du/geometry/PointTree.hpp"
#include "du/geometry/StretchLists.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/geometry/PointTreeLoops.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Repetitions.hpp"
#include "tests/support/SpecialNumbers.hpp"

// What a tree of points says of the quarters of a box.

namespace ZARN::DU {
namespace {

using Testing::AnswerTally;
using Testing::IsAnyNear;
using Testing::IsAnyOpenNear;
using Testing::kInfinity;
using Testing::Random;

using Points = std::vector<TVector3>;
using Items = BoxTest::Items;
using Open = BoxTest::OfQuarters<Items>;

Point AsPoint(const TVector3& v) { return {v.X(), v.Y(), v.Z()}; }

/// A box of any shape, as large as @p size.
QuarteredBox RandomBox(Random& random, const TVector3& middle, double size,
                       double margin) {
  QuarteredBox box = {AsPoint(middle), {}, margin, 0.0};
  for (Point& edge : box.edges) {
    edge = AsPoint(random.Uniform(0, size) * random.Direction());
  }
  box.edges[2] = Scaled(box.edges[2], 0.1);
  const auto& [a, b, c] = box.edges;
  box.quarterRadius = std::sqrt(std::max(Squared(a + b), Squared(a - b))) / 2 +
                      std::sqrt(Squared(c)) + margin;
  return box;
}

/// The corners of a quarter without the margin, and places between.
Points PlacesIn(const QuarteredBox& box, std::size_t quarter, Random& random) {
  const Point middle = box.BallAround(quarter).centre;
  Points places;
  for (unsigned i = 0; i < 16; ++i) {
    const auto share = [&](unsigned bit) {
      if (i >= 8) return random.Uniform(-1, 1);
      return (i >> bit & 1U) != 0 ? 1.0 : -1.0;
    };
    places.push_back(AsTVector3(middle + Scaled(box.edges[0], share(0) / 2) +
                                Scaled(box.edges[1], share(1) / 2) +
                                Scaled(box.edges[2], share(2))));
  }
  return places;
}

/// Hold the answers for the quarters of a box against its places, each moved by
/// the margin towards the point @p to, and away from it.
void ExpectSoundAnswers(const PointTree& tree, const Points& points,
                        double reach, const QuarteredBox& box,
                        const Items& items, const TVector3& to, Random& random,
                        AnswerTally& tally, Open& open) {
  const auto answers = tree.JudgeQuarters(box, items, open);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    EXPECT_EQ(answers[i] == eAnswer::kUnsure && open[i].empty(), false);
    for (const TVector3& inside : PlacesIn(box, i, random)) {
      for (const double way : {-1.0, 1.0}) {
        const TVector3 place =
            inside + way * 0.999999 * box.margin * (to - inside).Unit();
        const bool isNear = IsAnyNear(points, reach, place);
        tally.Add(answers[i], isNear, place);
        if (answers[i] != eAnswer::kUnsure) continue;
        ASSERT_EQ(IsAnyOpenNear(tree, open[i], place), isNear);
      }
    }
  }
}

TEST(PointTreeOnQuarters, SaysNothingWrongOfAnyPlaceInAQuarter) {
  Random random(95);
  for (const double reach : {60.0, 400.0, 6000.0}) {
    SCOPED_TRACE(reach);
    Points points;
    for (int i = 0; i < 200; ++i) points.push_back(6000.0 * random.Direction());
    // A line, so that several blocks are in reach at once.
    for (int i = 0; i < 200; ++i) points.emplace_back(6000.0, 0, 5.0 * i);
    const PointTree tree(points, reach);
    AnswerTally tally;
    for (int i = 0; i < Testing::Repetitions(1500, 150); ++i) {
      const double size = reach * std::pow(10, random.Uniform(-4, 0));
      const double margin = size * std::pow(10, random.Uniform(-6, -0.5));
      const TVector3& point = random.Pick(points);
      const TVector3 middle =
          point + (reach + random.Uniform(-1, 1) * size) * random.Direction();
      const QuarteredBox box = RandomBox(random, middle, size, margin);
      Open open;
      ExpectSoundAnswers(tree, points, reach, box, tree.AllItems(), point,
                         random, tally, open);
      // A box inside a quarter, with the items that are open there.
      const std::size_t quarter = random.Below(4);
      if (open[quarter].empty()) continue;
      QuarteredBox inner = box;
      inner.middle = box.BallAround(quarter).centre;
      inner.edges[0] = Scaled(box.edges[0], 0.5);
      inner.edges[1] = Scaled(box.edges[1], 0.5);
      inner.quarterRadius /= 2;
      Open openInside;
      ExpectSoundAnswers(tree, points, reach, inner, open[quarter], point,
                         random, tally, openInside);
    }
    tally.Expect(0.9);
  }
}

TEST(PointTreeOnQuarters, IsNotSureOfAQuarterWhoseCornerIsJustAcrossTheLimit) {
  Random random(96);
  for (int i = 0; i < 20000; ++i) {
    const TVector3 point = 6000.0 * random.Direction();
    // From so small that only rounding counts.
    const double size = std::pow(10, random.Uniform(-6, 2));
    const TVector3 middle =
        point + std::pow(10, random.Uniform(0, 3)) * random.Direction();
    const QuarteredBox box = RandomBox(random, middle, size, 0.0);
    const std::size_t quarter = random.Below(4);
    double nearest = std::numeric_limits<double>::infinity();
    double farthest = 0.0;
    for (const TVector3& corner : PlacesIn(box, quarter, random)) {
      nearest = std::min(nearest, (corner - point).Mag());
      farthest = std::max(farthest, (corner - point).Mag());
    }
    const auto answer = [&](double reach) {
      const PointTree tree({point}, reach);
      Open open;
      return tree.JudgeQuarters(box, tree.AllItems(), open)[quarter];
    };
    ASSERT_NE(answer(farthest), eAnswer::kBlocks) << size;
    ASSERT_NE(answer(nearest * (1 + 1e-15)), eAnswer::kClear) << size;
  }
}

/// A rhombus with an acute angle of 60 degrees, as most cells of a map, whose
/// first quarter has its middle at x. Its long diagonal lies along y.
QuarteredBox RhombusAt(double x) {
  const Point a = {5.0, std::sqrt(75.0), 0.0};
  const Point b = {-5.0, std::sqrt(75.0), 0.0};
  const Point first = Scaled(a + b, -0.5);
  return {Point{x, 0.0, 0.0} - first, {a, b, {0.0, 0.0, 0.5}}, 0.01, 9.2};
}

TEST(PointTreeOnQuarters, IsSureUnlessACornerIsNearTheLimit) {
  const PointTree tree({{0, 0, 0}}, 150.0);
  const auto judge = [&](double x) {
    Open open;
    return tree.JudgeQuarters(RhombusAt(x), tree.AllItems(), open)[0];
  };
  // The short diagonal, along x, is 10 mm long; a ball would take 8.7 mm to
  // either side.
  EXPECT_EQ(judge(144.0), eAnswer::kBlocks);
  EXPECT_EQ(judge(146.0), eAnswer::kUnsure);
  EXPECT_EQ(judge(154.0), eAnswer::kUnsure);
  EXPECT_EQ(judge(156.0), eAnswer::kClear);
}

TEST(PointTreeOnQuarters, KnowsAllWithinAHugeReach) {
  for (const double reach : {1e8, 1e9, 1e100, 1e200, kInfinity}) {
    const PointTree tree({{0, 0, 1e6}, {0, 1e7, 0}}, reach);
    Open open;
    for (const eAnswer answer :
         tree.JudgeQuarters(RhombusAt(6000.0), tree.AllItems(), open)) {
      EXPECT_EQ(answer, eAnswer::kBlocks) << reach;
    }
  }
}

TEST(PointTreeOnQuarters, LeavesAllOpenIfAPointIsTooFarOut) {
  const PointTree tree({{0, 0, 0}, {1e12, 0, 0}}, 150.0);
  Open open;
  const auto answers =
      tree.JudgeQuarters(RhombusAt(100.0), tree.AllItems(), open);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    EXPECT_EQ(answers[i], eAnswer::kUnsure);
    EXPECT_TRUE(IsAnyOpenNear(tree, open[i], {100.0, 0, 0}));
  }
}

TEST(PointTreeOnQuarters, AreClearWithoutItems) {
  Open open;
  for (const eAnswer answer :
       PointTree().JudgeQuarters(RhombusAt(0.0), {}, open)) {
    EXPECT_EQ(answer, eAnswer::kClear);
  }
}

}  // namespace
}  // namespace ZARN::DU

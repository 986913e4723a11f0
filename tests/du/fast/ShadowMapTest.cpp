#include "du/fast/ShadowMap.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "du/fast/NeckBossCap.hpp"
#include "du/geometry/OctahedralCells.hpp"
#include "du/geometry/PointGrid.hpp"
#include "du/geometry/PointList.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::AnswerTally;
using Testing::Below;
using Testing::Random;

constexpr double kRadius = 5860.0;
constexpr double kShell = ShadowMap::kShell;

std::size_t Index(eMappedTest test) { return static_cast<std::size_t>(test); }

/// All answers of one cell.
std::vector<eAnswer> AnswersOf(ShadowMap::Code code) {
  std::vector<eAnswer> answers;
  for (std::size_t i = 0; i < kMappedTests; ++i) {
    answers.push_back(ShadowMap::AnswerOf(code, static_cast<eMappedTest>(i)));
  }
  return answers;
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
    grid_ = PointGrid(centres_, kReach);
    boss_.NeckBossAngle = 0.5;
    cap_ = std::make_unique<NeckBossCap>(boss_);
  }

  ShadowMap Map(int cells, double radius = kRadius) const {
    ShadowMap::Tests tests = {};
    tests[Index(eMappedTest::kNCDAnchor)] = &grid_;
    tests[Index(eMappedTest::kNeckBoss)] = cap_.get();
    return {radius, tests, cells};
  }

  bool IsSpot(const TVector3& point) const { return grid_.HasPointNear(point); }
  const PointGrid& Spots() const { return grid_; }
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

  /// Points at limits of the spots, moved to where cells meet or a hair beside.
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
    return (kRadius + random.Uniform(-0.999, 0.999) * kShell) *
           direction.Unit();
  }

  std::vector<TVector3> centres_;
  PointGrid grid_;
  NeckBossModel boss_;
  std::unique_ptr<NeckBossCap> cap_;
};

/// Hold the answers of a map against both tests; @p codeAt gives those of a
/// point. At most @p mostUnsure of those anywhere may be unsure.
template <class CodeAt>
void ExpectSoundAnswers(const TwoTests& tests, const CodeAt& codeAt,
                        double mostUnsure) {
  const auto ask = [&](const std::vector<TVector3>& points) {
    std::array<AnswerTally, 2> tallies;
    for (const TVector3& point : points) {
      const ShadowMap::Code code = codeAt(point);
      tallies[0].Add(ShadowMap::AnswerOf(code, eMappedTest::kNCDAnchor),
                     tests.IsSpot(point), point);
      tallies[1].Add(ShadowMap::AnswerOf(code, eMappedTest::kNeckBoss),
                     tests.IsCap(point), point);
      // What is off never blocks.
      EXPECT_EQ(ShadowMap::AnswerOf(code, eMappedTest::kBellyPlate),
                eAnswer::kClear);
    }
    return tallies;
  };
  for (const AnswerTally& tally : ask(TwoTests::PointsAnywhere(20000))) {
    tally.Expect(mostUnsure);
  }
  for (const AnswerTally& tally : ask(tests.PointsAtLimits(50000))) {
    tally.ExpectNoneWrong();
  }
}

TEST(ShadowMap, IsNeverWrongOfAPointInTheShellAndMostlySure) {
  const TwoTests tests;
  const auto expect = [&](int cells, double mostUnsure) {
    const ShadowMap map = tests.Map(cells);
    ExpectSoundAnswers(
        tests, [&](const TVector3& point) { return map.At(point); },
        mostUnsure);
  };
  // The fewer cells, the longer the borders.
  expect(64, 0.35);
  expect(128, 0.15);
  expect(1024, 0.02);
}

TEST(ShadowMap, IsNeverWrongWhereACellIsFoundInSinglePrecision) {
  const TwoTests tests;
  const ShadowMap map = tests.Map(1024);
  ExpectSoundAnswers(
      tests,
      [&](const TVector3& point) {
        return map.Codes()[static_cast<std::size_t>(map.CellOf(
            static_cast<float>(point.X()), static_cast<float>(point.Y()),
            static_cast<float>(point.Z())))];
      },
      0.02);
}

TEST(ShadowMap, KnowsNothingOffTheShell) {
  const ShadowMap map = TwoTests().Map(128);
  const auto isKnown = [&](double z) {
    return map.At({0, 0, z}) != ShadowMap::kNothingKnown;
  };
  EXPECT_TRUE(isKnown(kRadius));
  for (const double sign : {-1.0, 1.0}) {
    EXPECT_TRUE(isKnown(sign * Below(kRadius + kShell)));
    EXPECT_FALSE(isKnown(sign * (kRadius + kShell)));
    EXPECT_TRUE(isKnown(sign * Above(kRadius - kShell)));
    EXPECT_FALSE(isKnown(sign * (kRadius - kShell)));
  }
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double z : {0.0, 1e-170, 1e9, 1e200, kInfinity, std::nan("")}) {
    EXPECT_FALSE(isKnown(z)) << z;
  }
  EXPECT_EQ(AnswersOf(ShadowMap::kNothingKnown),
            std::vector<eAnswer>(kMappedTests, eAnswer::kUnsure));
}

TEST(ShadowMap, TellsTheSquaresOfItsShell) {
  const ShadowMap map = TwoTests().Map(128);
  EXPECT_EQ(map.Lowest2(), (kRadius - kShell) * (kRadius - kShell));
  EXPECT_EQ(map.Highest2(), (kRadius + kShell) * (kRadius + kShell));
}

TEST(ShadowMap, KnowsNothingOfASphereThatItCannotTrust) {
  const TwoTests tests;
  const auto isKnown = [&](double radius) {
    const ShadowMap map = tests.Map(16, radius);
    const bool isMade = map.Cells() == 16;
    EXPECT_EQ(map.At({0, 0, radius}) != ShadowMap::kNothingKnown, isMade);
    EXPECT_EQ(map.Codes().size(), isMade ? 16U * 16U + 1U : 1U);
    EXPECT_EQ(map.Codes().back(), ShadowMap::kNothingKnown);
    return isMade;
  };
  EXPECT_TRUE(isKnown(10.0));
  EXPECT_FALSE(isKnown(Below(10.0)));
  EXPECT_TRUE(isKnown(1e5));
  EXPECT_FALSE(isKnown(Above(1e5)));
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double radius : {0.0, -5860.0, 1e-170, kInfinity, std::nan("")}) {
    EXPECT_FALSE(isKnown(radius));
  }
  EXPECT_EQ(ShadowMap().At({0, 0, 0}), ShadowMap::kNothingKnown);
  EXPECT_EQ(ShadowMap().Codes(),
            std::vector<ShadowMap::Code>{ShadowMap::kNothingKnown});
}

TEST(ShadowMap, TellsInHowManyOfItsCellsSomeTestIsUnsure) {
  const TwoTests tests;
  for (const int cells : {64, 128}) {
    const ShadowMap map = tests.Map(cells);
    const auto cellCount = static_cast<std::ptrdiff_t>(map.OffMap());
    const auto unsure =
        std::count_if(map.Codes().begin(), map.Codes().begin() + cellCount,
                      [](ShadowMap::Code code) {
                        const auto answers = AnswersOf(code);
                        return std::count(answers.begin(), answers.end(),
                                          eAnswer::kUnsure) > 0;
                      });
    EXPECT_EQ(map.UnsureShare(),
              static_cast<double>(unsure) / static_cast<double>(cellCount));
    EXPECT_GT(map.UnsureShare(), 0.0);
  }
  EXPECT_EQ(ShadowMap().UnsureShare(), 0.0);
}

TEST(ShadowMap, IsClearEverywhereWithoutATest) {
  const ShadowMap map(kRadius, {}, 16);
  for (std::size_t cell = 0; cell < 256; ++cell) {
    ASSERT_EQ(AnswersOf(map.Codes()[cell]),
              std::vector<eAnswer>(kMappedTests, eAnswer::kClear));
  }
}

/// Says the same of every ball until it is small.
class SmallBallTest final : public BallTest {
 public:
  SmallBallTest(double radius, eAnswer answer)
      : radius_(radius), answer_(answer) {}

  std::uint32_t CountItems() const override { return 3; }
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override {
    // What is open is handed on from ball to ball; at first all is.
    EXPECT_TRUE(open.empty());
    EXPECT_TRUE(items == Items({0, 1, 2}) || items == Items{1});
    ++asked_;
    if (ball.radius < radius_) return answer_;
    open = {1};
    return eAnswer::kUnsure;
  }
  int Asked() const { return asked_; }

 private:
  double radius_;
  eAnswer answer_;
  mutable int asked_ = 0;
};

TEST(ShadowMap, GivesEachTestItsOwnAnswer) {
  const SmallBallTest blocks(1e9, eAnswer::kBlocks);
  const SmallBallTest unsure(0, eAnswer::kBlocks);
  const SmallBallTest small(2000, eAnswer::kBlocks);
  const ShadowMap map(kRadius, {&blocks, &unsure, nullptr, &small, &unsure},
                      16);
  for (std::size_t cell = 0; cell < 256; ++cell) {
    ASSERT_EQ(AnswersOf(map.Codes()[cell]),
              (std::vector<eAnswer>{eAnswer::kBlocks, eAnswer::kUnsure,
                                    eAnswer::kClear, eAnswer::kBlocks,
                                    eAnswer::kUnsure}));
  }
  // What is known of a ball is asked of none inside.
  EXPECT_LT(blocks.Asked(), small.Asked());
  EXPECT_LT(small.Asked(), unsure.Asked());
}

/// Leaves all of its items open everywhere.
class OpenTest final : public BallTest {
 public:
  explicit OpenTest(std::uint32_t count) : count_(count) {}

  std::uint32_t CountItems() const override { return count_; }
  eAnswer Judge(const Ball& /*ball*/, const Items& items,
                Items& open) const override {
    open = items;
    return eAnswer::kUnsure;
  }

 private:
  std::uint32_t count_;
};

TEST(ShadowMap, NamesNoItemsOnceThereIsNoRoomForMore) {
  constexpr std::uint32_t kCount = 40;
  const OpenTest test(kCount);
  const ShadowMap map(kRadius, {&test}, 1024);
  const CellItems& open = map.Open(static_cast<eMappedTest>(0));
  EXPECT_LT(open.Items().size(), map.OffMap() * kCount);
  std::size_t named = 0;
  for (std::size_t cell = 0; cell < map.OffMap(); ++cell) {
    const CellItems::Range range = open.Of(cell);
    const std::uint32_t count = range.end - range.begin;
    ASSERT_TRUE(count == 0 || count == kCount);
    named += count;
  }
  EXPECT_EQ(named, open.Items().size());
  EXPECT_GT(named, map.OffMap());
}

TEST(ShadowMap, DoesNotDivideWhatIsSure) {
  const SmallBallTest blocks(1e9, eAnswer::kBlocks);
  const SmallBallTest clear(1e9, eAnswer::kClear);
  const ShadowMap map(kRadius, {&blocks, &clear}, 1024);
  EXPECT_LE(blocks.Asked(), 16);
  EXPECT_EQ(clear.Asked(), blocks.Asked());
}

TEST(CellAnswers, AreTheDigitsOfTheCode) {
  EXPECT_EQ(AnswersOf(0), std::vector<eAnswer>(kMappedTests, eAnswer::kClear));
  EXPECT_EQ(
      AnswersOf(2 * 1 + 0 * 3 + 1 * 9 + 2 * 27 + 1 * 81),
      (std::vector<eAnswer>{eAnswer::kBlocks, eAnswer::kClear, eAnswer::kUnsure,
                            eAnswer::kBlocks, eAnswer::kUnsure}));
}

TEST(ShadowMap, FindsTheCellOfEveryPointInTheShell) {
  const TwoTests tests;
  for (const int cells : {16, 128}) {
    const ShadowMap map = tests.Map(cells);
    const auto side = static_cast<std::size_t>(cells);
    const std::size_t count = side * side;
    EXPECT_EQ(map.OffMap(), count);
    EXPECT_EQ(map.At(map.OffMap()), ShadowMap::kNothingKnown);
    std::vector<bool> isFound(count, false);
    auto points = TwoTests::PointsAnywhere(20000);
    const auto atBorders = TwoTests::PointsAtBorders(points, cells);
    points.insert(points.end(), atBorders.begin(), atBorders.end());
    for (const TVector3& point : points) {
      const std::size_t cell = map.CellAt(point);
      ASSERT_LT(cell, count);
      EXPECT_EQ(cell, static_cast<std::size_t>(
                          map.CellOf(point.X(), point.Y(), point.Z())));
      EXPECT_EQ(map.At(point), map.Codes()[cell]);
      EXPECT_EQ(map.At(cell), map.Codes()[cell]);
      isFound[cell] = true;
    }
    if (cells == 16) {
      EXPECT_EQ(std::count(isFound.begin(), isFound.end(), false), 0);
    }
  }
}

TEST(ShadowMap, FindsNoCellOffTheShell) {
  const ShadowMap map = TwoTests().Map(128);
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double sign : {-1.0, 1.0}) {
    EXPECT_NE(map.CellAt({0, 0, sign * Below(kRadius + kShell)}), map.OffMap());
    EXPECT_EQ(map.CellAt({0, 0, sign * (kRadius + kShell)}), map.OffMap());
    EXPECT_NE(map.CellAt({sign * Above(kRadius - kShell), 0, 0}), map.OffMap());
    EXPECT_EQ(map.CellAt({sign * (kRadius - kShell), 0, 0}), map.OffMap());
  }
  for (const double y : {0.0, 1e-170, 1e9, 1e200, kInfinity, std::nan("")}) {
    EXPECT_EQ(map.CellAt({0, y, 0}), map.OffMap()) << y;
  }
}

TEST(ShadowMap, FindsNoCellAtAllWhereItKnowsNothing) {
  const TwoTests tests;
  for (const ShadowMap& map : {ShadowMap(), tests.Map(16, 1.0)}) {
    EXPECT_EQ(map.OffMap(), 0U);
    for (const TVector3& point :
         {TVector3(0, 0, 0), TVector3(0, 0, kRadius), TVector3(1, 0, 0)}) {
      EXPECT_EQ(map.CellAt(point), map.OffMap());
    }
    EXPECT_EQ(map.At(map.OffMap()), ShadowMap::kNothingKnown);
    EXPECT_TRUE(map.Open(eMappedTest::kNCDAnchor).Items().empty());
  }
}

/// As a batch finds it.
std::size_t CellInSinglePrecision(const ShadowMap& map, const TVector3& point) {
  return static_cast<std::size_t>(map.CellOf(static_cast<float>(point.X()),
                                             static_cast<float>(point.Y()),
                                             static_cast<float>(point.Z())));
}

/// Expect a map, and where it is unsure the items that are open in the cell, to
/// decide as the test itself; with the cell found in both precisions.
///
/// @return how often the items were asked
int ExpectOpenItemsToDecide(const PointGrid& grid, const ShadowMap& map,
                            const std::vector<TVector3>& points) {
  constexpr auto kTest = eMappedTest::kNCDAnchor;
  const CellItems& open = map.Open(kTest);
  const PointList list = grid.ListOf(open.Items());
  int asked = 0;
  int wrong = 0;
  for (const TVector3& point : points) {
    const bool expected = grid.HasPointNear(point);
    for (const std::size_t cell :
         {map.CellAt(point), CellInSinglePrecision(map, point)}) {
      bool isBlocked = false;
      const eAnswer answer = ShadowMap::AnswerOf(map.At(cell), kTest);
      if (answer == eAnswer::kUnsure) {
        ++asked;
        const CellItems::Range range = open.Of(cell);
        EXPECT_LT(range.begin, range.end);
        if (range.end > list.Size()) {
          ADD_FAILURE() << "a list up to " << range.end << " of "
                        << list.Size();
          continue;
        }
        isBlocked = list.HasNear(point, range.begin, range.end);
      } else {
        isBlocked = answer == eAnswer::kBlocks;
      }
      wrong += isBlocked != expected ? 1 : 0;
    }
  }
  EXPECT_EQ(wrong, 0) << "of " << 2 * points.size();
  return asked;
}

TEST(ShadowMap, KeepsOpenInEachUnsureCellWhatDecidesThere) {
  const TwoTests tests;
  const auto atLimits = tests.PointsAtLimits(50000);
  for (const int cells : {16, 128, 1024}) {
    SCOPED_TRACE(cells);
    const ShadowMap map = tests.Map(cells);
    const auto atBorders = TwoTests::PointsAtBorders(atLimits, cells);
    for (const auto& points :
         {TwoTests::PointsAnywhere(20000), atLimits, atBorders}) {
      EXPECT_GT(ExpectOpenItemsToDecide(tests.Spots(), map, points), 100);
    }
  }
}

TEST(ShadowMap, KeepsOpenWhatReachesOnlyTheCornerOfACell) {
  // Above the sphere and below, of corners that in single precision belong to
  // this cell or another.
  Random random(34);
  constexpr double kReach = 50.0;
  for (const int cells : {64, 256, 1024}) {
    SCOPED_TRACE(cells);
    const double step = 2.0 / cells;
    std::vector<TVector3> spots;
    std::vector<TVector3> places;
    for (int i = 0; i < 1000; ++i) {
      const double left = random.Whole(0, cells - 1) * step - 1;
      const double top = random.Whole(0, cells - 1) * step - 1;
      const auto at = [&](double u, double v) {
        return AsTVector3(DirectionAt(left + u * step, top + v * step));
      };
      const TVector3 middle =
          kRadius / 4 * (at(0, 0) + at(0, 1) + at(1, 0) + at(1, 1));
      const double inside = std::pow(10, random.Uniform(-12, -3));
      const auto corner = [&] {
        return random.Chance(0.5) ? inside : 1 - inside;
      };
      const double off = random.Chance(0.5) ? 0.999 * kShell : -0.999 * kShell;
      const TVector3 place = (kRadius + off) * at(corner(), corner());
      places.push_back(place);
      // Seen from the middle of the cell the spot lies behind the place: of the
      // whole cell its reach holds little else.
      spots.push_back(place + kReach * (1 - 1e-9) * (place - middle).Unit());
    }
    const PointGrid grid(spots, kReach);
    ShadowMap::Tests tests = {};
    tests[Index(eMappedTest::kNCDAnchor)] = &grid;
    const ShadowMap map(kRadius, tests, cells);
    EXPECT_GT(ExpectOpenItemsToDecide(grid, map, places), 1000);
  }
}

TEST(ShadowMap, KeepsOpenFewOfManyItemsInASmallCell) {
  // Of points one behind the other.
  std::vector<TVector3> line;
  for (int i = -500; i <= 500; ++i) {
    line.emplace_back(kRadius * std::cos(0.0008 * i), 0,
                      kRadius * std::sin(0.0008 * i));
  }
  const PointGrid grid(line, 162.0);
  ShadowMap::Tests tests = {};
  tests[Index(eMappedTest::kHoldDownSurface)] = &grid;
  const ShadowMap map(kRadius, tests);
  const CellItems& open = map.Open(eMappedTest::kHoldDownSurface);
  int unsure = 0;
  for (std::size_t cell = 0; cell < map.OffMap(); ++cell) {
    if (ShadowMap::AnswerOf(map.At(cell), eMappedTest::kHoldDownSurface) !=
        eAnswer::kUnsure) {
      continue;
    }
    ++unsure;
    const CellItems::Range range = open.Of(cell);
    EXPECT_LT(range.begin, range.end);
    EXPECT_LE(range.end - range.begin, 20U);
  }
  EXPECT_GT(unsure, 100);
  EXPECT_LE(open.Items().size(), 15U * static_cast<unsigned>(unsure));
}

TEST(ShadowMap, KeepsOpenTheItemsOfEachTestApart) {
  const SmallBallTest unsure(0, eAnswer::kBlocks);
  const SmallBallTest blocks(1e9, eAnswer::kBlocks);
  const ShadowMap map(kRadius, {&blocks, nullptr, &unsure}, 16);
  EXPECT_TRUE(map.Open(eMappedTest::kHoldDownSurface).Items().empty());
  EXPECT_TRUE(map.Open(eMappedTest::kBellyPlate).Items().empty());
  const CellItems& open = map.Open(eMappedTest::kNCDAnchor);
  EXPECT_EQ(open.Items(), BallTest::Items(256, 1U));
  std::vector<bool> isUsed(256, false);
  for (std::size_t cell = 0; cell < 256; ++cell) {
    const CellItems::Range range = open.Of(cell);
    ASSERT_EQ(range.end - range.begin, 1U);
    ASSERT_LT(range.begin, 256U);
    EXPECT_FALSE(isUsed[range.begin]);
    isUsed[range.begin] = true;
  }
}

}  // namespace
}  // namespace ZARN::DU

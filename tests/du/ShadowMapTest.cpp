#include "du/ShadowMap.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "du/NeckBoss.hpp"
#include "du/geometry/PointGrid.hpp"
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

}  // namespace
}  // namespace ZARN::DU

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "du/fast/PreparedBellyPlates.hpp"
#include "du/hardware/BellyPlates.hpp"
#include "tests/du/Balls.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/RootWarnings.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::AnswerTally;
using Testing::Below;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::OneCrossing;
using Testing::Random;
using Testing::RootWarnings;
using Testing::SegmentsOf;

/// Plates with a tolerance, as model for the formula and prepared.
struct Plates {
  Plates(const std::vector<TVector3>& centres, double halfHeight,
         double tolerance_, double outerAVRadius_ = 5860.0)
      : tolerance(tolerance_), outerAVRadius(outerAVRadius_) {
    model.BellyPlatePositions = centres;
    model.BellyPlateHalfHeight = halfHeight;
    prepared = PreparedBellyPlates(model, tolerance, outerAVRadius);
  }

  bool IsBlocked(const TVector3& point) const {
    return CheckForBellyPlateShadowing(model, tolerance, outerAVRadius,
                                       SegmentsOf(OneCrossing(point)),
                                       eDiagnostics::kSilent);
  }

  BellyPlateModel model;
  double tolerance;
  double outerAVRadius;
  PreparedBellyPlates prepared;
};

/// Expect the two to agree on some points, and return how many are blocked.
int ExpectSame(const Plates& plates, const std::vector<TVector3>& points) {
  int blocked = 0;
  for (const TVector3& point : points) {
    const bool expected = plates.IsBlocked(point);
    blocked += expected ? 1 : 0;
    EXPECT_EQ(plates.prepared.HasPlateAt(point), expected)
        << ::testing::PrintToString(point) << ", plates at "
        << ::testing::PrintToString(plates.model.BellyPlatePositions);
  }
  return blocked;
}

std::vector<TVector3> CentresAround(Random& random, double highest) {
  std::vector<TVector3> centres;
  for (int i = random.Whole(1, 8); i > 0; --i) {
    TVector3 centre(5860, 0, random.Uniform(-highest, highest));
    centre.RotateZ(random.Uniform(-4, 4));
    centres.push_back(centre);
  }
  return centres;
}

/// Points on the vessel, and at the edges of plates down to the last bits.
std::vector<TVector3> PointsAt(const Plates& plates, Random& random) {
  std::vector<TVector3> points;
  const auto small = [&] {
    return (random.Chance(0.5) ? 1 : -1) * std::pow(10, random.Uniform(-16, 0));
  };
  const double band = plates.model.BellyPlateHalfHeight + plates.tolerance;
  for (const TVector3& centre : plates.model.BellyPlatePositions) {
    points.push_back(centre);
    points.push_back(5860.0 * random.Direction());
    TVector3 point = 5860.0 * random.Direction();
    point.SetZ(random.Uniform(-band, band));
    points.push_back(point);
    for (const double z : {band, Below(band), Above(band), -band, Above(-band),
                           Below(-band), band * (1 + small())}) {
      point = centre;
      point.SetZ(z);
      points.push_back(point);
    }
    // The last bits at an edge of the formula: where its verdict changes
    // between the centre and the outside.
    const auto at = [&](double phi) {
      TVector3 turned = centre;
      turned.SetZ(0.3 * band);
      turned.RotateZ(phi);
      return turned;
    };
    for (const double end : {1.5, -1.5}) {
      if (!plates.IsBlocked(at(0)) || plates.IsBlocked(at(end))) continue;
      const auto change = Testing::FindChange(
          0.0, end, [&](double phi) { return plates.IsBlocked(at(phi)); });
      points.push_back(at(change.before));
      points.push_back(at(change.after));
      points.push_back(at(change.after * (1 + small())));
    }
  }
  return points;
}

TEST(PreparedBellyPlates, GiveTheFormulasVerdictToTheLastBit) {
  Random random(27);
  int blocked = 0;
  int all = 0;
  for (int i = 0; i < 200; ++i) {
    const Plates plates(CentresAround(random, i % 2 == 0 ? 50 : 500),
                        random.Uniform(50, 1200), random.Uniform(-40, 400));
    const auto points = PointsAt(plates, random);
    all += static_cast<int>(points.size());
    blocked += ExpectSame(plates, points);
  }
  EXPECT_GT(blocked, all / 5);
  EXPECT_LT(blocked, all * 4 / 5);
}

TEST(PreparedBellyPlates, GiveTheFormulasVerdictForEveryToleranceAndRadius) {
  Random random(28);
  for (const double tolerance : {0.0, -150.0, -600.0, -1e9, 1e-170, 2000.0, 2e4,
                                 1e9, 1e300, kInfinity, -kInfinity, kNaN}) {
    for (const double radius :
         {5860.0, 1.0, 1e-170, 0.0, -5860.0, 1e300, kInfinity, kNaN}) {
      const Plates plates(CentresAround(random, 300), 600.0, tolerance, radius);
      SCOPED_TRACE(tolerance);
      SCOPED_TRACE(radius);
      ExpectSame(plates, PointsAt(plates, random));
    }
  }
}

TEST(PreparedBellyPlates, GiveTheFormulasVerdictForPlatesAndPointsOfEverySize) {
  const std::vector<TVector3> places = {
      {5860, 0, 0},      {0, 0, 0},           {0, 0, 600},
      {0, 0, -600},      {0, 0, 100},         {0, 0, 5860},
      {1e-170, 0, 0},    {1e-100, 1e-100, 0}, {1e-31, 0, 0},
      {0, 1e-30, 0},     {1e30, 0, 1},        {1e31, 0, 1},
      {1e100, 1e100, 0}, {1e200, 0, 0},       {0, -1e155, 1},
      {kNaN, 0, 0},      {0, kNaN, 0},        {0, 0, kNaN},
      {kInfinity, 0, 0}, {0, -kInfinity, 1},  {0, 0, kInfinity},
      {-5860, 1e-160, 0}};
  for (const double halfHeight : {600.0, 0.0, -600.0, 1e-170, 1e200, kNaN}) {
    SCOPED_TRACE(halfHeight);
    for (const TVector3& centre : places) {
      ExpectSame(Plates({centre}, halfHeight, 150.0), places);
    }
  }
}

TEST(PreparedBellyPlates, JudgeSomePlatesAsIfThereWereNoOthers) {
  Random random(82);
  int blocked = 0;
  int blockedByOthers = 0;
  for (int i = 0; i < 200; ++i) {
    const Plates plates(CentresAround(random, i % 2 == 0 ? 50 : 500),
                        random.Uniform(50, 1200), random.Uniform(-40, 400));
    const auto points = PointsAt(plates, random);
    const auto& centres = plates.model.BellyPlatePositions;
    for (int k = 0; k < 3; ++k) {
      const std::size_t begin = random.Below(centres.size());
      const std::size_t count = random.Below(centres.size() - begin + 1);
      const auto first = centres.begin() + static_cast<std::ptrdiff_t>(begin);
      const Plates some({first, first + static_cast<std::ptrdiff_t>(count)},
                        plates.model.BellyPlateHalfHeight, plates.tolerance);
      const Stretch entries(static_cast<std::uint32_t>(begin),
                            static_cast<std::uint32_t>(count));
      for (const TVector3& point : points) {
        const bool expected = some.IsBlocked(point);
        EXPECT_EQ(some.prepared.HasPlateAt(point), expected);
        EXPECT_EQ(plates.prepared.HasPlateAt(point, entries), expected)
            << ::testing::PrintToString(point) << ", plates from " << begin
            << " to before " << begin + count;
        blocked += expected ? 1 : 0;
        blockedByOthers += !expected && plates.IsBlocked(point) ? 1 : 0;
      }
    }
  }
  EXPECT_GT(blocked, 1000);
  EXPECT_GT(blockedByOthers, 1000);
}

TEST(PreparedBellyPlates, BlockNothingWithoutAPlate) {
  EXPECT_FALSE(PreparedBellyPlates().HasPlateAt({5860, 0, 0}));
  EXPECT_TRUE(PreparedBellyPlates().AllItems().empty());
  const Plates none({}, 600.0, 150.0);
  EXPECT_EQ(ExpectSame(none, {{5860, 0, 0}, {0, 0, 0}}), 0);
  const Plates one({{5860, 0, 0}}, 600.0, 150.0);
  EXPECT_FALSE(one.prepared.HasPlateAt({5860, 0, 0}, {0, 0}));
  BallTest::Items open;
  EXPECT_EQ(none.prepared.Judge({{5860, 0, 0}, 1}, {}, open), eAnswer::kClear);
}

TEST(PreparedBellyPlatesAsABallTest, GiveNoWrongAnswerForAnyPointOfABall) {
  Random random(29);
  AnswerTally anywhere;
  AnswerTally atTheEdges;
  for (int i = 0; i < 500; ++i) {
    const Plates plates(CentresAround(random, 200), 600.0, 150.0);
    EXPECT_EQ(plates.prepared.AllItems().size(),
              plates.model.BellyPlatePositions.size());
    const auto ask = [&](const TVector3& middle, double radius,
                         AnswerTally& tally) {
      AskAboutBall(
          plates.prepared, {{middle.X(), middle.Y(), middle.Z()}, radius},
          random, {}, [&](const TVector3& p) { return plates.IsBlocked(p); },
          tally);
    };
    const double radius = std::pow(10, random.Uniform(-4, 2.5));
    ask(5860.0 * random.Direction(), radius, anywhere);
    // Balls that just touch an edge of the height band or of a plate.
    TVector3 middle = random.Pick(plates.model.BellyPlatePositions);
    const double sign = random.Chance(0.5) ? 1 : -1;
    middle.SetZ(sign * (750 + (random.Chance(0.5) ? radius : -radius) *
                                  (1 + random.Uniform(-1e-3, 1e-3))));
    ask(middle, radius, atTheEdges);
    middle = random.Pick(plates.model.BellyPlatePositions);
    const auto at = [&](double phi) {
      TVector3 turned = middle;
      turned.RotateZ(phi);
      return turned;
    };
    const auto edge = Testing::FindChange(
        0.0, sign, [&](double phi) { return plates.IsBlocked(at(phi)); });
    const double touching =
        std::asin(radius / 5860.0) * (1 + random.Uniform(-1e-3, 1e-3));
    ask(at(edge.after + (random.Chance(0.5) ? touching : -touching)), radius,
        atTheEdges);
  }
  anywhere.Expect(0.3);
  atTheEdges.Expect(0.8);
}

TEST(PreparedBellyPlatesAsABallTest, AreSureUnlessTheBallMeetsAnEdge) {
  const Plates plates({{5860, 0, 0}, {0, 5860, 0}}, 600.0, 150.0);
  const auto judge = [&](double z, double radius) {
    BallTest::Items open;
    return plates.prepared.Judge({{5860, 0, z}, radius}, {0, 1}, open);
  };
  EXPECT_EQ(judge(700, 49), eAnswer::kBlocks);
  EXPECT_EQ(judge(700, 51), eAnswer::kUnsure);
  EXPECT_EQ(judge(-800, 51), eAnswer::kUnsure);
  EXPECT_EQ(judge(-800, 49), eAnswer::kClear);
  BallTest::Items open;
  EXPECT_EQ(plates.prepared.Judge({{4144, -4144, 0}, 100}, {0, 1}, open),
            eAnswer::kClear);
  // Only a plate that the ball meets stays open.
  EXPECT_EQ(plates.prepared.Judge({{0, 5860, 700}, 100}, {0, 1}, open),
            eAnswer::kUnsure);
  EXPECT_EQ(open, BallTest::Items{1});
}

TEST(PreparedBellyPlatesAsABallTest, AreClearWithABandThatIsNotANumber) {
  const Plates plates({{5860, 0, 0}}, 600.0, kNaN);
  BallTest::Items open;
  EXPECT_EQ(plates.prepared.Judge({{5860, 0, 0}, 1}, {0}, open),
            eAnswer::kClear);
}

TEST(WarnsOfZeroVectors, PredictsTheWarningsOfRoot) {
  int warned = 0;
  const std::vector<TVector3> places = {
      {5860, 0, 0},   {0, 0, 0},      {0, 0, 600},      {0, 0, -600},
      {0, 0, 601},    {1e-170, 0, 0}, {1e-170, 0, 600}, {0, 1e-100, -600},
      {5860, 0, 600}, {0, kNaN, 0}};
  for (const double halfHeight : {600.0, -600.0, 0.0, 1e-170}) {
    for (const TVector3& centre : places) {
      // Inside a list, so that its position does not matter.
      const Plates plates({{0, 5860, 0}, centre, {5860, 0, 1}}, halfHeight,
                          900.0);
      const RootWarnings warnings;
      CheckForBellyPlateShadowing(plates.model, 900.0, 5860.0,
                                  SegmentsOf(OneCrossing({0, -5860, 10})));
      EXPECT_EQ(WarnsOfZeroVectors(plates.model),
                !RootWarnings::Messages().empty())
          << ::testing::PrintToString(centre) << " " << halfHeight;
      warned += RootWarnings::Messages().empty() ? 0 : 1;
    }
  }
  EXPECT_GT(warned, 5);
  EXPECT_FALSE(WarnsOfZeroVectors({}));
}

TEST(PreparedBellyPlates, NeverLetRootWarn) {
  const RootWarnings warnings;
  const Plates plates({{0, 0, 0}, {0, 0, 600}, {0, 0, -600}}, 600.0, 150.0);
  plates.prepared.HasPlateAt({5860, 0, 0});
  plates.IsBlocked({5860, 0, 0});
  EXPECT_TRUE(RootWarnings::Messages().empty());
}

}  // namespace
}  // namespace ZARN::DU

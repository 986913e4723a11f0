#include "du/hardware/AVHDRopes.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "db/DBErrors.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "tests/du/PrintVectors.hpp"
#include "tests/du/RootWarnings.hpp"
#include "tests/du/UsualVessel.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::ExpectSamePoints;
using Testing::kOuterAVRadius;
using Testing::RootWarnings;
using Testing::Tables;

using Points = std::vector<TVector3>;

constexpr double kAVNeckRadius = 700.0;

/// A template rope that goes up at azimuth 8 degrees and down at 154.
Points Template() {
  const auto pointAt = [](double perp, double phiDegrees, double z) {
    return WithPhi({perp, 0, z}, phiDegrees / kDegreesPerRadian);
  };
  return {pointAt(5880, 8, -6138), pointAt(5880, 8, 5),
          pointAt(3000, 8, 5022),  pointAt(3000, 154, 5022),
          pointAt(5880, 154, 5),   pointAt(5880, 154, -6138)};
}

Tables RopeTables(const Points& points, const std::vector<double>& rolls) {
  Tables tables;
  tables.Set("GEO", "hold_down_ropes", "solid_definition", "hold_down_rope");
  tables.Set("GEO", "hold_down_ropes", "locations", "rolls");
  tables.Set("SOLID", "hold_down_rope", "r_rope", 12.0);
  tables.SetPositions("SOLID", "hold_down_rope", points, "rope_");
  tables.Set("GEO_LOCATIONS", "rolls", "roll", rolls);
  return tables;
}

AVHDRopeModel Load(const Points& points, const std::vector<double>& rolls,
                   double avNeckRadius = kAVNeckRadius) {
  RopeTables(points, rolls).Load();
  AVHDRopeModel model;
  LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, avNeckRadius);
  return model;
}

/// The surface points of one rope, constructed step by step, and counts of
/// special cases.
struct SurfaceConstruction {
  SurfaceConstruction(const Points& p, double roll, double avNeckRadius) {
    TVector3 t1 = Rotated(p[1], roll);
    TVector3 t4 = Rotated(p[4], roll);
    const TVector3 t2 = Rotated(p[2], roll);
    const TVector3 t3 = Rotated(p[3], roll);
    const TVector3 t2Opposite = Rotated(t2, kPi);
    const TVector3 t3Opposite = Rotated(t3, kPi);
    t1.SetMag(kOuterAVRadius);
    t4.SetMag(kOuterAVRadius);
    const double l12 = (t2 - t1).Mag();
    const double l43 = (t3 - t4).Mag();
    m = t1 + (0.5 * (t4 - t1).Mag()) * (t4 - t1).Unit();
    m.SetMag(avNeckRadius + 250.0);
    const double lm2 = (m - t2).Mag();
    const double lm3 = (m - t3).Mag();
    const double h = t2.Angle(t3Opposite);
    TVector3 v = t2;
    TVector3 w = t3;
    const TVector3 zHat(0, 0, 1.0);
    const auto append = [&](const TVector3& q) {
      points.push_back(VectorToSphereEdge(q, zHat, kOuterAVRadius, false));
    };
    double t = 0.1;
    for (int pass = 0; pass < 500; ++pass, t += 2.0) {
      const double f = t / 1000.0;
      const double phi = 6.283185307179586 * f;
      v.SetPhi(phi);
      w.SetPhi(phi);
      if (v.Angle(t2) < h && v.Angle(t3Opposite) < h) append(v);
      if (w.Angle(t3) < h && w.Angle(t2Opposite) < h) append(w);
      walkersAtTheLimit += v.Angle(t2) == h && v.Angle(t3Opposite) < h;
      walkersAtTheLimit += v.Angle(t2) < h && v.Angle(t3Opposite) == h;
      walkersAtTheLimit += w.Angle(t3) == h && w.Angle(t2Opposite) < h;
      walkersAtTheLimit += w.Angle(t3) < h && w.Angle(t2Opposite) == h;
      append(t1 + (l12 * f) * (t2 - t1).Unit());
      append(t4 + (l43 * f) * (t3 - t4).Unit());
      append(t2 + (lm2 * f) * (m - t2).Unit());
      append(t3 + (lm3 * f) * (m - t3).Unit());
    }
    lastT = t - 2.0;
  }

  Points points;
  TVector3 m;
  int walkersAtTheLimit = 0;
  double lastT;
};

TEST(LoadAVHDRopeInfo, ConvertsRollsFromDegreesToRadians) {
  const AVHDRopeModel model = Load(Template(), {0, 90, 180});
  EXPECT_EQ(model.AVHDRopeRolls,
            (std::vector<double>{0.0, 90.0 / 57.29577951308232,
                                 180.0 / 57.29577951308232}));
  EXPECT_EQ(model.AVHDRopeRolls[1], kHalfPi);
  EXPECT_EQ(model.AVHDRopeRolls[2], kPi);
}

TEST(LoadAVHDRopeInfo, DividesRollsByTheLiteralDegreesPerRadian) {
  // Many of these rolls differ in the last digit from roll * (pi / 180).
  std::vector<double> degrees;
  std::vector<double> expected;
  for (int i = 0; i < 40; ++i) {
    degrees.push_back(9.0 * i + 0.1);
    expected.push_back(degrees.back() / 57.29577951308232);
  }
  EXPECT_EQ(Load(Template(), degrees).AVHDRopeRolls, expected);
}

TEST(LoadAVHDRopeInfo, RotatesTheTemplateByEveryRoll) {
  const Points p = Template();
  const AVHDRopeModel model = Load(p, {0, 90, 180});
  EXPECT_EQ(model.AVHDRopePositions, p);
  const Points expected = {p[1],
                           p[4],
                           Rotated(p[1], kHalfPi),
                           Rotated(p[4], kHalfPi),
                           Rotated(p[1], kPi),
                           Rotated(p[4], kPi)};
  EXPECT_EQ(model.AVHDRopeEndPoints, expected);
}

TEST(LoadAVHDRopeInfo, KeepsTheEndPointsOfARopeThatIsNotRotated) {
  const Points p = Template();
  const AVHDRopeModel model = Load(p, {0});
  EXPECT_EQ(model.AVHDRopeEndPoints, (Points{p[1], p[4]}));
  EXPECT_NE(model.AVHDRopeEndPoints[0].Mag(), kOuterAVRadius);
}

TEST(LoadAVHDRopeInfo, BuildsAllListsOfEveryRope) {
  for (const std::size_t count : {1U, 2U, 5U}) {
    const AVHDRopeModel model =
        Load(Template(), std::vector<double>(count, 36.0));
    EXPECT_EQ(model.AVHDRopeEndPoints.size(), 2 * count);
    EXPECT_EQ(model.AVHDRopeLegPoints.size(), 198 * count);
    EXPECT_GE(model.AVHDRopeSurfacePoints.size(), 2000 * count);
  }
}

TEST(LoadAVHDRopeInfo, ReadsTheRadiusAndTheWholeTemplate) {
  Points p = Template();
  p.emplace_back(1, 2, 3);  // beyond the six points that are used
  const AVHDRopeModel model = Load(p, {0});
  EXPECT_EQ(model.AVHDRopeRadius, 12.0);
  EXPECT_EQ(model.AVHDRopePositions, p);
}

TEST(LoadAVHDRopeInfo, FollowsTheNamesInTheRopesEntry) {
  RopeTables(Template(), {0})
      .Set("GEO", "hold_down_ropes", "solid_definition", "other_rope")
      .Set("GEO", "hold_down_ropes", "locations", "other_rolls")
      .Set("SOLID", "other_rope", "r_rope", 13.0)
      .SetPositions("SOLID", "other_rope", Template(), "rope_")
      .Set("GEO_LOCATIONS", "other_rolls", "roll", std::vector<double>{18, 36})
      .Load();
  AVHDRopeModel model;
  LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius);
  EXPECT_EQ(model.AVHDRopeRadius, 13.0);
  EXPECT_EQ(model.AVHDRopeRolls.size(), 2U);
}

TEST(LoadAVHDRopeInfo, SamplesTheSurfaceInTheOrderOfRollsAndFractions) {
  const Points p = Template();
  const AVHDRopeModel model = Load(p, {0, 36, 251.5});
  Points expected;
  for (const double roll : model.AVHDRopeRolls) {
    const Points rope = SurfaceConstruction(p, roll, kAVNeckRadius).points;
    EXPECT_GT(rope.size(), 2000U);  // some points are on the arcs
    expected.insert(expected.end(), rope.begin(), rope.end());
  }
  ExpectSamePoints(model.AVHDRopeSurfacePoints, expected);
}

TEST(LoadAVHDRopeInfo, PutsTheSurfacePointsOnTheVessel) {
  const AVHDRopeModel model = Load(Template(), {0, 36});
  for (const TVector3& point : model.AVHDRopeSurfacePoints) {
    ASSERT_NEAR(point.Mag(), kOuterAVRadius, 1e-8);
    ASSERT_GT(point.Z(), 0.0);
  }
}

/// A template whose T2 and T3' are next to each other, so that no walker is
/// between them and only the stretches are sampled.
Points TemplateWithoutArcs() {
  Points p = Template();
  p[3] = Rotated(p[2], kPi);
  return p;
}

TEST(LoadAVHDRopeInfo, SamplesFourStretchesFiveHundredTimes) {
  const Points p = TemplateWithoutArcs();
  const AVHDRopeModel model = Load(p, {0});
  ASSERT_EQ(model.AVHDRopeSurfacePoints.size(), 2000U);
  const TVector3 t1 = WithMag(p[1], kOuterAVRadius);
  const TVector3 t4 = WithMag(p[4], kOuterAVRadius);
  const TVector3 m =
      WithMag(t1 + (0.5 * (t4 - t1).Mag()) * (t4 - t1).Unit(), 950.0);
  const auto sample = [](const TVector3& from, const TVector3& to, double f) {
    const TVector3 q = from + ((to - from).Mag() * f) * (to - from).Unit();
    return VectorToSphereEdge(q, {0, 0, 1.0}, kOuterAVRadius, false);
  };
  const auto samplesAt = [&](double f) {
    return Points{sample(t1, p[2], f), sample(t4, p[3], f), sample(p[2], m, f),
                  sample(p[3], m, f)};
  };
  const Points& points = model.AVHDRopeSurfacePoints;
  EXPECT_EQ(Points(points.begin(), points.begin() + 4),
            samplesAt(0.1 / 1000.0));
  EXPECT_EQ(Points(points.begin() + 4, points.begin() + 8),
            samplesAt((0.1 + 2.0) / 1000.0));
  const double lastT = SurfaceConstruction(p, 0, kAVNeckRadius).lastT;
  EXPECT_NEAR(lastT, 998.1, 1e-9);
  EXPECT_EQ(Points(points.end() - 4, points.end()), samplesAt(lastT / 1000.0));
}

TEST(LoadAVHDRopeInfo, NeverSamplesTheEndsOfAStretch) {
  const Points p = TemplateWithoutArcs();
  const AVHDRopeModel model = Load(p, {0});
  const TVector3 t1 = WithMag(p[1], kOuterAVRadius);
  const double length = (p[2] - t1).Mag();
  const auto horizontalWay = [&](std::size_t i) {
    return (Flattened(model.AVHDRopeSurfacePoints[i]) - Flattened(t1)).Mag();
  };
  const double wholeWay = (Flattened(p[2]) - Flattened(t1)).Mag();
  EXPECT_NEAR(horizontalWay(0), 0.0001 * wholeWay, 1e-9 * length);
  EXPECT_NEAR(horizontalWay(1996), 0.9981 * wholeWay, 1e-9 * length);
}

TEST(LoadAVHDRopeInfo, SkipsAWalkerExactlyAtTheHalfWidthOfTheArc) {
  // A walker that returns to T2 is as far from T3' as T2 itself, which is the
  // half width; likewise at T3'. So the templates are rotated to the azimuths
  // of the walkers.
  int walkersAtTheLimit = 0;
  double t = 0.1;
  for (int pass = 0; pass < 500; pass += 25, t += 50.0) {
    Points p = Template();
    p[2] = WithPhi(p[2], kTwoPi * (t / 1000.0));
    p[3] = WithPhi(p[3], kTwoPi * ((t + 70.0) / 1000.0) + kPi);
    const SurfaceConstruction expected(p, 0.0, kAVNeckRadius);
    walkersAtTheLimit += expected.walkersAtTheLimit;
    ExpectSamePoints(Load(p, {0}).AVHDRopeSurfacePoints, expected.points);
  }
  EXPECT_GT(walkersAtTheLimit, 20);
}

TEST(LoadAVHDRopeInfo, PutsTheNeckPoint250OutsideTheNeck) {
  const Points p = TemplateWithoutArcs();
  const SurfaceConstruction expected(p, 0.0, 0.0);
  EXPECT_NEAR(expected.m.Mag(), 250.0, 1e-12);
  const AVHDRopeModel model = Load(p, {0}, 0.0);
  ExpectSamePoints(model.AVHDRopeSurfacePoints, expected.points);
  // The third stretch ends there.
  const TVector3 last = Flattened(model.AVHDRopeSurfacePoints[1998]);
  const TVector3 towardsNeck =
      Flattened(p[2]) + 0.9981 * (Flattened(expected.m) - Flattened(p[2]));
  EXPECT_NEAR((last - towardsNeck).Mag(), 0.0, 1e-8);
}

/// The leg points of one rope with steps in the given precision.
template <class Float>
Points LegPoints(const Points& p, double roll) {
  const TVector3 a0 = Rotated(p[0], roll);
  const TVector3 a1 = Rotated(p[1], roll);
  const TVector3 a4 = Rotated(p[4], roll);
  const TVector3 a5 = Rotated(p[5], roll);
  const Float s1 = static_cast<Float>((a0 - a1).Mag()) / Float{100};
  const Float s2 = static_cast<Float>((a5 - a4).Mag()) / Float{100};
  const TVector3 u1 = (a0 - a1).Unit();
  const TVector3 u2 = (a5 - a4).Unit();
  Points points;
  for (int k = 1; k < 100; ++k) {
    const Float way1 = s1 * static_cast<Float>(k);
    const Float way2 = s2 * static_cast<Float>(k);
    points.push_back(a1 + static_cast<double>(way1) * u1);
    points.push_back(a4 + static_cast<double>(way2) * u2);
  }
  return points;
}

TEST(LoadAVHDRopeInfo, StepsAlongTheLegsInSinglePrecision) {
  const Points p = Template();
  const AVHDRopeModel model = Load(p, {0, 36});
  Points expected = LegPoints<float>(p, 0.0);
  const Points second = LegPoints<float>(p, model.AVHDRopeRolls[1]);
  expected.insert(expected.end(), second.begin(), second.end());
  ExpectSamePoints(model.AVHDRopeLegPoints, expected);

  const Points inDouble = LegPoints<double>(p, 0.0);
  int different = 0;
  for (std::size_t i = 0; i < inDouble.size(); ++i) {
    EXPECT_LT((model.AVHDRopeLegPoints[i] - inDouble[i]).Mag(), 1e-3);
    different += model.AVHDRopeLegPoints[i] != inDouble[i];
  }
  EXPECT_GT(different, 190);
}

TEST(LoadAVHDRopeInfo, MultipliesTheStepsInSinglePrecisionToo) {
  // The leg is 6143 mm long: the step is not a whole number, so the product is
  // rounded if it is computed in single precision.
  const Points p = Template();
  const AVHDRopeModel model = Load(p, {0});
  const TVector3 leg = p[0] - p[1];
  const float step = static_cast<float>(leg.Mag()) / 100.0F;
  int different = 0;
  for (int k = 1; k < 100; ++k) {
    const TVector3 widened =
        p[1] + (static_cast<double>(step) * k) * leg.Unit();
    different +=
        model.AVHDRopeLegPoints[2 * static_cast<std::size_t>(k - 1)] != widened;
  }
  EXPECT_GT(different, 0);
}

TEST(LoadAVHDRopeInfo, RoundsALegToSinglePrecisionBeforeDividingIt) {
  int different = 0;
  for (int i = 1; i <= 40; ++i) {
    Points p = Template();
    p[0] = p[1] - TVector3(0, 0, 150.1 * i);
    p[5] = p[4] - TVector3(0, 0, 149.9 * i);
    ExpectSamePoints(Load(p, {0}).AVHDRopeLegPoints, LegPoints<float>(p, 0.0));
    const double length = (p[0] - p[1]).Mag();
    different += static_cast<float>(length) / 100.0F !=
                 static_cast<float>(length / 100.0);
  }
  EXPECT_GT(different, 0);
}

TEST(LoadAVHDRopeInfo, AppendsToItsListsWhenCalledAgain) {
  RopeTables(Template(), {0, 36}).Load();
  AVHDRopeModel model;
  LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius);
  const AVHDRopeModel once = model;
  LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius);
  EXPECT_EQ(model.AVHDRopePositions, once.AVHDRopePositions);
  EXPECT_EQ(model.AVHDRopeRolls, once.AVHDRopeRolls);
  const auto expectTwice = [](const Points& twice, const Points& list) {
    Points expected = list;
    expected.insert(expected.end(), list.begin(), list.end());
    ExpectSamePoints(twice, expected);
  };
  expectTwice(model.AVHDRopeEndPoints, once.AVHDRopeEndPoints);
  expectTwice(model.AVHDRopeSurfacePoints, once.AVHDRopeSurfacePoints);
  expectTwice(model.AVHDRopeLegPoints, once.AVHDRopeLegPoints);
}

TEST(LoadAVHDRopeInfo, BuildsNoRopeWithoutRolls) {
  const AVHDRopeModel model = Load(Template(), {});
  EXPECT_EQ(model.AVHDRopeRadius, 12.0);
  EXPECT_EQ(model.AVHDRopePositions, Template());
  EXPECT_EQ(model.AVHDRopeEndPoints, Points());
  EXPECT_EQ(model.AVHDRopeSurfacePoints, Points());
  EXPECT_EQ(model.AVHDRopeLegPoints, Points());
}

TEST(LoadAVHDRopeInfo, RejectsATemplateOfFewerThanSixPointsAfterAllReads) {
  for (const std::size_t size : {0U, 1U, 5U}) {
    Points p = Template();
    p.resize(size);
    RopeTables(p, {90}).Load();
    AVHDRopeModel model;
    EXPECT_THROW(
        LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius),
        DBNotFoundError);
    EXPECT_EQ(model.AVHDRopePositions, p);
    EXPECT_EQ(model.AVHDRopeRolls.size(), 1U);
    EXPECT_EQ(model.AVHDRopeEndPoints, Points());
  }
}

TEST(LoadAVHDRopeInfo, RejectsTemplateListsOfDifferentLengths) {
  RopeTables(Template(), {0})
      .Set("SOLID", "hold_down_rope", "rope_z", std::vector<double>{1, 2})
      .Load();
  const Testing::Captured captured(warn);
  AVHDRopeModel model;
  EXPECT_THROW(
      LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius),
      DBNotFoundError);
  EXPECT_EQ(captured.Text(),
            "ShadowingCalculator::FillXYZPositions: Inequal number of elements "
            "across the (X,Y,Z) coordinate arrays!\n"
            "(X,Y,Z) positions not initialised for (SOLID, hold_down_rope).\n");
  EXPECT_EQ(model.AVHDRopeRolls.size(), 1U);
}

TEST(LoadAVHDRopeInfo, StopsAtAMissingFieldAndKeepsWhatItHasRead) {
  const auto load = [](const Tables& tables) {
    tables.Load();
    AVHDRopeModel model;
    EXPECT_THROW(
        LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius),
        DBNotFoundError);
    return model;
  };
  const auto tables = [] { return RopeTables(Template(), {0}); };
  EXPECT_EQ(
      load(tables().RemoveField("GEO", "hold_down_ropes", "solid_definition"))
          .AVHDRopeRadius,
      0.0);
  const AVHDRopeModel withoutRadius =
      load(tables().RemoveField("SOLID", "hold_down_rope", "r_rope"));
  EXPECT_EQ(withoutRadius.AVHDRopePositions, Points());
  const AVHDRopeModel withoutPoints =
      load(tables().RemoveField("SOLID", "hold_down_rope", "rope_y"));
  EXPECT_EQ(withoutPoints.AVHDRopeRadius, 12.0);
  EXPECT_EQ(withoutPoints.AVHDRopePositions, Points());
  for (const AVHDRopeModel& model :
       {load(tables().RemoveField("GEO", "hold_down_ropes", "locations")),
        load(tables().RemoveField("GEO_LOCATIONS", "rolls", "roll")),
        load(tables().Set("GEO_LOCATIONS", "rolls", "roll", 0.0))}) {
    EXPECT_EQ(model.AVHDRopePositions, Template());
    EXPECT_EQ(model.AVHDRopeRolls, std::vector<double>());
    EXPECT_EQ(model.AVHDRopeEndPoints, Points());
  }
}

TEST(LoadAVHDRopeInfo, LetsRootWarnAboutAnEndAtTheCentreForBothRopes) {
  for (const std::size_t end : {1U, 4U}) {
    Points p = Template();
    p[end] = {0, 0, 0};
    RopeTables(p, {0}).Load();
    const RootWarnings warnings;
    AVHDRopeModel model;
    LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius);
    EXPECT_EQ(RootWarnings::Messages(),
              (std::vector<std::string>(2, Testing::kZeroVectorWarning)));
    ExpectSamePoints(model.AVHDRopeSurfacePoints,
                     SurfaceConstruction(p, 0.0, kAVNeckRadius).points);
  }
}

TEST(LoadAVHDRopeInfo, LetsRootWarnAboutANeckPointAtTheCentre) {
  Points p = Template();
  p[1] = {5860, 0, 0};
  p[4] = {-5860, 0, 0};
  RopeTables(p, {0}).Load();
  const RootWarnings warnings;
  AVHDRopeModel model;
  LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius);
  EXPECT_EQ(RootWarnings::Messages(),
            (std::vector<std::string>{Testing::kZeroVectorWarning}));
}

TEST(LoadAVHDRopeInfo, AppendsAPointUnchangedIfTheVerticalMissesTheVessel) {
  Points p = TemplateWithoutArcs();
  p[2] = {7000, 0, 100};
  p[3] = Rotated(p[2], kPi);
  RopeTables(p, {0}).Load();
  const Testing::Captured captured(debug);
  AVHDRopeModel model;
  LoadAVHDRopeInfo(DB::Get(), model, kOuterAVRadius, kAVNeckRadius);
  EXPECT_NE(captured.Text(), "");
  ExpectSamePoints(model.AVHDRopeSurfacePoints,
                   SurfaceConstruction(p, 0.0, kAVNeckRadius).points);
  EXPECT_GT(model.AVHDRopeSurfacePoints[2].Mag(), 6900.0);
}

TEST(AVHDRopeModel, KeepsItsRadiusWhenCleared) {
  AVHDRopeModel model = Load(Template(), {0});
  const std::size_t capacity = model.AVHDRopeSurfacePoints.capacity();
  model.Clear();
  EXPECT_EQ(model.AVHDRopePositions, Points());
  EXPECT_EQ(model.AVHDRopeRolls, std::vector<double>());
  EXPECT_EQ(model.AVHDRopeEndPoints, Points());
  EXPECT_EQ(model.AVHDRopeSurfacePoints, Points());
  EXPECT_EQ(model.AVHDRopeLegPoints, Points());
  EXPECT_EQ(model.AVHDRopeSurfacePoints.capacity(), capacity);
  EXPECT_EQ(model.AVHDRopeRadius, 12.0);
}

}  // namespace
}  // namespace ZARN::DU

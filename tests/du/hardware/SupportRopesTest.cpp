#include "du/hardware/SupportRopes.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <vector>

#include "db/DBErrors.hpp"
#include "tests/du/Directions.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/TwoSupportRopes.hpp"
#include "tests/du/UsualVessel.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::AtAzimuth;
using Testing::Below;
using Testing::CrossingOf;
using Testing::ExpectSamePoints;
using Testing::FindExact;
using Testing::IsShadowed;
using Testing::kCylinderRadius;
using Testing::kOuterAVRadius;
using Testing::kTolerance;
using Testing::OneCrossing;
using Testing::SegmentsOf;
using Testing::Tables;
using Testing::ToNoRope;
using Testing::TopOfTheFirstRope;
using Testing::TwoRopes;

using Points = std::vector<TVector3>;

const TVector3 kAboveTheFeet(100, 100, 1);

TEST(SupportRopes, DoNotTestASegmentFromExactlyTheHeightOfTheirFeet) {
  SupportRopeModel model = TwoRopes();
  EXPECT_FALSE(IsShadowed(model, OneCrossing({100, 0, 0}, {1, 0, 0})));
  EXPECT_FALSE(IsShadowed(model, OneCrossing({100, 0, -5e-324}, {1, 0, 0})));
  EXPECT_TRUE(IsShadowed(model, OneCrossing({100, 0, 5e-324}, {1, 0, 0})));
  model.SupportRopePositions[0].SetZ(5.0);
  EXPECT_FALSE(IsShadowed(model, OneCrossing({100, 0, 5.0}, {1, 0, 0})));
  EXPECT_TRUE(IsShadowed(model, OneCrossing({100, 0, Above(5.0)}, {1, 0, 0})));
}

TEST(SupportRopes, DoNotTestASecondSegmentFromExactlyTheHeightOfTheirFeet) {
  const auto isShadowed = [](double z) {
    LightPath path = Testing::TwoCrossings({100, 0, 9}, {100, 0, z});
    path.InitialDirection = ToNoRope();
    path.FinalDirection = {1, 0, 0};
    return IsShadowed(TwoRopes(), path);
  };
  EXPECT_FALSE(isShadowed(0.0));
  EXPECT_TRUE(isShadowed(5e-324));
}

TEST(SupportRopes, UseTheHeightOfTheFirstFootForAll) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[1].SetZ(500.0);
  EXPECT_TRUE(IsShadowed(model, OneCrossing({0, 0, 1}, {0, 1, 0}), 1000.0));
}

TEST(SupportRopes, AreMissedAtExactlyTheAngleOfRadiusAndTolerance) {
  const TVector3 start(1000, 0, 1);
  for (const std::size_t rope : {0U, 1U}) {
    const TVector3 direction = AtAzimuth(rope == 0 ? 0.03 : 1.5, 1.0);
    SupportRopeModel model = TwoRopes();
    const double angle = Flattened(CrossingOf(start, direction))
                             .Angle(model.SupportRopePositions[rope]);
    const LightPath path = OneCrossing(start, direction);
    const double limit = angle * kCylinderRadius;
    model.SupportRopeRadius = 0.5 * limit;
    EXPECT_FALSE(IsShadowed(model, path, 0.5 * limit));
    model.SupportRopeRadius = 0.0;
    EXPECT_FALSE(IsShadowed(model, path, limit));
    EXPECT_TRUE(IsShadowed(model, path, Above(limit)));
    model.SupportRopeRadius = Above(limit);
    EXPECT_TRUE(IsShadowed(model, path, 0.0));
  }
}

TEST(SupportRopes, StandOnACylinderOfTheFirstFootsFullDistance) {
  // The distance includes the height of the foot.
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[0].SetXYZ(0, 0, -kCylinderRadius);
  const TVector3 start(1000, 0, 1);
  const TVector3 direction = AtAzimuth(1.5, 1.0);
  const double angle = Flattened(CrossingOf(start, direction))
                           .Angle(model.SupportRopePositions[1]);
  const double limit = angle * kCylinderRadius;
  EXPECT_FALSE(IsShadowed(model, OneCrossing(start, direction), limit));
  EXPECT_TRUE(IsShadowed(model, OneCrossing(start, direction), Above(limit)));
}

TEST(SupportRopes, AreComparedAtTheirHeightWithAFlattenedCrossing) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[1].SetZ(1000.0);  // 0.24 rad above the horizon
  const LightPath path = OneCrossing({0, 0, 1}, {0, 1, 0.3});
  EXPECT_FALSE(IsShadowed(model, path));
  EXPECT_TRUE(IsShadowed(model, path, 1100.0));
}

TEST(SupportRopes, AreAllTested) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions.push_back(AtAzimuth(2.5));
  for (const TVector3& rope : model.SupportRopePositions) {
    EXPECT_TRUE(IsShadowed(model, OneCrossing({0, 0, 1}, rope.Unit())));
  }
  EXPECT_FALSE(IsShadowed(model, OneCrossing({0, 0, 1}, {-1, 0, 0})));
}

/// The height at which a steep line from far on the other side meets the
/// cylinder.
double HeightFrom(double x) { return CrossingOf({x, 0, 1}, {1, 0, 0.95}).Z(); }

TEST(SupportRopes, BlockACrossingUpToExactlyTheirTop) {
  const auto shadowedFrom = [](const std::optional<double>& x) {
    EXPECT_TRUE(x.has_value());
    return IsShadowed(TwoRopes(),
                      OneCrossing({x.value_or(0.0), 0, 1}, {1, 0, 0.95}));
  };
  const double top = TopOfTheFirstRope().Z();
  EXPECT_TRUE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, top)));
  EXPECT_FALSE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, Above(top))));
  EXPECT_TRUE(shadowedFrom(FindExact(-3000, -4000, HeightFrom, Below(top))));
}

TEST(SupportRopes, BlockNoCrossingFarBelowTheVesselEither) {
  // Outside and heading outwards, a line meets the cylinder behind its start,
  // at a negative height.
  const TVector3 start(4200, 0, 1);
  const auto pathWith = [&](double slope) {
    return OneCrossing(start, {1, 0, slope});
  };
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions.emplace_back(-kCylinderRadius, 0, 0);
  ASSERT_LT(CrossingOf(start, {1, 0, 0.8}).Z(), -6000.0);
  ASSERT_LT(CrossingOf(start, {1, 0, 1.0}).Z(), -8000.0);
  EXPECT_TRUE(IsShadowed(model, pathWith(0.8)));
  EXPECT_FALSE(IsShadowed(model, pathWith(1.0)));
}

TEST(SupportRopes, AreMetByEverySegmentOfEachTypeOfPath) {
  // The path in water leaves the cylinder.
  const auto deciding = Testing::DecidingDirections(
      kAboveTheFeet, {0, 9000, 1}, {1, 0, 0}, ToNoRope(),
      [](const WaterSegments& path) {
        return CheckForSupportRopeShadowing(TwoRopes(), AVHDRopeModel(),
                                            kTolerance, path);
      });
  EXPECT_EQ(deciding, Testing::EverySegment());
}

TEST(SupportRopes, AreTestedFromEveryCrossingOfEachTypeOfPath) {
  // A point below the feet is not tested.
  const auto deciding = Testing::DecidingPoints(
      {100, 0, 1}, {100, 0, -1}, [](WaterSegments path) {
        path.first.direction = path.second.direction = {1, 0, 0};
        return CheckForSupportRopeShadowing(TwoRopes(), AVHDRopeModel(),
                                            kTolerance, path);
      });
  EXPECT_EQ(deciding, Testing::EveryCrossing());
}

TEST(SupportRopes, AreTestedFromTheReflectionPointInBothDirections) {
  LightPath path = Testing::AllAt(kWaterReflection, kAboveTheFeet);
  path.InitialDirection = path.FinalDirection = ToNoRope();
  EXPECT_FALSE(IsShadowed(TwoRopes(), path));
  path.InitialDirection = {-1, 0, 0};
  EXPECT_TRUE(IsShadowed(TwoRopes(), path));
  path.InitialDirection = ToNoRope();
  path.FinalDirection = {0, 1, 0};
  EXPECT_TRUE(IsShadowed(TwoRopes(), path));
}

// Paths that cannot be judged.

TEST(SupportRopes, JudgeAPathOfUnknownTypeOnlyWhenTheirFeetAreBelowTheCentre) {
  const auto isShadowed = [](double footHeight) {
    SupportRopeModel model = TwoRopes();
    model.SupportRopePositions[0].SetZ(footHeight);
    return CheckForSupportRopeShadowing(model, AVHDRopeModel(), kTolerance,
                                        Testing::UnknownSegments());
  };
  EXPECT_FALSE(isShadowed(0.0));
  EXPECT_FALSE(isShadowed(5.0));
  EXPECT_TRUE(isShadowed(-5e-324));
}

TEST(SupportRopes, NeverShadowAnUninitialisedPath) {
  SupportRopeModel model = TwoRopes();
  model.SupportRopePositions[0].SetZ(-5.0);
  EXPECT_FALSE(IsShadowed(model, LightPath()));
  EXPECT_FALSE(CheckForSupportRopeShadowing(model, AVHDRopeModel(), kTolerance,
                                            Testing::MisspeltSegments()));
}

// Loading.

const Points kAnchors = {{5920, 0, 5}, {-3000, 5100, 7}};

Tables RopeTables(const Points& anchors = kAnchors) {
  Tables tables;
  tables.Set("GEO", "hold_up_ropes", "solid_definition", "hold_up_rope");
  tables.Set("GEO", "hold_up_ropes", "locations", "anchors");
  tables.Set("SOLID", "hold_up_rope", "r_rope", 15.0);
  tables.Set("SOLID", "hold_up_rope", "z_rope", 6090.0);
  tables.Set("SOLID", "belly_plate_vintar", "octahedron_half_height", 600.0);
  tables.SetPositions("GEO_LOCATIONS", "anchors", anchors);
  return tables;
}

struct ExpectedRopes {
  explicit ExpectedRopes(const Points& anchors) {
    const double spread = (0.6666666666666666 * 600.0) / kOuterAVRadius;
    const double step = 6090.0 / 100.0;
    for (const TVector3& anchor : anchors) {
      TVector3 p1 = anchor;
      p1.SetPhi(anchor.Phi() + spread);
      TVector3 p2 = anchor;
      p2.SetPhi(anchor.Phi() - spread);
      feet.push_back(p1);
      feet.push_back(p2);
      for (int i = 1; i <= 99; ++i) {
        linePoints.push_back(p1 + (i * step) * TVector3(0, 0, 1));
        linePoints.push_back(p2 + (i * step) * TVector3(0, 0, 1));
      }
    }
  }

  Points feet;
  Points linePoints;
};

TEST(LoadSupportRopeInfo, BuildsTwoRopesForEveryAnchor) {
  RopeTables().Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  const ExpectedRopes expected(kAnchors);
  EXPECT_EQ(model.SupportRopePositions, expected.feet);
  ExpectSamePoints(model.SupportRopeLinePoints, expected.linePoints);
  EXPECT_EQ(model.SupportRopeRadius, 15.0);
  EXPECT_EQ(model.SupportRopeLength, 6090.0);
}

TEST(LoadSupportRopeInfo, BuildsTwoRopesAnd198LinePointsForOneAnchor) {
  RopeTables({{5920, 0, 5}}).Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopePositions.size(), 2U);
  EXPECT_EQ(model.SupportRopeLinePoints.size(), 198U);
  EXPECT_GT(model.SupportRopePositions[0].Phi(), 0.0);
  EXPECT_LT(model.SupportRopePositions[1].Phi(), 0.0);
}

TEST(LoadSupportRopeInfo, AppendsToItsListsWhenCalledAgain) {
  RopeTables().Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  const ExpectedRopes expected(
      {kAnchors[0], kAnchors[1], kAnchors[0], kAnchors[1]});
  EXPECT_EQ(model.SupportRopePositions, expected.feet);
  ExpectSamePoints(model.SupportRopeLinePoints, expected.linePoints);
}

TEST(LoadSupportRopeInfo, FollowsTheNamesInTheRopesEntry) {
  RopeTables()
      .Set("GEO", "hold_up_ropes", "solid_definition", "other_rope")
      .Set("GEO", "hold_up_ropes", "locations", "other_anchors")
      .Set("SOLID", "other_rope", "r_rope", 16.0)
      .Set("SOLID", "other_rope", "z_rope", 6000.0)
      .SetPositions("GEO_LOCATIONS", "other_anchors", {{0, 5920, 5}})
      .Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopeRadius, 16.0);
  EXPECT_EQ(model.SupportRopeLength, 6000.0);
  EXPECT_EQ(model.SupportRopePositions.size(), 2U);
}

TEST(LoadSupportRopeInfo, BuildsNoRopeWithoutAnchors) {
  RopeTables({}).Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopePositions, Points());
  EXPECT_EQ(model.SupportRopeLinePoints, Points());
  EXPECT_FALSE(HasSupportRopes(model));
}

TEST(LoadSupportRopeInfo, BuildsNoRopeFromListsOfDifferentLengths) {
  RopeTables()
      .Set("GEO_LOCATIONS", "anchors", "x", std::vector<double>{1})
      .Load();
  const Testing::Captured captured(warn);
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  EXPECT_EQ(model.SupportRopePositions, Points());
  EXPECT_NE(captured.Text(), "");
}

TEST(LoadSupportRopeInfo, StopsAtAMissingFieldAndKeepsWhatItHasRead) {
  const auto load = [](const Tables& tables) {
    tables.Load();
    SupportRopeModel model;
    EXPECT_THROW(LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius),
                 DBNotFoundError);
    EXPECT_EQ(model.SupportRopePositions, Points());
    return model;
  };
  EXPECT_EQ(
      load(RopeTables().RemoveField("GEO", "hold_up_ropes", "solid_definition"))
          .SupportRopeRadius,
      0.0);
  EXPECT_EQ(load(RopeTables().RemoveField("SOLID", "hold_up_rope", "r_rope"))
                .SupportRopeLength,
            0.0);
  const SupportRopeModel withoutLength =
      load(RopeTables().RemoveField("SOLID", "hold_up_rope", "z_rope"));
  EXPECT_EQ(withoutLength.SupportRopeRadius, 15.0);
  EXPECT_EQ(withoutLength.SupportRopeLength, 0.0);
  for (const SupportRopeModel& model :
       {load(RopeTables().Remove("SOLID", "belly_plate_vintar")),
        load(RopeTables().RemoveField("GEO", "hold_up_ropes", "locations")),
        load(RopeTables().RemoveField("GEO_LOCATIONS", "anchors", "z"))}) {
    EXPECT_EQ(model.SupportRopeRadius, 15.0);
    EXPECT_EQ(model.SupportRopeLength, 6090.0);
  }
}

TEST(SupportRopeModel, KeepsItsSizesWhenCleared) {
  RopeTables().Load();
  SupportRopeModel model;
  LoadSupportRopeInfo(DB::Get(), model, kOuterAVRadius);
  const std::size_t capacity = model.SupportRopeLinePoints.capacity();
  EXPECT_TRUE(HasSupportRopes(model));
  model.Clear();
  EXPECT_FALSE(HasSupportRopes(model));
  EXPECT_EQ(model.SupportRopePositions, Points());
  EXPECT_EQ(model.SupportRopeLinePoints, Points());
  EXPECT_EQ(model.SupportRopeLinePoints.capacity(), capacity);
  EXPECT_EQ(model.SupportRopeRadius, 15.0);
  EXPECT_EQ(model.SupportRopeLength, 6090.0);
}

}  // namespace
}  // namespace ZARN::DU

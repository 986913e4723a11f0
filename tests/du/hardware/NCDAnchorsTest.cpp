#include "du/hardware/NCDAnchors.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "db/DBErrors.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/UsualVessel.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::kTolerance;
using Testing::OneCrossing;
using Testing::SegmentsOf;
using Testing::Tables;
using Testing::TwoCrossings;

/// Two anchors; the reach of each, with kTolerance, is 210 mm.
NCDAnchorModel TwoAnchors() {
  NCDAnchorModel model;
  model.NCDAnchorPositions = {{5800, 0, 0}, {0, 5800, 0}};
  model.NCDAnchorHalfZ = 60.0;
  model.NCDAnchorRadius = 40.0;
  return model;
}

bool IsShadowedByAnchors(const TVector3& point,
                         const NCDAnchorModel& model = TwoAnchors(),
                         double tolerance = kTolerance) {
  return CheckForNCDAnchorShadowing(model, tolerance,
                                    SegmentsOf(OneCrossing(point)));
}

TEST(NCDAnchors, DoNotShadowAPointExactlyAtTheirReach) {
  EXPECT_FALSE(IsShadowedByAnchors({5800, 0, 210}));
  EXPECT_TRUE(IsShadowedByAnchors({5800, 0, Below(210.0)}));
  EXPECT_FALSE(IsShadowedByAnchors({5800, 0, Above(210.0)}));
}

TEST(NCDAnchors, ReachAsFarAsTheirHalfHeightPlusTheTolerance) {
  const TVector3 point(5812, 34, 56);
  NCDAnchorModel model = TwoAnchors();
  model.NCDAnchorHalfZ = (point - model.NCDAnchorPositions[0]).Mag();
  EXPECT_FALSE(IsShadowedByAnchors(point, model, 0.0));
  model.NCDAnchorHalfZ = Above(model.NCDAnchorHalfZ);
  EXPECT_TRUE(IsShadowedByAnchors(point, model, 0.0));
}

TEST(NCDAnchors, DoNotShadowASecondCrossingExactlyAtTheirReach) {
  const auto isShadowed = [](double z) {
    return CheckForNCDAnchorShadowing(
        TwoAnchors(), kTolerance,
        SegmentsOf(TwoCrossings({0, 0, 5860}, {0, 5800, z})));
  };
  EXPECT_FALSE(isShadowed(210.0));
  EXPECT_TRUE(isShadowed(Below(210.0)));
}

TEST(NCDAnchors, ReachFartherWithALargerToleranceWhateverTheirRadius) {
  NCDAnchorModel model = TwoAnchors();
  for (const TVector3& anchor : model.NCDAnchorPositions) {
    const TVector3 point = anchor + TVector3(0, 0, 300);
    EXPECT_FALSE(IsShadowedByAnchors(point, model, 150.0));
    EXPECT_TRUE(IsShadowedByAnchors(point, model, 250.0));
  }
  model.NCDAnchorRadius = 1e6;
  EXPECT_FALSE(IsShadowedByAnchors({5800, 0, 300}, model));
}

TEST(NCDAnchors, ShadowNothingWithANegativeReach) {
  EXPECT_FALSE(IsShadowedByAnchors({5800, 0, 0}, TwoAnchors(), -60.0));
  EXPECT_FALSE(IsShadowedByAnchors({5800, 0, 0}, TwoAnchors(), -100.0));
  EXPECT_TRUE(IsShadowedByAnchors({5800, 0, 0}, TwoAnchors(), Above(-60.0)));
}

TEST(NCDAnchors, ShadowAPathThroughTheWallThatLeavesNearOne) {
  LightPath path = TwoCrossings({0, 0, 5860}, {0, 5860, 0});
  EXPECT_TRUE(
      CheckForNCDAnchorShadowing(TwoAnchors(), kTolerance, SegmentsOf(path)));
  path.LightPathType = kAVToWater;  // which does not use AVPoint2
  EXPECT_FALSE(
      CheckForNCDAnchorShadowing(TwoAnchors(), kTolerance, SegmentsOf(path)));
}

TEST(NCDAnchors, TestEveryCrossingOfEachTypeOfPath) {
  const auto deciding = Testing::DecidingPoints(
      {0, 5860, 0}, {0, 0, 5860}, [](const WaterSegments& path) {
        return CheckForNCDAnchorShadowing(TwoAnchors(), kTolerance, path);
      });
  EXPECT_EQ(deciding, Testing::EveryCrossing());
}

TEST(NCDAnchors, NeverShadowAPathInWater) {
  EXPECT_FALSE(CheckForNCDAnchorShadowing(
      TwoAnchors(), kTolerance,
      SegmentsOf(Testing::AllAt(kWater, {5800, 0, 0}))));
}

TEST(NCDAnchors, ShadowNothingWhenThereAreNone) {
  EXPECT_FALSE(IsShadowedByAnchors({5800, 0, 0}, NCDAnchorModel(), 1e9));
}

TEST(NCDAnchors, JudgeAPathOfUnknownTypeAtTheCentre) {
  NCDAnchorModel model = TwoAnchors();
  for (const WaterSegments& path :
       {Testing::UnknownSegments(), Testing::MisspeltSegments()}) {
    model.NCDAnchorPositions[1] = {0, 0, 210};
    EXPECT_FALSE(CheckForNCDAnchorShadowing(model, kTolerance, path));
    model.NCDAnchorPositions[1] = {0, 0, Below(210.0)};
    EXPECT_TRUE(CheckForNCDAnchorShadowing(model, kTolerance, path));
  }
}

TEST(NCDAnchors, NeverShadowAnUninitialisedPath) {
  NCDAnchorModel model = TwoAnchors();
  model.NCDAnchorPositions[0] = {0, 0, 0};
  EXPECT_FALSE(
      CheckForNCDAnchorShadowing(model, kTolerance, SegmentsOf(LightPath())));
}

const std::vector<TVector3> kAnchorLocations = {
    {5800, 0, 0}, {0, 5800, 1}, {4100, -4100, 2}};

Tables AnchorTables() {
  Tables tables;
  tables.Set("GEO", "inner_av", "ncd_anchor_definition", "ncd_anchor");
  tables.Set("GEO", "inner_av", "ncd_anchor_locations", "ncd_anchors");
  tables.Set("SOLID", "ncd_anchor", "half_z", 60.0);
  tables.Set("SOLID", "ncd_anchor", "r_max", 40.0);
  tables.SetPositions("GEO_LOCATIONS", "ncd_anchors", kAnchorLocations);
  return tables;
}

TEST(LoadNCDAnchorInfo, FollowsTheNamesInTheVesselsEntry) {
  AnchorTables().Load();
  NCDAnchorModel model;
  LoadNCDAnchorInfo(DB::Get(), model);
  EXPECT_EQ(model.NCDAnchorHalfZ, 60.0);
  EXPECT_EQ(model.NCDAnchorRadius, 40.0);
  EXPECT_EQ(model.NCDAnchorPositions, kAnchorLocations);

  AnchorTables()
      .Set("GEO", "inner_av", "ncd_anchor_definition", "other_anchor")
      .Set("SOLID", "other_anchor", "half_z", 61.0)
      .Set("SOLID", "other_anchor", "r_max", 41.0)
      .Set("GEO", "inner_av", "ncd_anchor_locations", "other_anchors")
      .SetPositions("GEO_LOCATIONS", "other_anchors", {{1, 2, 3}})
      .Load();
  LoadNCDAnchorInfo(DB::Get(), model);
  EXPECT_EQ(model.NCDAnchorHalfZ, 61.0);
  EXPECT_EQ(model.NCDAnchorRadius, 41.0);
  EXPECT_EQ(model.NCDAnchorPositions, (std::vector<TVector3>{{1, 2, 3}}));
}

TEST(LoadNCDAnchorInfo, StopsAtAMissingFieldAndKeepsWhatItHasRead) {
  AnchorTables().RemoveField("SOLID", "ncd_anchor", "half_z").Load();
  NCDAnchorModel withoutSize;
  EXPECT_THROW(LoadNCDAnchorInfo(DB::Get(), withoutSize), DBNotFoundError);
  EXPECT_EQ(withoutSize.NCDAnchorRadius, 0.0);

  AnchorTables().RemoveField("SOLID", "ncd_anchor", "r_max").Load();
  NCDAnchorModel withoutRadius;
  EXPECT_THROW(LoadNCDAnchorInfo(DB::Get(), withoutRadius), DBNotFoundError);
  EXPECT_EQ(withoutRadius.NCDAnchorHalfZ, 60.0);
  EXPECT_EQ(withoutRadius.NCDAnchorPositions, std::vector<TVector3>());

  AnchorTables().Remove("GEO_LOCATIONS", "ncd_anchors").Load();
  NCDAnchorModel withoutLocations;
  EXPECT_THROW(LoadNCDAnchorInfo(DB::Get(), withoutLocations), DBNotFoundError);
  EXPECT_EQ(withoutLocations.NCDAnchorRadius, 40.0);
}

TEST(LoadNCDAnchorInfo, RejectsNamesThatAreMissingOrPointNowhere) {
  NCDAnchorModel model;
  for (const char* name : {"ncd_anchor_definition", "ncd_anchor_locations"}) {
    SCOPED_TRACE(name);
    AnchorTables().RemoveField("GEO", "inner_av", name).Load();
    EXPECT_THROW(LoadNCDAnchorInfo(DB::Get(), model), DBNotFoundError);
    AnchorTables().Set("GEO", "inner_av", name, "nowhere").Load();
    EXPECT_THROW(LoadNCDAnchorInfo(DB::Get(), model), DBNotFoundError);
    AnchorTables().Set("GEO", "inner_av", name, 1.0).Load();
    EXPECT_THROW(LoadNCDAnchorInfo(DB::Get(), model), DBNotFoundError);
  }
}

TEST(NCDAnchorModel, KeepsItsSizesWhenCleared) {
  NCDAnchorModel model = TwoAnchors();
  model.Clear();
  EXPECT_EQ(model.NCDAnchorPositions, std::vector<TVector3>());
  EXPECT_GE(model.NCDAnchorPositions.capacity(), 2U);
  EXPECT_EQ(model.NCDAnchorHalfZ, 60.0);
  EXPECT_EQ(model.NCDAnchorRadius, 40.0);
}

}  // namespace
}  // namespace ZARN::DU

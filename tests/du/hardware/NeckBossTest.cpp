#include "du/hardware/NeckBoss.hpp"

#include <gtest/gtest.h>

#include <string>

#include "db/DBErrors.hpp"
#include "du/geometry/Primitives.hpp"
#include "tests/du/Boss.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/Paths.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::BossWithAngle;
using Testing::OneCrossing;
using Testing::SegmentsOf;
using Testing::Tables;
using Testing::TwoCrossings;

const TVector3 kUnderTheBoss(100, 0, 5850);
const TVector3 kBesideTheBoss(4000, 0, 4000);

Tables BossTables() {
  Tables tables;
  tables.Set("GEO", "av", "neck_boss_z", 5850.0);
  tables.Set("SOLID", "neck_boss", "half_height1", 70.0);
  tables.Set("SOLID", "neck_boss", "half_height2", 50.0);
  return tables;
}

TEST(NeckBoss, DoesNotShadowAPointExactlyAtItsAngle) {
  const TVector3 point(900, 300, 5700);
  const WaterSegments path = SegmentsOf(OneCrossing(point));
  const double angle = point.Theta();
  EXPECT_FALSE(CheckForNeckBossShadowing(BossWithAngle(angle), path));
  EXPECT_FALSE(CheckForNeckBossShadowing(BossWithAngle(Below(angle)), path));
  EXPECT_TRUE(CheckForNeckBossShadowing(BossWithAngle(Above(angle)), path));
}

TEST(NeckBoss, DoesNotShadowAnExitPointExactlyAtItsAngle) {
  const TVector3 exit(900, 300, 5700);
  const WaterSegments path = SegmentsOf(TwoCrossings(kBesideTheBoss, exit));
  const double angle = exit.Theta();
  EXPECT_FALSE(CheckForNeckBossShadowing(BossWithAngle(angle), path));
  EXPECT_TRUE(CheckForNeckBossShadowing(BossWithAngle(Above(angle)), path));
}

TEST(NeckBoss, NeverShadowsAPathInWater) {
  const WaterSegments path = SegmentsOf(Testing::AllAt(kWater, kUnderTheBoss));
  EXPECT_FALSE(CheckForNeckBossShadowing(BossWithAngle(3.0), path));
}

TEST(NeckBoss, TestsEveryCrossingOfEachTypeOfPath) {
  const NeckBossModel model = BossWithAngle(0.15);
  const auto deciding = Testing::DecidingPoints(
      kUnderTheBoss, kBesideTheBoss, [&](const WaterSegments& path) {
        return CheckForNeckBossShadowing(model, path);
      });
  EXPECT_EQ(deciding, Testing::EveryCrossing());
}

TEST(NeckBoss, ShadowsAPathThroughTheWallThatLeavesUnderIt) {
  const NeckBossModel model = BossWithAngle(0.15);
  LightPath path = TwoCrossings(kBesideTheBoss, kUnderTheBoss);
  EXPECT_TRUE(CheckForNeckBossShadowing(model, SegmentsOf(path)));
  path.LightPathType = kAVToWater;  // which uses only AVPoint1
  EXPECT_FALSE(CheckForNeckBossShadowing(model, SegmentsOf(path)));
}

TEST(NeckBoss, TestsTheOuterSurfacePointOfAPathFromTheInside) {
  const NeckBossModel model = BossWithAngle(0.15);
  LightPath path = TwoCrossings(kUnderTheBoss, kBesideTheBoss);
  path.LightPathType = kInnerAVToWater;
  EXPECT_FALSE(CheckForNeckBossShadowing(model, SegmentsOf(path)));
  path.AVPoint3 = kUnderTheBoss;
  path.LightPathType = kAVThroughInnerAVToWater;
  EXPECT_TRUE(CheckForNeckBossShadowing(model, SegmentsOf(path)));
}

TEST(NeckBoss, ShadowsAPathOfUnknownTypeAtTheCentreWhenItsAngleIsPositive) {
  for (const WaterSegments& path :
       {Testing::UnknownSegments(), Testing::MisspeltSegments()}) {
    EXPECT_TRUE(CheckForNeckBossShadowing(BossWithAngle(5e-324), path));
    EXPECT_FALSE(CheckForNeckBossShadowing(BossWithAngle(0.0), path));
  }
}

TEST(NeckBoss, NeverShadowsAnUninitialisedPath) {
  EXPECT_FALSE(
      CheckForNeckBossShadowing(BossWithAngle(3.0), SegmentsOf(LightPath())));
}

TEST(LoadNeckBossInfo, FindsTheAngleWhereTheBaseMeetsTheInnerSphere) {
  BossTables().Load();
  NeckBossModel model;
  LoadNeckBossInfo(DB::Get(), model, 5800.0);
  const TVector3 edge = VectorToSphereEdge(
      {0, 0, 5850.0 - (120.0 + 120.0) * 0.5}, {1.0, 0, 0}, 5800.0, false);
  EXPECT_EQ(model.NeckBossAngle, edge.Theta());
  EXPECT_GT(edge.X(), 800.0);
}

TEST(LoadNeckBossInfo, SubtractsBothHalfHeights) {
  NeckBossModel model;
  Tables tables = BossTables();
  tables.Load();
  LoadNeckBossInfo(DB::Get(), model, 5800.0);
  const double angle = model.NeckBossAngle;
  tables.Set("SOLID", "neck_boss", "half_height1", 120.0);
  tables.Set("SOLID", "neck_boss", "half_height2", 0.0);
  tables.Load();
  LoadNeckBossInfo(DB::Get(), model, 5800.0);
  EXPECT_EQ(model.NeckBossAngle, angle);
}

TEST(LoadNeckBossInfo, PutsTheBaseAtNeckBossZWithoutHalfHeights) {
  Tables tables = BossTables();
  tables.Set("GEO", "av", "neck_boss_z", 3000.0);
  tables.Set("SOLID", "neck_boss", "half_height1", 0.0);
  tables.Set("SOLID", "neck_boss", "half_height2", 0.0);
  tables.Load();
  NeckBossModel model;
  LoadNeckBossInfo(DB::Get(), model, 5000.0);
  const TVector3 edge =
      VectorToSphereEdge({0, 0, 3000.0}, {1.0, 0, 0}, 5000.0, false);
  EXPECT_EQ(model.NeckBossAngle, edge.Theta());
}

TEST(LoadNeckBossInfo, UsesABaseOutsideTheSphereUnchanged) {
  Tables tables = BossTables();
  tables.Set("GEO", "av", "neck_boss_z", 9000.0);
  tables.Load();
  const Testing::Captured captured(debug);
  NeckBossModel model = BossWithAngle(1.0);
  LoadNeckBossInfo(DB::Get(), model, 5800.0);
  EXPECT_EQ(model.NeckBossAngle, 0.0);
  EXPECT_NE(captured.Text(), "");
}

TEST(LoadNeckBossInfo, KeepsTheAngleWhenAFieldIsMissing) {
  const auto expectFailure = [](const Tables& tables) {
    tables.Load();
    NeckBossModel model = BossWithAngle(0.25);
    EXPECT_THROW(LoadNeckBossInfo(DB::Get(), model, 5800.0), DBNotFoundError);
    EXPECT_EQ(model.NeckBossAngle, 0.25);
  };
  expectFailure(BossTables().RemoveField("GEO", "av", "neck_boss_z"));
  expectFailure(BossTables().RemoveField("SOLID", "neck_boss", "half_height1"));
  expectFailure(BossTables().RemoveField("SOLID", "neck_boss", "half_height2"));
  expectFailure(BossTables().Remove("GEO", "av"));
  expectFailure(BossTables().Remove("SOLID", "neck_boss"));
  expectFailure(BossTables().Set("GEO", "av", "neck_boss_z", "a text"));
}

}  // namespace
}  // namespace ZARN::DU

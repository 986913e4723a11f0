#include "du/hardware/WaterSegments.hpp"

#include <gtest/gtest.h>

#include <string>

#include "tests/du/Paths.hpp"

namespace ZARN::DU {
namespace {

const TVector3 kFinal(1, 2, 3);
const TVector3 kInitial(4, 5, 6);
const TVector3 kStart(10, 0, 0);
const TVector3 kEnd(20, 0, 0);
const TVector3 kPoint1(1000, 1, 0);
const TVector3 kPoint2(2000, 2, 0);
const TVector3 kPoint3(3000, 3, 0);
const TVector3 kPoint4(4000, 4, 0);
const TVector3 kZero(0, 0, 0);

LightPath PathOf(eLightPathType type) {
  LightPath path;
  path.FinalDirection = kFinal;
  path.InitialDirection = kInitial;
  path.StartPos = kStart;
  path.EndPos = kEnd;
  path.AVPoint1 = kPoint1;
  path.AVPoint2 = kPoint2;
  path.AVPoint3 = kPoint3;
  path.AVPoint4 = kPoint4;
  path.LightPathType = type;
  return path;
}

void ExpectSegments(const WaterSegments& path, ePathKind kind,
                    const WaterSegment& first, const WaterSegment& second) {
  EXPECT_EQ(path.kind, kind);
  EXPECT_EQ(path.first.point, first.point);
  EXPECT_EQ(path.first.direction, first.direction);
  EXPECT_EQ(path.second.point, second.point);
  EXPECT_EQ(path.second.direction, second.direction);
}

void ExpectSegments(eLightPathType type, ePathKind kind,
                    const WaterSegment& first, const WaterSegment& second) {
  SCOPED_TRACE(type);
  ExpectSegments(SegmentsOf(PathOf(type), ShapeOfType(type)), kind, first,
                 second);
}

TEST(WaterSegments, StartAtTheOuterSurfaceIfTheVesselIsCrossedOnce) {
  ExpectSegments(kInnerAVToWater, ePathKind::kOneCrossing, {kPoint2, kFinal},
                 {kZero, kZero});
  ExpectSegments(kAVThroughInnerAVToWater, ePathKind::kOneCrossing,
                 {kPoint3, kFinal}, {kZero, kZero});
  ExpectSegments(kAVToWater, ePathKind::kOneCrossing, {kPoint1, kFinal},
                 {kZero, kZero});
}

TEST(WaterSegments, ReverseTheFirstPartOfAPathThatStartsInWater) {
  ExpectSegments(kWaterThroughInnerAV, ePathKind::kTwoCrossings,
                 {kPoint1, -kInitial}, {kPoint4, kFinal});
  ExpectSegments(kWaterThroughAV, ePathKind::kTwoCrossings,
                 {kPoint1, -kInitial}, {kPoint2, kFinal});
}

TEST(WaterSegments, MeetAtTheReflectionPoint) {
  ExpectSegments(kWaterReflection, ePathKind::kTwoCrossings,
                 {kPoint1, -kInitial}, {kPoint1, kFinal});
}

TEST(WaterSegments, RunBetweenTheEndsOfAPathInWater) {
  ExpectSegments(kWater, ePathKind::kWater, {kStart, kInitial},
                 {kEnd, -kInitial});
}

TEST(WaterSegments, AreZeroForAPathThatCannotBeJudged) {
  ExpectSegments(kUninitialised, ePathKind::kUninitialised, {kZero, kZero},
                 {kZero, kZero});
  ExpectSegments(Testing::kUnnamedType, ePathKind::kUnknown, {kZero, kZero},
                 {kZero, kZero});
  ExpectSegments(
      SegmentsOf(PathOf(kAVToWater), ShapeOfName("LightPath Uninitialised")),
      ePathKind::kMisspeltUninitialised, {kZero, kZero}, {kZero, kZero});
}

TEST(WaterSegments, FollowTheShapeAndNotTheTypeOfThePath) {
  ExpectSegments(SegmentsOf(PathOf(kWater), ShapeOfName("AV->Water")),
                 ePathKind::kOneCrossing, {kPoint1, kFinal}, {kZero, kZero});
}

TEST(ShapeOfName, AgreesWithTheShapeOfTheTypeOfThatName) {
  for (int type = 0; type < kNumberOfLightPathTypes; ++type) {
    const char* const name =
        kLightPathTypeNames[static_cast<std::size_t>(type)];
    SCOPED_TRACE(name);
    const PathShape& shape = ShapeOfName(name);
    const PathShape& same = ShapeOfType(static_cast<eLightPathType>(type));
    EXPECT_EQ(shape.kind, same.kind);
    EXPECT_EQ(shape.firstPoint, same.firstPoint);
    EXPECT_EQ(shape.secondPoint, same.secondPoint);
  }
}

TEST(ShapeOfName, KnowsExactlyTheDefaultNames) {
  EXPECT_EQ(ShapeOfName("Scint/InnerAV->AV->Water").firstPoint,
            &LightPath::AVPoint2);
  EXPECT_EQ(ShapeOfName("AV->Scint/InnerAV->AV->Water").firstPoint,
            &LightPath::AVPoint3);
  EXPECT_EQ(ShapeOfName("AV->Water").firstPoint, &LightPath::AVPoint1);
  EXPECT_EQ(ShapeOfName("Water->AV->Scint/InnerAV->AV->Water").secondPoint,
            &LightPath::AVPoint4);
  EXPECT_EQ(ShapeOfName("Water->AV->Water").secondPoint, &LightPath::AVPoint2);
  EXPECT_EQ(ShapeOfName("Water->Reflection->Water").secondPoint,
            &LightPath::AVPoint1);
  EXPECT_EQ(ShapeOfName("Water").kind, ePathKind::kWater);
  EXPECT_EQ(ShapeOfName("Light Path Uninitialised").kind,
            ePathKind::kUninitialised);
  EXPECT_EQ(ShapeOfName("LightPath Uninitialised").kind,
            ePathKind::kMisspeltUninitialised);
}

TEST(ShapeOfName, MatchesNothingThatDiffersInCaseOrSpacing) {
  for (const char* name :
       {"", "water", "WATER", " Water", "Water ", "av->water", "AV -> Water",
        "AV->Wate", "AV->Water->", "scint/innerav->av->water",
        "Scint/InnerAV->AV->water", "water->reflection->water",
        "light path uninitialised", "LightPathUninitialised",
        "lightpath uninitialised", "Light  Path Uninitialised",
        "Light Path Uninitialized"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ShapeOfName(name).kind, ePathKind::kUnknown);
  }
  EXPECT_EQ(ShapeOfName(std::string("Water\0", 6)).kind, ePathKind::kUnknown);
}

TEST(ShapeOfType, IsUnknownForTypesWithoutADefaultName) {
  for (const int type : {-1, int{kNumberOfLightPathTypes},
                         int{kNumberOfLightPathTypes} + 1, 99}) {
    EXPECT_EQ(ShapeOfType(static_cast<eLightPathType>(type)).kind,
              ePathKind::kUnknown);
  }
}

}  // namespace
}  // namespace ZARN::DU

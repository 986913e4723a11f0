#include "lightpath/LightPathCalculator.hpp"

#include <gtest/gtest.h>

#include <string>

namespace ZARN::DU {
namespace {

TEST(LightPathCalculator, StartsUninitialised) {
  const LightPathCalculator calculator;
  EXPECT_EQ(calculator.GetLightPathType(), kUninitialised);
  EXPECT_EQ(calculator.LightPathTypeNames().at(kUninitialised),
            "Light Path Uninitialised");
  EXPECT_EQ(calculator.GetStartPos(), TVector3(0, 0, 0));
  EXPECT_EQ(calculator.GetAVPoint1(), TVector3(0, 0, 0));
}

TEST(LightPathCalculator, NamesEveryTypeWithTheTextThatTheTestsCompare) {
  const LightPathCalculator::TypeNames expected = {
      {kUninitialised, "Light Path Uninitialised"},
      {kInnerAVToWater, "Scint/InnerAV->AV->Water"},
      {kAVThroughInnerAVToWater, "AV->Scint/InnerAV->AV->Water"},
      {kAVToWater, "AV->Water"},
      {kWaterThroughInnerAV, "Water->AV->Scint/InnerAV->AV->Water"},
      {kWaterThroughAV, "Water->AV->Water"},
      {kWater, "Water"},
      {kWaterReflection, "Water->Reflection->Water"}};
  const LightPathCalculator calculator;
  EXPECT_EQ(calculator.LightPathTypeNames(), expected);
}

TEST(LightPathCalculator, LeavesItsNamesOpenToChange) {
  LightPathCalculator calculator;
  const auto ownType = static_cast<eLightPathType>(kNumberOfLightPathTypes + 1);
  calculator.LightPathTypeNames()[ownType] = "a type of one's own";
  calculator.LightPathTypeNames()[kWater] = "H2O";
  EXPECT_EQ(calculator.LightPathTypeNames().at(ownType), "a type of one's own");
  EXPECT_EQ(calculator.LightPathTypeNames().at(kWater), "H2O");
  EXPECT_EQ(LightPathCalculator().LightPathTypeNames().at(kWater), "Water");
}

TEST(LightPathCalculator, KeepsEveryResultThatIsSet) {
  LightPathCalculator calculator;
  calculator.SetFinalDirection({1, 2, 3});
  calculator.SetInitialDirection({4, 5, 6});
  calculator.SetStartPos({7, 8, 9});
  calculator.SetEndPos({10, 11, 12});
  calculator.SetAVPoint1({13, 14, 15});
  calculator.SetAVPoint2({16, 17, 18});
  calculator.SetAVPoint3({19, 20, 21});
  calculator.SetAVPoint4({22, 23, 24});
  calculator.SetLightPathType(kWaterReflection);
  EXPECT_EQ(calculator.GetFinalDirection(), TVector3(1, 2, 3));
  EXPECT_EQ(calculator.GetInitialDirection(), TVector3(4, 5, 6));
  EXPECT_EQ(calculator.GetStartPos(), TVector3(7, 8, 9));
  EXPECT_EQ(calculator.GetEndPos(), TVector3(10, 11, 12));
  EXPECT_EQ(calculator.GetAVPoint1(), TVector3(13, 14, 15));
  EXPECT_EQ(calculator.GetAVPoint2(), TVector3(16, 17, 18));
  EXPECT_EQ(calculator.GetAVPoint3(), TVector3(19, 20, 21));
  EXPECT_EQ(calculator.GetAVPoint4(), TVector3(22, 23, 24));
  EXPECT_EQ(calculator.GetLightPathType(), kWaterReflection);
}

TEST(LightPathCalculator, TakesAndGivesAWholePath) {
  LightPath path;
  path.FinalDirection = {1, 2, 3};
  path.InitialDirection = {4, 5, 6};
  path.StartPos = {7, 8, 9};
  path.EndPos = {10, 11, 12};
  path.AVPoint1 = {13, 14, 15};
  path.AVPoint2 = {16, 17, 18};
  path.AVPoint3 = {19, 20, 21};
  path.AVPoint4 = {22, 23, 24};
  path.LightPathType = kWaterThroughAV;
  LightPathCalculator calculator;
  calculator.SetLightPath(path);
  EXPECT_EQ(calculator.GetFinalDirection(), path.FinalDirection);
  EXPECT_EQ(calculator.GetInitialDirection(), path.InitialDirection);
  EXPECT_EQ(calculator.GetStartPos(), path.StartPos);
  EXPECT_EQ(calculator.GetEndPos(), path.EndPos);
  EXPECT_EQ(calculator.GetAVPoint1(), path.AVPoint1);
  EXPECT_EQ(calculator.GetAVPoint2(), path.AVPoint2);
  EXPECT_EQ(calculator.GetAVPoint3(), path.AVPoint3);
  EXPECT_EQ(calculator.GetAVPoint4(), path.AVPoint4);
  EXPECT_EQ(calculator.GetLightPathType(), kWaterThroughAV);
  EXPECT_EQ(calculator.GetLightPath().AVPoint4, path.AVPoint4);
  EXPECT_EQ(calculator.GetLightPath().LightPathType, kWaterThroughAV);
}

TEST(LightPathCalculator, CopiesAreIndependent) {
  LightPathCalculator first;
  LightPathCalculator second = first;
  second.SetLightPathType(kWater);
  second.LightPathTypeNames().clear();
  EXPECT_EQ(first.GetLightPathType(), kUninitialised);
  EXPECT_EQ(first.LightPathTypeNames().size(), 8U);
}

}  // namespace
}  // namespace ZARN::DU

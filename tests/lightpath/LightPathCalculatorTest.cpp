#include "lightpath/LightPathCalculator.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "db/DBErrors.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Tables;
using Numbers = std::vector<double>;

TEST(LightPathCalculator, StartsUninitialised) {
  const LightPathCalculator calculator;
  EXPECT_EQ(calculator.GetLightPathType(), kUninitialised);
  EXPECT_EQ(calculator.LightPathTypeNames().at(kUninitialised),
            "Light Path Uninitialised");
  EXPECT_EQ(calculator.GetStartPos(), TVector3(0, 0, 0));
  EXPECT_EQ(calculator.GetAVPoint1(), TVector3(0, 0, 0));
}

TEST(LightPathCalculator, NamesEveryType) {
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

TEST(LightPathCalculator, LetsCallersChangeNames) {
  LightPathCalculator calculator;
  const auto ownType = static_cast<eLightPathType>(kNumberOfLightPathTypes + 1);
  calculator.LightPathTypeNames()[ownType] = "a type of one's own";
  calculator.LightPathTypeNames()[kWater] = "H2O";
  EXPECT_EQ(calculator.LightPathTypeNames().at(ownType), "a type of one's own");
  EXPECT_EQ(calculator.LightPathTypeNames().at(kWater), "H2O");
  EXPECT_EQ(LightPathCalculator().LightPathTypeNames().at(kWater), "Water");
}

TEST(LightPathCalculator, ReturnsEveryResultThatIsSet) {
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

TEST(LightPathCalculator, SetsAndReturnsAWholePath) {
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

Tables VesselWithMedia() {
  Tables tables = Testing::VesselTables();
  tables.Set("OPTICS", "inner_av", "refractive_index", 1.5);
  tables.Set("OPTICS", "acrylic", "refractive_index", 1.49);
  return tables.Set("OPTICS", "water", "refractive_index", 1.33);
}

Tables VesselWithDispersion() {
  return VesselWithMedia()
      .Set("OPTICS", "water", "wavelength", Numbers{300, 500, 700})
      .Set("OPTICS", "water", "refractive_index", Numbers{1.36, 1.34, 1.32});
}

TEST(LightPathCalculator, ReadsTheVesselAndItsMedia) {
  VesselWithMedia().Load();
  LightPathCalculator calculator;
  calculator.BeginOfRun();
  EXPECT_EQ(calculator.GetMedia().InnerRadius, 5800);
  EXPECT_EQ(calculator.GetMedia().OuterRadius, 5860);
  EXPECT_EQ(calculator.GetMedia().RefractiveIndex,
            (PerMedium{1.5, 1.49, 1.33}));
  EXPECT_EQ(calculator.GetGroupIndices(), (PerMedium{1.5, 1.49, 1.33}));
}

TEST(LightPathCalculator, ReadsAGivenTableSetInsteadOfTheDatabase) {
  VesselWithMedia().Load();
  LightPathCalculator ofTheProcess;
  ofTheProcess.BeginOfRun();
  LightPathCalculator calculator;
  calculator.BeginOfRun(
      VesselWithMedia()
          .Set("SOLID", "acrylic_vessel_outer", "r_sphere", 6000.0)
          .Set("OPTICS", "water", "refractive_index", 1.4)
          .AsSet());
  EXPECT_EQ(calculator.GetMedia().OuterRadius, 6000);
  EXPECT_EQ(calculator.GetGroupIndices(), (PerMedium{1.5, 1.49, 1.4}));
  EXPECT_EQ(ofTheProcess.GetMedia().OuterRadius, 5860);
  ofTheProcess.BeginOfRun();
  EXPECT_EQ(ofTheProcess.GetMedia().OuterRadius, 5860);
  EXPECT_EQ(ofTheProcess.GetGroupIndices(), (PerMedium{1.5, 1.49, 1.33}));
}

TEST(LightPathCalculator, DoesNotFallBackToTheDatabase) {
  VesselWithMedia().Load();
  LightPathCalculator calculator;
  const Tables withoutWater = VesselWithMedia().Remove("OPTICS", "water");
  EXPECT_THROW(calculator.BeginOfRun(withoutWater.AsSet()), DBNotFoundError);
}

TEST(LightPathCalculator, UsesTheWavelengthSetBeforeOrAfterBeginOfRun) {
  VesselWithDispersion().Load();
  LightPathCalculator calculator;
  EXPECT_EQ(calculator.GetWavelength(), 400);
  calculator.BeginOfRun();
  EXPECT_DOUBLE_EQ(calculator.GetMedia().IndexIn(eMedium::kWater), 1.35);
  EXPECT_DOUBLE_EQ(calculator.GetGroupIndices()[2], 1.35 + 400 * 1e-4);
  calculator.SetWavelength(600);
  EXPECT_DOUBLE_EQ(calculator.GetMedia().IndexIn(eMedium::kWater), 1.33);
  calculator.BeginOfRun();
  EXPECT_DOUBLE_EQ(calculator.GetMedia().IndexIn(eMedium::kWater), 1.33);
  EXPECT_EQ(calculator.GetMedia().IndexIn(eMedium::kAcrylic), 1.49);
}

TEST(LightPathCalculator, WarnsOncePerRunAboutAWavelengthOutsideATable) {
  VesselWithDispersion().Load();
  const Testing::Captured captured(warn);
  LightPathCalculator calculator;
  calculator.SetWavelength(250);
  calculator.BeginOfRun();
  const std::string expected =
      "LightPathCalculator: 250 nm is outside the wavelengths of OPTICS water, "
      "300 to 700 nm: using the index at their end.\n";
  EXPECT_EQ(captured.Text(), expected);
  EXPECT_EQ(calculator.GetMedia().IndexIn(eMedium::kWater), 1.36);
  calculator.SetWavelength(800);
  calculator.SetWavelength(250);
  EXPECT_EQ(captured.Text(), expected);
  calculator.BeginOfRun();
  EXPECT_EQ(captured.Text(), expected + expected);
}

TEST(LightPathCalculator, RefusesAnInvalidWavelength) {
  LightPathCalculator calculator;
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bad : {0.0, -400.0, infinity, std::nan("")}) {
    EXPECT_THROW(calculator.SetWavelength(bad), std::invalid_argument);
  }
  EXPECT_EQ(calculator.GetWavelength(), 400);
}

TEST(LightPathCalculator, RefusesAnImpossibleVessel) {
  const auto errorOf = [](const std::string& index, double radius) {
    VesselWithMedia().Set("SOLID", index, "r_sphere", radius).Load();
    try {
      LightPathCalculator().BeginOfRun();
    } catch (const DBValueError& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  const std::string noRadius =
      ": the field r_sphere is not a finite number > 0";
  for (const char* index : {"acrylic_vessel_inner", "acrylic_vessel_outer"}) {
    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL}) {
      EXPECT_EQ(errorOf(index, bad),
                "table SOLID, index " + std::string(index) + noRadius);
    }
  }
  EXPECT_EQ(
      errorOf("acrylic_vessel_inner", 5860),
      "table SOLID, index acrylic_vessel_outer: the field r_sphere is not "
      "larger than that of acrylic_vessel_inner");
}

TEST(LightPathCalculator, KeepsThePreviousRunIfTablesAreBad) {
  VesselWithMedia().Load();
  LightPathCalculator calculator;
  calculator.BeginOfRun();
  VesselWithMedia()
      .Set("OPTICS", "inner_av", "refractive_index", 1.6)
      .Set("OPTICS", "water", "refractive_index", 0.5)
      .Load();
  EXPECT_THROW(calculator.BeginOfRun(), DBValueError);
  VesselWithMedia().Remove("OPTICS", "acrylic").Load();
  EXPECT_THROW(calculator.BeginOfRun(), DBNotFoundError);
  EXPECT_EQ(calculator.GetMedia().RefractiveIndex,
            (PerMedium{1.5, 1.49, 1.33}));
  calculator.CalcByPosition({0, 0, 0}, {0, 0, 8300});
  EXPECT_TRUE(calculator.HasPath());
}

TEST(LightPathCalculator, ThrowsBeforeBeginOfRun) {
  LightPathCalculator calculator;
  EXPECT_THROW(calculator.CalcByPosition({0, 0, 0}, {0, 0, 8300}),
               std::logic_error);
  EXPECT_THROW(calculator.CalcReflectionByPosition({0, 0, 7000}, {0, 0, 8300}),
               std::logic_error);
}

TEST(LightPathCalculator, ReturnsLengthsOfAPathThatWasSet) {
  VesselWithMedia().Load();
  LightPathCalculator calculator;
  calculator.BeginOfRun();
  LightPath path;
  path.LightPathType = kWaterThroughAV;
  path.StartPos = {0, 0, -8000};
  path.AVPoint1 = {0, 0, -5860};
  path.AVPoint2 = {0, 0, -5800};
  path.EndPos = {0, 0, -5000};
  path.FinalDirection = {0, 0, 2};
  path.AVPoint3 = {1, 2, 3};  // not of this type
  calculator.SetLightPath(path);
  EXPECT_EQ(calculator.GetLength(eMedium::kInnerAV), 0);
  EXPECT_EQ(calculator.GetLength(eMedium::kAcrylic), 60);
  EXPECT_EQ(calculator.GetLength(eMedium::kWater), 2140 + 800);
  EXPECT_DOUBLE_EQ(calculator.GetOpticalLength(), 1.49 * 60 + 1.33 * 2940);
  EXPECT_DOUBLE_EQ(calculator.GetTimeOfFlight(),
                   (1.49 * 60 + 1.33 * 2940) / 299.792458);
  EXPECT_DOUBLE_EQ(calculator.GetIncidenceAngle(), std::acos(-1.0));
}

TEST(LightPathCalculator, ReturnsZeroLengthsWithoutAPath) {
  VesselWithMedia().Load();
  LightPathCalculator calculator;
  calculator.BeginOfRun();
  LightPath path;
  path.EndPos = {1, 2, 3};
  path.FinalDirection = {1, 0, 0};
  for (const int type :
       {int{kUninitialised}, int{kNumberOfLightPathTypes}, -1}) {
    path.LightPathType = static_cast<eLightPathType>(type);
    calculator.SetLightPath(path);
    EXPECT_EQ(calculator.GetLength(eMedium::kWater), 0);
    EXPECT_EQ(calculator.GetOpticalLength(), 0);
    EXPECT_EQ(calculator.GetTimeOfFlight(), 0);
    EXPECT_EQ(calculator.GetIncidenceAngle(), 0);
  }
}

}  // namespace
}  // namespace ZARN::DU

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "tests/property/CalculatorPair.hpp"
#include "tests/property/Paths.hpp"

namespace ZARN::Testing {
namespace {

constexpr int kRows = 6000;

/// The fields of a row; the file has no quoted ones.
std::vector<std::string> Split(const std::string& row) {
  std::vector<std::string> fields;
  std::istringstream in(row + ",");
  for (std::string field; std::getline(in, field, ',');) {
    fields.push_back(field);
  }
  return fields;
}

DU::eLightPathType TypeOfName(const std::string& name) {
  for (std::size_t type = 0; type < DU::kLightPathTypeNames.size(); ++type) {
    if (name == DU::kLightPathTypeNames[type]) {
      return static_cast<DU::eLightPathType>(type);
    }
  }
  return DU::kNumberOfLightPathTypes;
}

TestPath PathOf(const std::vector<std::string>& fields) {
  constexpr std::array kColumns = {
      &DU::LightPath::StartPos,         &DU::LightPath::EndPos,
      &DU::LightPath::InitialDirection, &DU::LightPath::FinalDirection,
      &DU::LightPath::AVPoint1,         &DU::LightPath::AVPoint2,
      &DU::LightPath::AVPoint3,         &DU::LightPath::AVPoint4};
  TestPath result;
  result.path.LightPathType = TypeOfName(fields.at(0));
  std::size_t column = 1;
  for (const auto vector : kColumns) {
    for (int i = 0; i < 3; ++i) {
      // An empty field is a point that the type does not use.
      (result.path.*vector)(i) =
          std::strtod(fields.at(column++).c_str(), nullptr);
    }
  }
  return result;
}

TEST(ReferenceDetector, IsJudgedAsByThePlainCalculator) {
  DB::Get().Clear();
  LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
  CalculatorPair pair;
  ASSERT_TRUE(pair.BeginOfRun()) << pair.Difference();
  EXPECT_TRUE(pair.Plain().AVHDRopeInfoLoaded);
  EXPECT_TRUE(pair.Plain().SupportRopeInfoLoaded);
  EXPECT_TRUE(pair.Plain().BellyPlateInfoLoaded);
  EXPECT_TRUE(pair.Plain().NCDAnchorInfoLoaded);
  EXPECT_TRUE(pair.Plain().AVPipeInfoLoaded);
  EXPECT_TRUE(pair.Plain().NeckBossInfoLoaded);

  std::ifstream file(ZARN_DATA_DIR "/example-paths.csv");
  std::string row;
  ASSERT_TRUE(std::getline(file, row));  // the header
  std::map<DU::eShadowingComponent, int> blocked;
  std::map<DU::eLightPathType, int> types;
  for (int i = 0; i < kRows; ++i) {
    ASSERT_TRUE(std::getline(file, row)) << "after " << i << " rows";
    const TestPath path = PathOf(Split(row));
    ASSERT_TRUE(pair.Check(path))
        << "row " << i << ", " << Describe(path) << "\n"
        << pair.Difference();
    ++blocked[pair.Blocking()];
    ++types[path.path.LightPathType];
  }
  for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
    EXPECT_GT(blocked[component], 5) << DU::NameOf(component);
  }
  EXPECT_EQ(types.size(), 7U) << "all types but the uninitialised one";
}

}  // namespace
}  // namespace ZARN::Testing

#include "io/LightPathText.hpp"

#include <gtest/gtest.h>

#include <string>

#include "io/LightPathReader.hpp"
#include "lightpath/Crossings.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class LightPathTextTest : public ::ZARN::Testing::InFolder {};

/// A path of different numbers that have no exact decimal form.
DU::LightPath Path(DU::eLightPathType type) {
  double next = 1.0 / 3.0;
  const auto vector = [&next] {
    const double x = next *= -1.7;
    const double y = next *= -1.7;
    const double z = next *= -1.7;
    return TVector3(x, y, z);
  };
  DU::LightPath path;
  path.LightPathType = type;
  path.StartPos = vector();
  path.EndPos = vector();
  path.InitialDirection = vector();
  path.FinalDirection = vector();
  for (std::size_t i = 0; i < DU::kCrossings[type].size(); ++i) {
    path.*DU::kAVPoints[i] = vector();
  }
  return path;
}

TEST_F(LightPathTextTest, IsReadBackAsTheSamePath) {
  std::string text = LightPathHeader() + "\n";
  for (int type = DU::kInnerAVToWater; type < DU::kNumberOfLightPathTypes;
       ++type) {
    AppendLightPath(text, Path(static_cast<DU::eLightPathType>(type)));
    text += '\n';
  }
  Put("paths.csv", text);
  InputFile input("paths.csv");
  LightPathReader reader(input);
  CsvBlock block;
  ASSERT_TRUE(reader.Table().NextBlock(block));
  CsvRows rows = reader.Table().RowsOf(block);
  DU::LightPath read;
  for (int type = DU::kInnerAVToWater; type < DU::kNumberOfLightPathTypes;
       ++type) {
    const auto wanted = Path(static_cast<DU::eLightPathType>(type));
    ASSERT_TRUE(reader.Next(rows, read));
    EXPECT_EQ(read.LightPathType, type);
    EXPECT_EQ(reader.TypeName(rows),
              DU::kLightPathTypeNames[wanted.LightPathType]);
    EXPECT_EQ(read.StartPos, wanted.StartPos);
    EXPECT_EQ(read.EndPos, wanted.EndPos);
    EXPECT_EQ(read.InitialDirection, wanted.InitialDirection);
    EXPECT_EQ(read.FinalDirection, wanted.FinalDirection);
    for (const auto point : DU::kAVPoints) {
      EXPECT_EQ(read.*point, wanted.*point) << type;
    }
  }
  EXPECT_FALSE(reader.Next(rows, read));
}

TEST_F(LightPathTextTest, LeavesUnusedPointsEmpty) {
  DU::LightPath path;
  path.LightPathType = DU::kAVToWater;
  path.AVPoint1 = {1, 2, 3};
  path.AVPoint2 = {4, 5, 6};
  std::string text;
  AppendLightPath(text, path);
  EXPECT_EQ(text, "AV->Water,0,0,0,0,0,0,0,0,0,0,0,0,1,2,3,,,,,,,,,");
}

}  // namespace
}  // namespace ZARN::IO

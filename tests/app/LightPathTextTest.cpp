#include "app/LightPathText.hpp"

#include <gtest/gtest.h>

#include <string>

#include "app/LightPathReader.hpp"
#include "lightpath/Crossings.hpp"
#include "tests/app/InFolder.hpp"

namespace ZARN::App {
namespace {

class LightPathTextTest : public Testing::InFolder {};

/// A path whose every number is another one that decimals cannot hold.
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
    text += "\n";
  }
  Put("paths.csv", text);
  InputFile input("paths.csv");
  LightPathReader reader(input);
  DU::LightPathCalculator read;
  for (int type = DU::kInnerAVToWater; type < DU::kNumberOfLightPathTypes;
       ++type) {
    const auto wanted = Path(static_cast<DU::eLightPathType>(type));
    ASSERT_TRUE(reader.Next(read));
    EXPECT_EQ(read.GetLightPathType(), type);
    EXPECT_EQ(read.GetStartPos(), wanted.StartPos);
    EXPECT_EQ(read.GetEndPos(), wanted.EndPos);
    EXPECT_EQ(read.GetInitialDirection(), wanted.InitialDirection);
    EXPECT_EQ(read.GetFinalDirection(), wanted.FinalDirection);
    for (const auto point : DU::kAVPoints) {
      EXPECT_EQ(read.GetLightPath().*point, wanted.*point) << type;
    }
  }
  EXPECT_FALSE(reader.Next(read));
}

TEST_F(LightPathTextTest, LeavesPointsEmptyThatTheTypeDoesNotUse) {
  DU::LightPath path;
  path.LightPathType = DU::kAVToWater;
  path.AVPoint1 = {1, 2, 3};
  path.AVPoint2 = {4, 5, 6};
  std::string text;
  AppendLightPath(text, path);
  EXPECT_EQ(text, "AV->Water,0,0,0,0,0,0,0,0,0,0,0,0,1,2,3,,,,,,,,,");
}

}  // namespace
}  // namespace ZARN::App

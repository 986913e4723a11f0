#include "io/LightPathNTuple.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <cmath>
#include <cstdint>
#include <string>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class LightPathNTupleTest : public ::ZARN::Testing::InFolder {
 protected:
  static DU::LightPath PathInWater() {
    DU::LightPath path;
    path.LightPathType = DU::kWater;
    path.StartPos.SetXYZ(0.1, 2, 3);
    path.EndPos.SetXYZ(4, 5, 6);
    path.InitialDirection.SetXYZ(0, 0, 1);
    path.FinalDirection.SetXYZ(0, 1, 0);
    path.AVPoint1.SetXYZ(9, 9, 9);
    return path;
  }
  static DU::LightPath PathOutOfTheWall() {
    DU::LightPath path = PathInWater();
    path.LightPathType = DU::kAVToWater;
    return path;
  }

  const Origin origin_ = {"zarn-shadow", "1.2.3", 7, 150.5, 420.0, "ab12"};
};

TEST_F(LightPathNTupleTest, StoresEveryCoordinate) {
  {
    LightPathNTuple file("paths.root", origin_);
    file.Begin({false, true}, 1);
    file.BlockAt(0).Fill("e 1", "-5", PathInWater());
    file.BlockAt(0).Fill("e 1", "7", PathOutOfTheWall());
    file.BlockAt(0).Flush();
    file.BlockAt(0).Commit();
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("paths", "paths.root");
  EXPECT_EQ(reader->GetDescriptor().GetDescription(), Describe(origin_));
  ASSERT_EQ(reader->GetNEntries(), 2U);
  EXPECT_EQ(reader->GetView<std::string>("event")(1), "e 1");
  EXPECT_EQ(reader->GetView<std::int64_t>("pmt")(0), -5);
  EXPECT_EQ(reader->GetView<std::int64_t>("pmt")(1), 7);
  EXPECT_EQ(reader->GetView<std::string>("type")(0), "Water");
  EXPECT_EQ(reader->GetView<std::string>("type")(1), "AV->Water");
  EXPECT_EQ(reader->GetView<double>("start_x")(0), 0.1);
  EXPECT_EQ(reader->GetView<double>("end_z")(0), 6.0);
  EXPECT_EQ(reader->GetView<double>("initial_z")(0), 1.0);
  EXPECT_EQ(reader->GetView<double>("final_y")(0), 1.0);
  auto crossing = reader->GetView<double>("av1_x");
  EXPECT_TRUE(std::isnan(crossing(0))) << "a path in the water has none";
  EXPECT_EQ(crossing(1), 9.0);
  EXPECT_TRUE(std::isnan(reader->GetView<double>("av4_z")(1)));
}

TEST_F(LightPathNTupleTest, KeepsTheOrderInWhichBlocksAreCommitted) {
  {
    LightPathNTuple file("paths.root", origin_);
    file.Begin({true, true}, 2);
    file.BlockAt(1).Fill("2", "0", PathInWater());
    file.BlockAt(1).Flush();
    file.BlockAt(0).Fill("1", "0", PathInWater());
    file.BlockAt(0).Flush();
    file.BlockAt(0).Commit();
    file.BlockAt(1).Commit();
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("paths", "paths.root");
  ASSERT_EQ(reader->GetNEntries(), 2U);
  auto event = reader->GetView<std::int64_t>("event");
  EXPECT_EQ(event(0), 1);
  EXPECT_EQ(event(1), 2);
}

TEST_F(LightPathNTupleTest, StoresNoRows) {
  {
    LightPathNTuple file("paths.root", origin_);
    file.Finish();
    file.Commit();
  }
  EXPECT_EQ(ROOT::RNTupleReader::Open("paths", "paths.root")->GetNEntries(),
            0U);
}

TEST_F(LightPathNTupleTest, KeepsTheOldFileWithoutCommit) {
  Put("paths.root", "former");
  {
    LightPathNTuple file("paths.root", origin_);
    file.Begin({}, 1);
    file.BlockAt(0).Fill("a", "b", PathInWater());
  }
  EXPECT_EQ(Text("paths.root"), "former");
}

TEST_F(LightPathNTupleTest, ThrowsIfItCannotWrite) {
  EXPECT_THROW(LightPathNTuple("nowhere/paths.root", origin_), OutputFailure);
  EXPECT_THROW(LightPathNTuple("/dev/null", origin_), OutputFailure);
}

}  // namespace
}  // namespace ZARN::IO

#include "io/VerdictNTuple.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <filesystem>
#include <string>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;

class VerdictNTupleTest : public Testing::InFolder {};

const VerdictNTuple::Origin kOrigin = {"zarn-shadow", "1.2.3", 7, 150.5, 420.0};

TEST_F(VerdictNTupleTest, StoresEveryVerdictAndItsOrigin) {
  {
    VerdictNTuple file("verdicts.root", kOrigin);
    file.Fill("z=1", "a,\"b\"", DU::kAVToWater, eShadowingComponent::kAVPipe);
    file.Fill("z=1", "", DU::kWater, eShadowingComponent::kNone);
    file.Fill("z=2", "\xC3\xA4", DU::kUninitialised,
              eShadowingComponent::kNone);
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "verdicts.root");
  EXPECT_EQ(reader->GetDescriptor().GetDescription(),
            "{\"program\":\"zarn-shadow\",\"version\":\"1.2.3\","
            "\"run\":7,\"tolerance\":150.5,\"wavelength\":420.0}");
  ASSERT_EQ(reader->GetNEntries(), 3U);
  auto event = reader->GetView<std::string>("event");
  auto pmt = reader->GetView<std::string>("pmt");
  auto type = reader->GetView<std::string>("type");
  auto shadowed = reader->GetView<std::int32_t>("shadowed");
  auto by = reader->GetView<std::string>("by");
  EXPECT_EQ(event(0), "z=1");
  EXPECT_EQ(pmt(0), "a,\"b\"");
  EXPECT_EQ(type(0), "AV->Water");
  EXPECT_EQ(shadowed(0), 1);
  EXPECT_EQ(by(0), "AVPipe");
  EXPECT_EQ(pmt(1), "");
  EXPECT_EQ(type(1), "Water");
  EXPECT_EQ(shadowed(1), 0);
  EXPECT_EQ(by(1), "");
  EXPECT_EQ(event(2), "z=2");
  EXPECT_EQ(pmt(2), "\xC3\xA4");
  EXPECT_EQ(type(2), "");
  EXPECT_EQ(shadowed(2), -1);
  EXPECT_EQ(by(2), "no path");
}

TEST_F(VerdictNTupleTest, KeepsTheOldFileWithoutCommit) {
  Put("verdicts.root", "former");
  {
    VerdictNTuple file("verdicts.root", kOrigin);
    file.Fill("a", "b", DU::kUninitialised, eShadowingComponent::kNone);
  }
  EXPECT_EQ(Text("verdicts.root"), "former");
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& item :
       std::filesystem::directory_iterator(".")) {
    ++files;
  }
  EXPECT_EQ(files, 1U) << "a temporary file is left";
}

TEST_F(VerdictNTupleTest, ThrowsIfItCannotWrite) {
  EXPECT_THROW(VerdictNTuple("nowhere/verdicts.root", kOrigin), OutputFailure);
}

}  // namespace
}  // namespace ZARN::IO

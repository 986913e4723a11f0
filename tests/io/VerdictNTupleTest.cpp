#include "io/VerdictNTuple.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <cmath>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using DU::eVerdict;

class VerdictNTupleTest : public ::ZARN::Testing::InFolder {};

const Origin kOrigin = {"zarn-shadow", "1.2.3", 7, 150.5, 420.0, "ab12"};
const DU::LightPathCalculator kNoLightPath;

std::vector<NamedPosition> Named(const std::vector<std::string>& names) {
  std::vector<NamedPosition> items;
  for (const std::string& name : names)
    items.push_back({name, name, {1, 2, 3}});
  return items;
}

void Fill(VerdictNTuple::Block& block, std::size_t pmt, DU::eLightPathType type,
          eVerdict verdict) {
  const TVector3 position(0, 0, 5);
  block.Fill(pmt, type, {position, position, verdict, kNoLightPath});
}

void FinishAndCommit(VerdictNTuple& file) {
  file.Finish();
  file.Commit();
}

TEST_F(VerdictNTupleTest, StoresEveryVerdictAndItsOrigin) {
  const auto events = Named({"z=1", "z=2"});
  const auto pmts = Named({"a,\"b\"", "", "\xC3\xA4"});
  {
    VerdictNTuple file("verdicts.root", kOrigin, pmts);
    file.Begin({}, 1);
    VerdictNTuple::Block& block = file.BlockAt(0);
    block.SetEvent(events[0]);
    Fill(block, 0, DU::kAVToWater, eVerdict::kAVPipe);
    Fill(block, 1, DU::kWater, eVerdict::kClear);
    block.SetEvent(events[1]);
    Fill(block, 2, DU::kUninitialised, eVerdict::kTotalReflection);
    block.Flush();
    block.Commit();
    FinishAndCommit(file);
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "verdicts.root");
  EXPECT_EQ(reader->GetDescriptor().GetDescription(),
            "{\"program\":\"zarn-shadow\",\"version\":\"1.2.3\","
            "\"run\":7,\"tolerance\":150.5,\"wavelength\":420.0,"
            "\"fingerprint\":\"ab12\"}");
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

TEST_F(VerdictNTupleTest, StoresIntegersAndMoreColumns) {
  const auto events = Named({"-5"});
  const auto pmts = Named({"7", "8"});
  {
    VerdictNTuple file("verdicts.root", kOrigin, pmts);
    file.Begin({true,
                {FindPairColumn("code"), FindPairColumn("time"),
                 FindPairColumn("event_z")}},
               1);
    VerdictNTuple::Block& block = file.BlockAt(0);
    block.SetEvent(events[0]);
    Fill(block, 1, DU::kUninitialised, eVerdict::kEventAtPMT);
    block.Flush();
    block.Commit();
    FinishAndCommit(file);
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "verdicts.root");
  ASSERT_EQ(reader->GetNEntries(), 1U);
  EXPECT_EQ(reader->GetView<std::int64_t>("event")(0), -5);
  EXPECT_EQ(reader->GetView<std::int64_t>("pmt")(0), 8);
  EXPECT_EQ(reader->GetView<std::int32_t>("code")(0), 9);
  EXPECT_TRUE(std::isnan(reader->GetView<double>("time")(0)));
  EXPECT_EQ(reader->GetView<double>("event_z")(0), 5.0);
}

TEST_F(VerdictNTupleTest, AppendsBlocksInTheOrderOfTheirCommits) {
  const auto events = Named({"0", "1", "2", "3"});
  const auto pmts = Named({"p"});
  {
    VerdictNTuple file("verdicts.root", kOrigin, pmts);
    file.Begin({true, {}}, 2);
    const auto fill = [&](std::size_t block, std::size_t event) {
      file.BlockAt(block).SetEvent(events[event]);
      for (int i = 0; i < 1000; ++i) {
        Fill(file.BlockAt(block), 0, DU::kWater, eVerdict::kClear);
      }
      file.BlockAt(block).Flush();
    };
    for (const std::size_t event : {0U, 2U}) {
      std::thread other([&] { fill(1, event + 1); });
      fill(0, event);
      other.join();
      file.BlockAt(0).Commit();
      file.BlockAt(1).Commit();
    }
    FinishAndCommit(file);
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "verdicts.root");
  ASSERT_EQ(reader->GetNEntries(), 4000U);
  auto event = reader->GetView<std::int64_t>("event");
  for (std::size_t i = 0; i < 4000; ++i) ASSERT_EQ(event(i), i / 1000);
}

TEST_F(VerdictNTupleTest, IsValidWithoutRows) {
  const std::vector<NamedPosition> pmts;
  VerdictNTuple file("verdicts.root", kOrigin, pmts);
  FinishAndCommit(file);
  auto reader = ROOT::RNTupleReader::Open("verdicts", "verdicts.root");
  EXPECT_EQ(reader->GetNEntries(), 0U);
}

TEST_F(VerdictNTupleTest, KeepsTheOldFileWithoutCommit) {
  Put("verdicts.root", "former");
  {
    const auto events = Named({"a"});
    const auto pmts = Named({"b"});
    VerdictNTuple file("verdicts.root", kOrigin, pmts);
    file.Begin({}, 1);
    file.BlockAt(0).SetEvent(events[0]);
    Fill(file.BlockAt(0), 0, DU::kUninitialised, eVerdict::kEventAtPMT);
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
  const std::vector<NamedPosition> pmts;
  EXPECT_THROW(VerdictNTuple("nowhere/verdicts.root", kOrigin, pmts),
               OutputFailure);
}

}  // namespace
}  // namespace ZARN::IO

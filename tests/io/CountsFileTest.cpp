#include "io/CountsFile.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <cmath>
#include <cstdint>
#include <string>

#include "io/CsvText.hpp"
#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;

class CountsFileTest : public ::ZARN::Testing::InFolder {
 protected:
  static NamedPosition Named(const std::string& name) {
    return {name, CsvCell(name), {}};
  }

  const Origin origin_ = {"zarn-shadow", "1.2.3", 7, 150.5, 420.0, "ab12"};
};

TEST_F(CountsFileTest, WritesOneRowPerCall) {
  CountsFile file("counts.csv", "pmt", origin_);
  file.Write(Named("a"), 4, 1, eShadowingComponent::kAVHDRope);
  file.Write(Named("b,c"), 1, 0, eShadowingComponent::kNone);
  file.Write(Named("d"), 0, 0, eShadowingComponent::kNone);
  file.Finish();
  file.Commit();
  EXPECT_EQ(Text("counts.csv"),
            "pmt,paths,shadowed,fraction,by\n"
            "a,4,1,0.25,AVHDRope\n"
            "\"b,c\",1,0,0,\n"
            "d,0,0,,\n");
}

TEST_F(CountsFileTest, HasTheToleranceOfCountsAtSeveralTolerances) {
  const auto fill = [&](const std::string& name) {
    CountsFile file(name, "pmt", origin_, eCounts::kAtTolerances);
    file.Begin(true);
    file.Write(Named("7"), 4, 1, eShadowingComponent::kAVHDRope, {}, 12.5);
    file.Finish();
    file.Commit();
  };
  fill("counts.csv");
  EXPECT_EQ(Text("counts.csv"),
            "pmt,tolerance,paths,shadowed,fraction,by\n"
            "7,12.5,4,1,0.25,AVHDRope\n");
  fill("counts.root");
  auto reader = ROOT::RNTupleReader::Open("counts", "counts.root");
  EXPECT_EQ(reader->GetView<double>("tolerance")(0), 12.5);
  EXPECT_EQ(reader->GetView<std::uint64_t>("paths")(0), 4U);
}

TEST_F(CountsFileTest, WritesTheSameColumnsToAnRNTuple) {
  {
    CountsFile file("counts.root", "pmt", origin_);
    file.Begin(false);
    file.Write(Named("b,c"), 4, 1, eShadowingComponent::kAVHDRope);
    file.Write(Named(""), 0, 0, eShadowingComponent::kNone);
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("counts", "counts.root");
  EXPECT_EQ(reader->GetDescriptor().GetDescription(), Describe(origin_));
  ASSERT_EQ(reader->GetNEntries(), 2U);
  auto pmt = reader->GetView<std::string>("pmt");
  auto paths = reader->GetView<std::uint64_t>("paths");
  auto shadowed = reader->GetView<std::uint64_t>("shadowed");
  auto fraction = reader->GetView<double>("fraction");
  auto by = reader->GetView<std::string>("by");
  EXPECT_EQ(pmt(0), "b,c");
  EXPECT_EQ(paths(0), 4U);
  EXPECT_EQ(shadowed(0), 1U);
  EXPECT_EQ(fraction(0), 0.25);
  EXPECT_EQ(by(0), "AVHDRope");
  EXPECT_EQ(pmt(1), "");
  EXPECT_EQ(paths(1), 0U);
  EXPECT_EQ(shadowed(1), 0U);
  EXPECT_TRUE(std::isnan(fraction(1)));
  EXPECT_EQ(by(1), "");
}

TEST_F(CountsFileTest, WritesNumbersAsNamesOfAnRNTuple) {
  {
    CountsFile file("counts.root", "event", origin_);
    file.Begin(true);
    file.Write(Named("-12"), 4, 1, eShadowingComponent::kAVHDRope);
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("counts", "counts.root");
  EXPECT_EQ(reader->GetView<std::int64_t>("event")(0), -12);
}

TEST_F(CountsFileTest, WritesAnRNTupleWithoutRows) {
  {
    CountsFile file("counts.root", "event", origin_);
    file.Finish();
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("counts", "counts.root");
  EXPECT_EQ(reader->GetNEntries(), 0U);
}

TEST_F(CountsFileTest, KeepsTheOldFileWithoutCommit) {
  Put("counts.root", "former");
  {
    CountsFile file("counts.root", "event", origin_);
    file.Begin(true);
    file.Write(Named("1"), 4, 1, eShadowingComponent::kAVHDRope);
  }
  EXPECT_EQ(Text("counts.root"), "former");
}

TEST_F(CountsFileTest, ThrowsIfItCannotWrite) {
  for (const char* const name : {"nowhere/counts.root", "nowhere/counts.csv"}) {
    EXPECT_THROW(CountsFile(name, "event", origin_), OutputFailure) << name;
  }
}

}  // namespace
}  // namespace ZARN::IO

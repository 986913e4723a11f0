#include "io/CodeNTuple.hpp"

#include <gtest/gtest.h>

#include <ROOT/RNTupleReader.hxx>
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class CodeNTupleTest : public ::ZARN::Testing::InFolder {};

const Origin kOrigin = {
    "zarn-shadow-cluster", "1.2.3", 7, 150.5, 420.0, "ab12"};
constexpr std::array<std::uint8_t, 3> kDirect = {0, 6, 11};
constexpr std::array<std::uint8_t, 3> kReflected = {11, 1, 255};

TEST_F(CodeNTupleTest, StoresIntegersCodesAndItsOrigin) {
  {
    CodeNTuple file("codes.root", kOrigin, {"7", "-8", "9"},
                    {true, true, true});
    file.Add("-5", kDirect.data(), kReflected.data());
    file.Add("12", kReflected.data(), kDirect.data());
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "codes.root");
  EXPECT_EQ(reader->GetDescriptor().GetDescription(),
            "{\"program\":\"zarn-shadow-cluster\",\"version\":\"1.2.3\","
            "\"run\":7,\"tolerance\":150.5,\"wavelength\":420.0,"
            "\"fingerprint\":\"ab12\"}");
  ASSERT_EQ(reader->GetNEntries(), 6U);
  auto event = reader->GetView<std::int64_t>("event");
  auto pmt = reader->GetView<std::int64_t>("pmt");
  auto code = reader->GetView<std::uint8_t>("code");
  auto reflected = reader->GetView<std::uint8_t>("reflected_code");
  EXPECT_EQ(event(2), -5);
  EXPECT_EQ(event(3), 12);
  EXPECT_EQ(pmt(1), -8);
  EXPECT_EQ(pmt(5), 9);
  for (std::uint64_t i = 0; i < 3; ++i) {
    EXPECT_EQ(code(i), kDirect[i]);
    EXPECT_EQ(reflected(i), kReflected[i]);
    EXPECT_EQ(code(3 + i), kReflected[i]);
    EXPECT_EQ(reflected(3 + i), kDirect[i]);
  }
}

TEST_F(CodeNTupleTest, StoresNamesAndNoReflectionsThatAreNotThere) {
  {
    CodeNTuple file("codes.root", kOrigin, {"7", "007", "8"}, {});
    file.Add("z=1", kDirect.data(), nullptr);
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "codes.root");
  EXPECT_EQ(reader->GetView<std::string>("event")(2), "z=1");
  EXPECT_EQ(reader->GetView<std::string>("pmt")(1), "007");
  // Text, as all names of this input, though it is a whole number.
  EXPECT_EQ(reader->GetView<std::string>("pmt")(2), "8");
  EXPECT_EQ(reader->GetView<std::uint8_t>("code")(1), 6);
  EXPECT_EQ(reader->GetModel().GetFieldNames().count("reflected_code"), 0U);
}

TEST_F(CodeNTupleTest, WritesClustersOfABoundedSizeInTheOrderOfTheRows) {
  constexpr std::int64_t kEvents = 3000;
  const std::vector<std::uint8_t> codes(1000, 3);
  std::vector<std::string> pmts;
  for (int i = 0; i < 1000; ++i) pmts.push_back(std::to_string(i));
  {
    CodeNTuple file("codes.root", kOrigin, pmts, {true, true, false});
    for (std::int64_t i = 0; i < kEvents; ++i) {
      file.Add(std::to_string(i), codes.data(), nullptr);
    }
    file.Commit();
  }
  auto reader = ROOT::RNTupleReader::Open("verdicts", "codes.root");
  ASSERT_EQ(reader->GetNEntries(), 1000U * kEvents);
  EXPECT_EQ(reader->GetDescriptor().GetNClusters(), 3U);
  auto event = reader->GetView<std::int64_t>("event");
  auto pmt = reader->GetView<std::int64_t>("pmt");
  for (std::uint64_t i = 0; i < reader->GetNEntries(); i += 777) {
    ASSERT_EQ(event(i), static_cast<std::int64_t>(i / 1000));
    ASSERT_EQ(pmt(i), static_cast<std::int64_t>(i % 1000));
  }
}

TEST_F(CodeNTupleTest, LeavesNothingWithoutCommit) {
  {
    CodeNTuple file("codes.root", kOrigin, {"0", "1", "2"},
                    {true, true, false});
    file.Add("1", kDirect.data(), nullptr);
  }
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(CodeNTupleTest, RefusesAFileThatCannotBeWritten) {
  EXPECT_THROW(CodeNTuple("missing/codes.root", kOrigin, {"0"}, {}),
               OutputFailure);
}

}  // namespace
}  // namespace ZARN::IO

#include "io/PathSource.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/CsvText.hpp"
#include "io/Errors.hpp"
#include "io/LightPathText.hpp"
#include "tests/io/RootPathFiles.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using Testing::CoordinateOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using Testing::PathFile;

constexpr std::size_t kEntries = 5000;

/// The same paths as CSV and in ROOT files.
class PathSourceTest : public ::ZARN::Testing::InFolder {
 protected:
  void SetUp() override {
    InFolder::SetUp();
    const PathFile file = {kEntries, 1500, 2000, ""};
    file.WriteTree<double>("tree.root");
    file.WriteNTuple<double>("ntuple.root");
    std::string text = "event,pmt," + LightPathHeader() + "\n";
    for (std::size_t i = 0; i < kEntries; ++i) {
      const auto event = static_cast<long>(i) - 2;
      text += std::to_string(event) + ",pmt " + std::to_string(i) + "," +
              DU::kLightPathTypeNames[i % 8];
      for (std::size_t c = 0; c < 24; ++c) {
        text += ',';
        AppendNumber(text, CoordinateOf(i, c));
      }
      text += '\n';
    }
    Put("paths.csv", text);
  }

  static constexpr std::array<const char*, 3> kInputs = {
      "paths.csv", "tree.root", "ntuple.root"};

  /// The text of the error that a source reports.
  static std::string ErrorOf(const PathSource& source,
                             const TableError& error) {
    try {
      source.Fail(error);
    } catch (const BadInput& found) {
      return found.what();
    }
    return "";
  }
};

TEST_F(PathSourceTest, GivesThePathsOfEveryKindOfFile) {
  for (const char* const input : kInputs) {
    SCOPED_TRACE(input);
    const auto source = OpenPaths(input, {});
    EXPECT_THAT(source->NameColumns(), ElementsAre("event", "pmt"));
    const auto block = source->MakeBlock();
    std::size_t entry = 0;
    double doneBefore = 0.0;
    while (block->Read()) {
      block->Parse();
      ASSERT_FALSE(block->error.has_value());
      ASSERT_EQ(block->names.size(), 2 * block->paths.Size());
      for (std::size_t i = 0; i < block->paths.Size(); ++i, ++entry) {
        const DU::LightPath path = block->paths.Arrays().At(i);
        ASSERT_EQ(path.LightPathType, static_cast<int>(entry % 8));
        ASSERT_EQ(path.StartPos.X(), CoordinateOf(entry, 0));
        ASSERT_EQ(path.EndPos.Y(), CoordinateOf(entry, 4));
        ASSERT_EQ(path.InitialDirection.X(), CoordinateOf(entry, 6));
        ASSERT_EQ(path.FinalDirection.X(), CoordinateOf(entry, 9));
        ASSERT_EQ(path.AVPoint1.X(), CoordinateOf(entry, 12));
        ASSERT_EQ(path.AVPoint4.Z(), CoordinateOf(entry, 23));
        ASSERT_EQ(block->names[2 * i],
                  std::to_string(static_cast<long>(entry) - 2));
        ASSERT_EQ(block->names[2 * i + 1], "pmt " + std::to_string(entry));
      }
      block->Count();
      EXPECT_GT(source->Done(), doneBefore);
      doneBefore = source->Done().value();
    }
    EXPECT_EQ(entry, kEntries);
    EXPECT_EQ(doneBefore, 1.0);
    EXPECT_FALSE(block->Read());
  }
}

TEST_F(PathSourceTest, NamesThePlaceOfAnError) {
  for (const char* const input : kInputs) {
    const auto source = OpenPaths(input, {});
    const auto block = source->MakeBlock();
    ASSERT_TRUE(block->Read());
    block->Parse();
    const std::size_t first = block->paths.Size();
    ASSERT_GT(first, 10U);
    block->Count();
    ASSERT_TRUE(block->Read());
    block->Parse();
    const std::string row = std::to_string(first + 3);
    const bool isCsv = std::string(input) == "paths.csv";
    const std::string place =
        isCsv ? " (row " + row + "), column " : ", entry " + row;
    const auto typeError = ErrorOf(*source, block->TypeError(3, "odd type"));
    EXPECT_THAT(typeError, HasSubstr(place));
    EXPECT_THAT(typeError, HasSubstr("column type"));
    EXPECT_THAT(typeError, EndsWith(": odd type"));
    const auto nameError = ErrorOf(*source, block->NameError(3, 1, "odd name"));
    EXPECT_THAT(nameError, HasSubstr(place));
    EXPECT_THAT(nameError, HasSubstr("column pmt"));
  }
}

TEST_F(PathSourceTest, ReadsOneRow) {
  for (const char* const input : kInputs) {
    EXPECT_EQ(OpenPaths(input, {})->ReadRow(4321).StartPos.X(),
              CoordinateOf(4321, 0));
    try {
      OpenPaths(input, {})->ReadRow(kEntries);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const BadInput& error) {
      EXPECT_THAT(error.what(),
                  EndsWith(": there is no row 5001; the number of "
                           "rows is 5000"));
    }
  }
}

}  // namespace
}  // namespace ZARN::IO

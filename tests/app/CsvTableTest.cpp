#include "app/CsvTable.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Failure.hpp"
#include "app/InputFile.hpp"

namespace ZARN::App {
namespace {

using Rows = std::vector<std::vector<std::string>>;

class CsvTableTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "zarn-csv-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  CsvTable& Open(const std::string& text) {
    const std::string path = (folder_ / "table.csv").string();
    std::ofstream(path, std::ios::binary) << text;
    table_.reset();
    input_ = std::make_unique<InputFile>(path);
    table_ = std::make_unique<CsvTable>(*input_);
    return *table_;
  }

  /// All rows of a table with @p columns columns.
  Rows Read(const std::string& text, std::size_t columns) {
    CsvTable& table = Open(text);
    Rows rows;
    while (table.NextRow()) {
      EXPECT_EQ(table.Row(), rows.size());
      rows.emplace_back();
      for (std::size_t i = 0; i < columns; ++i) {
        rows.back().emplace_back(table.Cell(i));
      }
    }
    EXPECT_FALSE(table.NextRow()) << "a row after the last";
    return rows;
  }

  /// What the BadInput says, without the folder; empty if there was none.
  std::string Complaint(const std::string& text) {
    try {
      Read(text, 0);
    } catch (const BadInput& error) {
      const std::string what = error.what();
      const std::string folder = folder_.string() + "/";
      return what.rfind(folder, 0) == 0 ? what.substr(folder.size()) : what;
    }
    return "";
  }

 private:
  std::filesystem::path folder_;
  std::unique_ptr<InputFile> input_;
  std::unique_ptr<CsvTable> table_;
};

TEST_F(CsvTableTest, ReadsCellsAsTheyStand) {
  EXPECT_EQ(Read("a,b\n1,2\n x , \ty\n,\n", 2),
            (Rows{{"1", "2"}, {" x ", " \ty"}, {"", ""}}));
}

TEST_F(CsvTableTest, FindsColumnsByTheirWholeName) {
  CsvTable& table = Open("b,\"a\",, c,\n");
  EXPECT_EQ(table.FindColumn("b"), 0U);
  EXPECT_EQ(table.FindColumn("a"), 1U);
  EXPECT_EQ(table.FindColumn(" c"), 3U);
  EXPECT_EQ(table.FindColumn("c"), std::nullopt);
  EXPECT_EQ(table.FindColumn("A"), std::nullopt);
}

TEST_F(CsvTableTest, TakesQuotesAway) {
  EXPECT_EQ(Read("a,b\n\"1\",\"\"\n\"x,y\",\"say "
                 "\"\"no\"\"\"\n\"\"\"\",\"\"\"\"\"\"\n",
                 2),
            (Rows{{"1", ""}, {"x,y", "say \"no\""}, {"\"", "\"\""}}));
}

TEST_F(CsvTableTest, KeepsLineEndsWithinQuotes) {
  EXPECT_EQ(Read("a,b\n\"1\n2\",\"3\r\n4\r\"\n5,6\n", 2),
            (Rows{{"1\n2", "3\r\n4\r"}, {"5", "6"}}));
}

TEST_F(CsvTableTest, KeepsAnyByte) {
  std::string all;
  for (int c = 0; c < 256; ++c) {
    if (c != '"') all += static_cast<char>(c);
  }
  EXPECT_EQ(Read("a\n\"" + all + "\"\n", 1), (Rows{{all}}));
}

TEST_F(CsvTableTest, AcceptsBothLineEndsAndNoneAtTheEnd) {
  const Rows wanted = {{"1", "2"}, {"3", "4"}};
  EXPECT_EQ(Read("a,b\n1,2\n3,4\n", 2), wanted);
  EXPECT_EQ(Read("a,b\r\n1,2\r\n3,4\r\n", 2), wanted);
  EXPECT_EQ(Read("a,b\n1,2\r\n3,4", 2), wanted);
  EXPECT_EQ(Read("a,b\n1,2\n3,\"4\"", 2), wanted);
  EXPECT_EQ(Read("a,b\n1,2\n3,4\r", 2), wanted);
  EXPECT_EQ(Read("a,b\n1,2\n3,\"4\"\r", 2), wanted);
}

TEST_F(CsvTableTest, SkipsBlankLines) {
  EXPECT_EQ(Read("\n\r\na\n\n1\n\r\n\n2\n\n\n", 1), (Rows{{"1"}, {"2"}}));
}

TEST_F(CsvTableTest, DoesNotTakeQuotesForABlankLine) {
  EXPECT_EQ(Read("a\n\"\"\n\n\"\"\n", 1), (Rows{{""}, {""}}));
}

TEST_F(CsvTableTest, SkipsOneByteOrderMark) {
  const std::string mark = "\xEF\xBB\xBF";
  EXPECT_EQ(Open(mark + "a\n").FindColumn("a"), 0U);
  EXPECT_EQ(Open(mark + "\"a\"\n").FindColumn("a"), 0U);
  EXPECT_EQ(Open(mark + mark + "a\n").FindColumn(mark + "a"), 0U);
}

TEST_F(CsvTableTest, TakesPartOfAByteOrderMarkForText) {
  EXPECT_EQ(Open("\xEF"
                 "a\n")
                .FindColumn("\xEF"
                            "a"),
            0U);
  EXPECT_EQ(Open("\xEF\xBB"
                 "a\n")
                .FindColumn("\xEF\xBB"
                            "a"),
            0U);
}

TEST_F(CsvTableTest, RefusesAFileWithoutAHeader) {
  for (const char* text :
       {"", "\n", "\r\n\n", "\xEF\xBB\xBF", "\xEF\xBB\xBF\n"}) {
    EXPECT_EQ(Complaint(text), "table.csv: the file has no header row");
  }
}

TEST_F(CsvTableTest, RefusesAColumnThatIsNamedTwice) {
  EXPECT_EQ(Complaint("a,b,a\n"),
            "table.csv: line 1 (the header): the column \"a\" is named twice");
  EXPECT_EQ(Complaint("\n\na,a\n"),
            "table.csv: line 3 (the header): the column \"a\" is named twice");
  EXPECT_EQ(Complaint("a,,\n1,2,3\n"), "") << "columns without a name";
}

TEST_F(CsvTableTest, RefusesARowOfTheWrongLength) {
  EXPECT_THAT(Complaint("a,b,c\n1,2,3\n1,2\n"),
              ::testing::HasSubstr("table.csv: line 3 (row 1), column c: "));
  EXPECT_NE(Complaint("a,b\n1,2,3\n").find("line 2 (row 0)"),
            std::string::npos);
  EXPECT_NE(Complaint("a,b\n \n").find("line 2 (row 0)"), std::string::npos);
}

TEST_F(CsvTableTest, ShowsNoControlCharactersOfAColumnsName) {
  const std::string complaint = Complaint("a,\x1B[2J\n1\n");
  EXPECT_EQ(complaint.find('\x1B'), std::string::npos);
  EXPECT_THAT(complaint, testing::HasSubstr("column \\x1b[2J"));
}

TEST_F(CsvTableTest, RefusesWrongQuotes) {
  EXPECT_EQ(
      Complaint("a,b\n1,2\n\n3,\"4\n5"),
      "table.csv: line 4 (row 1), column b: the closing quote is missing");
  EXPECT_EQ(
      Complaint("a,b\n1,x\"y\"\n"),
      "table.csv: line 2 (row 0), column b: there is a quote within a cell "
      "that is not quoted");
  EXPECT_EQ(Complaint("a,b\n\"1\"x,2\n"),
            "table.csv: line 2 (row 0), column a: there is text behind the "
            "closing quote");
  EXPECT_NE(Complaint("a,\"b\n").find("line 1 (the header), column 2"),
            std::string::npos);
}

TEST_F(CsvTableTest, CountsLinesWithinQuotes) {
  EXPECT_NE(Complaint("a,\"b\nb\"\n\"1\n\n\",2\n1\n").find("line 6 (row 1)"),
            std::string::npos);
}

TEST_F(CsvTableTest, TakesALoneCarriageReturnForText) {
  EXPECT_EQ(Read("a,b\n1\r2,\r\r\n\r3,4\n", 2),
            (Rows{{"1\r2", "\r"}, {"\r3", "4"}}));
  EXPECT_NE(Complaint("a\n\"1\"\r2\n"), "");
}

TEST_F(CsvTableTest, FailNamesThePlaceOfTheCurrentRow) {
  CsvTable& table = Open("a,b\n\n1,2\n");
  ASSERT_TRUE(table.NextRow());
  try {
    table.Fail(1, "no");
    FAIL();
  } catch (const BadInput& error) {
    EXPECT_NE(std::string(error.what()).find("line 3 (row 0), column b: no"),
              std::string::npos);
  }
}

TEST_F(CsvTableTest, TakesLongRowsUpToALimit) {
  const std::string fits(1024UL * 1024, 'x');
  EXPECT_EQ(Read("a\n" + fits + "\n", 1), (Rows{{fits}}));
  EXPECT_NE(Complaint("a\n" + fits + "x\n"), "");
  EXPECT_NE(Complaint("a,b\n" + fits + ",x\n"), "");
  EXPECT_NE(Complaint("a,b\n1,2\n3,\"" + fits + "\n").find("line 3 (row 1)"),
            std::string::npos);
}

TEST_F(CsvTableTest, RefusesARowWithFarTooManyCells) {
  EXPECT_NE(Complaint("a\n" + std::string(3UL * 1024 * 1024, ',') + "\n"), "");
}

/// The same text, moved byte by byte over the end of the first 256 KiB that are
/// read at once.
TEST_F(CsvTableTest, ReadsAlikeWhereverItsBufferEnds) {
  constexpr std::size_t kBuffer = 256UL * 1024;
  const std::string text =
      "\"q\"\"u\r\no\",1\r\n\r\n\n2,\"\"\"\"\r\n\xEF\xBB\xBF,\"x\"\r";
  const std::string start = "a,b\n";
  for (std::size_t before = 0; before <= text.size() + 1; ++before) {
    SCOPED_TRACE(before);
    const std::string filler(kBuffer - before - start.size() - 3, 'f');
    const Rows wanted = {
        {filler, "g"}, {"q\"u\r\no", "1"}, {"2", "\""}, {"\xEF\xBB\xBF", "x"}};
    std::string whole = start;
    whole += filler;
    whole += ",g\n";
    ASSERT_EQ(Read(whole + text, 2), wanted);
  }
}

TEST_F(CsvTableTest, TellsLinesRightFarIntoALongFile) {
  std::string text = "a,b\n";
  for (int i = 0; i < 50000; ++i) text += "\"two\nlines\",2\r\n\n";
  EXPECT_NE(Complaint(text + "1\n").find("line 150002 (row 50000), column b"),
            std::string::npos);
}

}  // namespace
}  // namespace ZARN::App

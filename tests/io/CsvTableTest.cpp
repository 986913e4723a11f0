#include "io/CsvTable.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "io/InputFile.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using Rows = std::vector<std::vector<std::string>>;

class CsvTableTest : public ::ZARN::Testing::InFolder {
 protected:
  CsvTable& Open(const std::string& text,
                 std::size_t blockSize = CsvBlocks::kBlockSize) {
    Put("table.csv", text);
    table_.reset();
    input_ = std::make_unique<InputFile>("table.csv");
    table_ = std::make_unique<CsvTable>(*input_, blockSize);
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

  /// The text of the BadInput; empty if there was none.
  std::string ErrorText(const std::string& text) {
    try {
      Read(text, 0);
    } catch (const BadInput& error) {
      return error.what();
    }
    return "";
  }

  /// Everything read from a table of two columns: number, end and cells of each
  /// row, and the error after the last.
  std::vector<std::string> Contents(const std::string& text,
                                    std::size_t blockSize) {
    std::vector<std::string> contents;
    try {
      CsvTable& table = Open(text, blockSize);
      while (table.NextRow()) {
        contents.push_back(std::to_string(table.Row()) + " " +
                           std::to_string(table.BytesTaken()));
        for (std::size_t i = 0; i < 2; ++i) {
          contents.emplace_back(table.Cell(i));
        }
        if (table.Cell(0) == "wrong") table.Fail(1, "so it is");
      }
      contents.push_back("end " + std::to_string(table.BytesTaken()));
    } catch (const BadInput& error) {
      contents.emplace_back(error.what());
    }
    return contents;
  }

 private:
  std::unique_ptr<InputFile> input_;
  std::unique_ptr<CsvTable> table_;
};

TEST_F(CsvTableTest, ReadsCellsUnchanged) {
  EXPECT_EQ(Read("a,b\n1,2\n x , \ty\n,\n", 2),
            (Rows{{"1", "2"}, {" x ", " \ty"}, {"", ""}}));
}

TEST_F(CsvTableTest, FindsColumnsByTheirFullName) {
  CsvTable& table = Open("b,\"a\",, c,\n");
  EXPECT_EQ(table.FindColumn("b"), 0U);
  EXPECT_EQ(table.FindColumn("a"), 1U);
  EXPECT_EQ(table.FindColumn(" c"), 3U);
  EXPECT_EQ(table.FindColumn("c"), std::nullopt);
  EXPECT_EQ(table.FindColumn("A"), std::nullopt);
}

TEST_F(CsvTableTest, RemovesQuotes) {
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

TEST_F(CsvTableTest, AcceptsBothLineEndsAndNoLineEndAtTheEndOfFile) {
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

TEST_F(CsvTableTest, DoesNotTreatEmptyQuotesAsABlankLine) {
  EXPECT_EQ(Read("a\n\"\"\n\n\"\"\n", 1), (Rows{{""}, {""}}));
}

TEST_F(CsvTableTest, SkipsOneByteOrderMark) {
  const std::string mark = "\xEF\xBB\xBF";
  EXPECT_EQ(Open(mark + "a\n").FindColumn("a"), 0U);
  EXPECT_EQ(Open(mark + "\"a\"\n").FindColumn("a"), 0U);
  EXPECT_EQ(Open(mark + mark + "a\n").FindColumn(mark + "a"), 0U);
  EXPECT_EQ(Open(mark + "a\n").BytesTaken(), 5U);
}

TEST_F(CsvTableTest, TreatsPartOfAByteOrderMarkAsText) {
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
    EXPECT_EQ(ErrorText(text), "table.csv: the file has no header row");
  }
}

TEST_F(CsvTableTest, RefusesAColumnThatAppearsTwice) {
  EXPECT_EQ(ErrorText("a,b,a\n"),
            "table.csv: line 1 (the header): the column \"a\" appears twice");
  EXPECT_EQ(ErrorText("\n\na,a\n"),
            "table.csv: line 3 (the header): the column \"a\" appears twice");
  EXPECT_EQ(ErrorText("a,,\n1,2,3\n"), "") << "columns without a name";
}

TEST_F(CsvTableTest, RefusesARowWithTheWrongNumberOfCells) {
  EXPECT_THAT(ErrorText("a,b,c\n1,2,3\n1,2\n"),
              ::testing::HasSubstr("table.csv: line 3 (row 1), column c: "));
  EXPECT_NE(ErrorText("a,b\n1,2,3\n").find("line 2 (row 0)"),
            std::string::npos);
  EXPECT_NE(ErrorText("a,b\n \n").find("line 2 (row 0)"), std::string::npos);
}

TEST_F(CsvTableTest, EscapesControlCharactersInAColumnName) {
  const std::string error = ErrorText("a,\x1B[2J\n1\n");
  EXPECT_EQ(error.find('\x1B'), std::string::npos);
  EXPECT_THAT(error, testing::HasSubstr("column \\x1b[2J"));
}

TEST_F(CsvTableTest, RefusesWrongQuotes) {
  EXPECT_EQ(
      ErrorText("a,b\n1,2\n\n3,\"4\n5"),
      "table.csv: line 4 (row 1), column b: the closing quote is missing");
  EXPECT_EQ(ErrorText("a,b\n1,x\"y\"\n"),
            "table.csv: line 2 (row 0), column b: quote in an unquoted cell");
  EXPECT_EQ(
      ErrorText("a,b\n\"1\"x,2\n"),
      "table.csv: line 2 (row 0), column a: text after the closing quote");
  EXPECT_NE(ErrorText("a,\"b\n").find("line 1 (the header), column 2"),
            std::string::npos);
}

TEST_F(CsvTableTest, CountsLinesWithinQuotes) {
  EXPECT_NE(ErrorText("a,\"b\nb\"\n\"1\n\n\",2\n1\n").find("line 6 (row 1)"),
            std::string::npos);
}

TEST_F(CsvTableTest, TreatsALoneCarriageReturnAsText) {
  EXPECT_EQ(Read("a,b\n1\r2,\r\r\n\r3,4\n", 2),
            (Rows{{"1\r2", "\r"}, {"\r3", "4"}}));
  EXPECT_NE(ErrorText("a\n\"1\"\r2\n"), "");
}

TEST_F(CsvTableTest, FailNamesThePlaceOfTheCell) {
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

TEST_F(CsvTableTest, AcceptsLongRowsUpToALimit) {
  const std::string fits(1024UL * 1024, 'x');
  EXPECT_EQ(Read("a\n" + fits + "\n", 1), (Rows{{fits}}));
  EXPECT_NE(ErrorText("a\n" + fits + "x\n"), "");
  EXPECT_NE(ErrorText("a,b\n" + fits + ",x\n"), "");
  EXPECT_EQ(Read("a,b\n" + fits.substr(2) + ",x\n", 2),
            (Rows{{fits.substr(2), "x"}}));
  EXPECT_THAT(ErrorText("a,b\n" + fits.substr(1) + ",x\n"),
              testing::HasSubstr("column b: the row is longer than 1 MiB"))
      << "the end of a cell counts, too";
  EXPECT_NE(ErrorText("a,b\n1,2\n3,\"" + fits + "\n").find("line 3 (row 1)"),
            std::string::npos);
}

TEST_F(CsvTableTest, RefusesARowWithFarTooManyCells) {
  EXPECT_NE(ErrorText("a\n" + std::string(3UL * 1024 * 1024, ',') + "\n"), "");
}

/// The same text, shifted byte by byte across the end of the first 256 KiB,
/// which are read at once.
TEST_F(CsvTableTest, ReadsTheSameWhereverTheBufferEnds) {
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

/// Blocks are cut at row ends: with a small block size, a block ends at every
/// row of these texts.
TEST_F(CsvTableTest, ReadsTheSameWithBlocksOfEverySize) {
  for (const std::string text :
       {"a,b\n1,2\n3,4\n", "\xEF\xBB\xBF\n\r\na,\"b\nb\"\r\n\r\n1,2\r\n\n\n3,4",
        "a,b\n\"q\"\"u\r\no\",1\r\n\r\n\n2,\"\"\"\"\r\n\n\"\n\n\",\"x\"\r",
        "a,b\n\"1\n\n\",2\n\n1,2\nwrong,\"x\ny\"\n3,4,5\n",
        "a,b\n\"1\n\n\",2\n\r\n1\n1,2,3\n", "a,b\n1,2\n1,2,3\n\"x\n",
        "a,b\n1,2\n1,\"x\ny,1\n1,2\n3,4\n", "a,b\n1,2\n1,\"x\"y\n1,2\n",
        "a,b\n1,2\n1,x\"y\n1,\"2\"\n", "a,\"b\n1,2\n1,2\n", "a,a\n1,2\n",
        "a,b\n1\r,\r2\r\r\n\r3,4\r"}) {
    SCOPED_TRACE(::testing::PrintToString(text));
    const auto wanted = Contents(text, CsvBlocks::kBlockSize);
    for (std::size_t size = 1; size <= text.size(); ++size) {
      ASSERT_EQ(Contents(text, size), wanted) << "blocks of " << size;
    }
  }
}

TEST_F(CsvTableTest, ReturnsBlocksThatCanBeReadIndependently) {
  CsvTable& table = Open("\n\na,b\n1,2\n\n\"3\n\",4\n\n5,6\n7\n", 2);
  Rows rows;
  std::vector<CsvBlock> blocks;
  for (CsvBlock block; table.NextBlock(block);) blocks.push_back(block);
  EXPECT_GT(blocks.size(), 3U);
  EXPECT_EQ(table.BytesTaken(), 6U) << "only the header is counted yet";
  for (CsvBlock& block : blocks) {
    CsvRows read = table.RowsOf(block);
    try {
      while (read.Next()) {
        rows.push_back({std::string(read.Cell(0)), std::string(read.Cell(1))});
      }
    } catch (const TableError& error) {
      EXPECT_EQ(error.Where().line, 0U)
          << "counted from the start of its block";
      EXPECT_EQ(error.Where().row, 0U);
      EXPECT_EQ(error.Where().column, 1U);
      try {
        table.Fail(error);
      } catch (const BadInput& placed) {
        EXPECT_THAT(placed.what(), testing::StartsWith(
                                       "table.csv: line 10 (row 3), column b"));
      }
      continue;
    }
    table.Count(read.Read());
  }
  EXPECT_EQ(rows, (Rows{{"1", "2"}, {"3\n", "4"}, {"5", "6"}}));
}

TEST_F(CsvTableTest, ReportsTheRightLineFarIntoALongFile) {
  std::string text = "a,b\n";
  for (int i = 0; i < 50000; ++i) text += "\"two\nlines\",2\r\n\n";
  EXPECT_NE(ErrorText(text + "1\n").find("line 150002 (row 50000), column b"),
            std::string::npos);
}

}  // namespace
}  // namespace ZARN::IO

#include "io/CsvBlocks.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using Texts = std::vector<std::string>;

std::string TextOf(const CsvBlock& block) {
  return {block.bytes.data() + block.begin, block.end - block.begin};
}

class CsvBlocksTest : public ::ZARN::Testing::InFolder {
 protected:
  static Texts Cut(const std::string& text, std::size_t blockSize) {
    Put("table.csv", text);
    InputFile input("table.csv");
    CsvBlocks blocks(input, blockSize);
    Texts texts;
    CsvBlock block;
    while (blocks.Next(block)) texts.push_back(TextOf(block));
    EXPECT_FALSE(blocks.Next(block)) << "a block after the last";
    return texts;
  }
};

TEST_F(CsvBlocksTest, CutsAtTheEndOfTheLastCompleteRow) {
  EXPECT_EQ(Cut("a,b\n1,2\n3,4\n5", 9), (Texts{"a,b\n1,2\n", "3,4\n", "5"}));
  EXPECT_EQ(Cut("a,b\n1,2\n3,4\n5", 8), (Texts{"a,b\n1,2\n", "3,4\n", "5"}));
  EXPECT_EQ(Cut("a\r\n\r\nb\r\n", 1), (Texts{"a\r\n", "\r\n", "b\r\n"}));
  EXPECT_EQ(Cut("no line end", 3), (Texts{"no line end"}));
  EXPECT_EQ(Cut("", 3), (Texts{}));
}

TEST_F(CsvBlocksTest, DoesNotCutWithinQuotes) {
  const std::string row = "\"1\n\n2\",\"say \"\"\n\"\"\n\"\n";
  std::string text = row;
  text += "3\n";
  text += row;
  for (std::size_t size = 1; size < row.size(); ++size) {
    const std::string first = Cut(text, size).front();
    EXPECT_EQ(first.substr(0, row.size()), row) << size;
  }
  EXPECT_EQ(Cut(row + row, row.size() + 5), (Texts{row, row}));
  EXPECT_EQ(Cut("1\n\"2\n3\n", 100), (Texts{"1\n", "\"2\n3\n"}));
}

TEST_F(CsvBlocksTest, ReturnsTheWholeFileForEveryBlockSize) {
  std::string text;
  for (int i = 0; i < 60; ++i) {
    text += "\"" + std::string(static_cast<std::size_t>(i * 7 % 13), '\n') +
            "\",x" + std::string(static_cast<std::size_t>(i % 4), '\n') + "\n";
  }
  for (std::size_t size = 1; size < text.size() + 2; ++size) {
    std::string whole;
    for (const std::string& part : Cut(text, size)) {
      EXPECT_EQ(part.back(), '\n');
      whole += part;
    }
    ASSERT_EQ(whole, text) << size;
  }
}

TEST_F(CsvBlocksTest, ReturnsCompleteRowsOfASlowPipe) {
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  // Opening for reading and writing does not wait for the other end.
  const int writer = open("pipe", O_RDWR | O_CLOEXEC);
  ASSERT_GE(writer, 0);
  const auto feed = [writer](std::string_view text) {
    ASSERT_EQ(write(writer, text.data(), text.size()),
              static_cast<ssize_t>(text.size()));
  };
  InputFile input("pipe");
  CsvBlocks blocks(input);
  CsvBlock block;
  EXPECT_TRUE(blocks.WouldWait());
  feed("a\n1\n\"2");
  EXPECT_FALSE(blocks.WouldWait());
  ASSERT_TRUE(blocks.Next(block));
  EXPECT_EQ(TextOf(block), "a\n1\n");
  EXPECT_TRUE(blocks.WouldWait());
  feed("\"\n3");
  ASSERT_TRUE(blocks.Next(block));
  EXPECT_EQ(TextOf(block), "\"2\"\n");
  close(writer);
  EXPECT_FALSE(blocks.WouldWait());
  ASSERT_TRUE(blocks.Next(block));
  EXPECT_EQ(TextOf(block), "3");
  EXPECT_FALSE(blocks.Next(block));
  EXPECT_FALSE(blocks.WouldWait());
}

/// An endless row must not be read to its end. A row of bare commas is: its
/// cells are counted.
TEST_F(CsvBlocksTest, EndsABlockWithinARowThatIsTooLong) {
  constexpr std::size_t kMiB = 1024UL * 1024;
  for (const char c : {'x', '"', '\r', '\0'}) {
    const Texts texts = Cut("a\n" + std::string(10 * kMiB, c), kMiB);
    ASSERT_GE(texts.size(), 2U);
    EXPECT_EQ(texts[0], "a\n");
    EXPECT_LE(texts[1].size(), 6 * kMiB) << c;
    EXPECT_GT(texts[1].size(), 4 * kMiB) << c;
  }
  const std::string commas(10 * kMiB, ',');
  EXPECT_EQ(Cut("a\n" + commas + "\nb", kMiB),
            (Texts{"a\n", commas + "\n", "b"}));
}

}  // namespace
}  // namespace ZARN::IO

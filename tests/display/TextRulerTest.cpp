#include "display/TextRuler.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace ZARN::Display {
namespace {

constexpr Font kFont = {13.0};

TEST(MakePlain, ReplacesControlCharactersAndSpaces) {
  EXPECT_EQ(MakePlain("run\t1\r\n\x01\x7f<b>"), "run 1    <b>");
  EXPECT_EQ(MakePlain("a\u0085b\u2028c"), "a b c");
  EXPECT_EQ(MakePlain("10\u00A0mm"), "10\u00A0mm");
  EXPECT_EQ(MakePlain(std::string("a\0b", 3)), "a b");
}

TEST(MakePlain, DropsWhatTurnsWordsRound) {
  EXPECT_EQ(MakePlain("a\u200E\u200F\u061Cb"), "ab");
  EXPECT_EQ(MakePlain("\u202Aa\u202C\u202Bb\u202C\u202Dc\u202C\u202Ed\u202C"),
            "abcd");
  EXPECT_EQ(MakePlain("\u2066a\u2069\u2067b\u2069\u2068c\u2069"), "abc");
  // Letters that are written from the right stay, as do those that join.
  const std::string words = "\u05D0\u05D1 \u0627\u200D\u0628";
  EXPECT_EQ(MakePlain(words), words);
}

TEST(MakePlain, ReplacesWhatIsNoText) {
  EXPECT_EQ(MakePlain("\xff\xfe"), "\uFFFD\uFFFD");
  EXPECT_EQ(MakePlain("caf\xc3"), "caf\uFFFD");
  EXPECT_EQ(MakePlain("\xed\xa0\x80").substr(0, 3), "\uFFFD");
  EXPECT_EQ(MakePlain("\uFFFE"), "\uFFFD");
  EXPECT_EQ(MakePlain("d\u00e9tecteur \u2460"), "d\u00e9tecteur \u2460");
}

TEST(TextRuler, MeasuresInProportionToTheSize) {
  const TextRuler ruler;
  const double width = ruler.WidthOf("Hold-down ropes", kFont);
  EXPECT_GT(width, 80.0);
  EXPECT_LT(width, 120.0);
  EXPECT_NEAR(ruler.WidthOf("Hold-down ropes", {26.0}), 2.0 * width, 0.02);
  EXPECT_GT(ruler.WidthOf("Hold-down ropes", {13.0, eWeight::kBold}), width);
  EXPECT_EQ(ruler.WidthOf("", kFont), 0.0);
}

TEST(TextRuler, ShortensOnlyWhatIsTooLong) {
  const TextRuler ruler;
  EXPECT_EQ(ruler.Shorten("short", kFont, 100.0), "short");
  std::string words;
  for (int i = 0; i < 30; ++i) words += "\u00e9";  // two bytes each
  for (double width = 20.0; width < 140.0; width += 1.0) {
    const std::string shortened = ruler.Shorten(words, kFont, width);
    EXPECT_LE(ruler.WidthOf(shortened, kFont), width);
    EXPECT_EQ(MakePlain(shortened), shortened);     // no broken character
    const std::size_t kept = shortened.size() - 3;  // less the ellipsis
    EXPECT_GT(ruler.WidthOf(words.substr(0, kept + 2) + "\u2026", kFont),
              width);
  }
  EXPECT_EQ(ruler.Shorten(words, kFont, 1.0), "\u2026");
}

TEST(TextRuler, WrapsAtSpaces) {
  const TextRuler ruler;
  const std::string words = "one two three four five six seven";
  const auto lines = ruler.Wrap(words, kFont, 80.0, 10);
  ASSERT_GT(lines.size(), 2U);
  std::string joined;
  for (const auto& line : lines) {
    EXPECT_LE(ruler.WidthOf(line, kFont), 80.0);
    joined += (joined.empty() ? "" : " ") + line;
  }
  EXPECT_EQ(joined, words);
}

TEST(TextRuler, EndsWithAnEllipsisWhatHasNoRoom) {
  const TextRuler ruler;
  const auto two = ruler.Wrap("one two three four five six", kFont, 60.0, 2);
  ASSERT_EQ(two.size(), 2U);
  EXPECT_EQ(two[1].substr(two[1].size() - 3), "\u2026");
  const auto word = ruler.Wrap(std::string(300, 'x'), kFont, 60.0, 3);
  ASSERT_EQ(word.size(), 1U);
  EXPECT_LE(ruler.WidthOf(word[0], kFont), 60.0);
}

// Fonts are found once in a process, so this needs one of its own.
TEST(TextRulerDeathTest, SaysThatNoFontIsInstalled) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const auto file = std::filesystem::temp_directory_path() /
                          ("zarn-no-fonts-" + std::to_string(getpid()));
        std::ofstream(file) << "<fontconfig></fontconfig>";
        setenv("FONTCONFIG_FILE", file.c_str(), 1);
        try {
          const TextRuler ruler;
        } catch (const std::runtime_error& error) {
          std::filesystem::remove(file);
          std::cerr << error.what() << std::flush;
          std::_Exit(3);
        }
        std::_Exit(0);
      },
      testing::ExitedWithCode(3), "no font is installed");
}

}  // namespace
}  // namespace ZARN::Display

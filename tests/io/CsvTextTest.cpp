#include "io/CsvText.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "io/Numbers.hpp"

namespace ZARN::IO {
namespace {

TEST(CsvCell, LeavesPlainTextUnchanged) {
  for (const char* text :
       {"", "a", " a b ", "-1.5e3", "'", "\xC3\xA4", "a;b"}) {
    EXPECT_EQ(CsvCell(text), text);
  }
}

TEST(CsvCell, QuotesWhatWouldBreakTheRow) {
  EXPECT_EQ(CsvCell("a,b"), "\"a,b\"");
  EXPECT_EQ(CsvCell("say \"no\""), "\"say \"\"no\"\"\"");
  EXPECT_EQ(CsvCell("two\nlines"), "\"two\nlines\"");
  EXPECT_EQ(CsvCell("old\rline"), "\"old\rline\"");
  EXPECT_EQ(CsvCell("\""), "\"\"\"\"");
}

TEST(AppendNumber, ReadsBackAsTheSameDouble) {
  for (const double value : {0.0, -0.0, 0.1, 1.0 / 3.0, -5860.0000000000009,
                             1e300, 5e-324, std::numeric_limits<double>::min(),
                             -std::numeric_limits<double>::max()}) {
    std::string text = "x";
    AppendNumber(text, value);
    const NumberOrReason back = ParseNumber(text.substr(1));
    ASSERT_EQ(back.reason, nullptr) << text;
    EXPECT_EQ(back.value, value) << text;
    EXPECT_EQ(std::signbit(back.value), std::signbit(value)) << text;
  }
}

TEST(AppendNumber, WritesTheShortestText) {
  std::string text;
  AppendNumber(text, 0.1);
  AppendNumber(text, -8300.0);
  EXPECT_EQ(text, "0.1-8300");
}

}  // namespace
}  // namespace ZARN::IO

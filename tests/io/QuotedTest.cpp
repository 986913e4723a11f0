#include "io/Quoted.hpp"

#include <gtest/gtest.h>

#include <string>

namespace ZARN::IO {
namespace {

TEST(Quoted, ShowsPlainTextUnchanged) {
  EXPECT_EQ(Quoted(""), "\"\"");
  EXPECT_EQ(Quoted("AV->Water \xC3\xA9"), "\"AV->Water \xC3\xA9\"");
}

TEST(Quoted, EscapesControlCharacters) {
  using namespace std::string_literals;
  EXPECT_EQ(Quoted("\x1B[2J\n\0\x7F"s), "\"\\x1b[2J\\x0a\\x00\\x7f\"");
}

TEST(Quoted, TruncatesLongText) {
  EXPECT_EQ(Quoted(std::string(60, 'x')), "\"" + std::string(60, 'x') + "\"");
  EXPECT_EQ(Quoted(std::string(61, 'x')),
            "\"" + std::string(60, 'x') + "...\"");
}

TEST(Escaped, KeepsLongText) {
  EXPECT_EQ(Escaped(std::string(100, 'x') + "\n"),
            std::string(100, 'x') + "\\x0a");
}

}  // namespace
}  // namespace ZARN::IO

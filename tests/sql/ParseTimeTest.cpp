#include <gtest/gtest.h>

#include <string>

#include "sql/TableStore.hpp"
#include "sql/TimeText.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::SQL {
namespace {

TEST(ParseTime, TakesADateAsItsEnd) {
  EXPECT_EQ(ParseTime("2026-01-31"), "2026-01-31T23:59:59.999999Z");
}

TEST(ParseTime, TakesTimesWithAndWithoutSeconds) {
  EXPECT_EQ(ParseTime("2026-01-31T12:00Z"), "2026-01-31T12:00:00.000000Z");
  EXPECT_EQ(ParseTime("2026-01-31 12:34:56Z"), "2026-01-31T12:34:56.000000Z");
  EXPECT_EQ(ParseTime("2026-01-31T12:34:56.5Z"), "2026-01-31T12:34:56.500000Z");
  EXPECT_EQ(ParseTime("2026-01-31T12:34:56.1234567Z"),
            "2026-01-31T12:34:56.123456Z");
}

TEST(ParseTime, ConvertsOffsetsToUtc) {
  EXPECT_EQ(ParseTime("2026-01-01T00:30:00+01:00"),
            "2025-12-31T23:30:00.000000Z");
  EXPECT_EQ(ParseTime("2024-02-28T20:30-0530"), "2024-02-29T02:00:00.000000Z");
}

TEST(ParseTime, LeavesItsOwnTextAsItIs) {
  for (const char* const text :
       {"2026-01-31T12:00:00.000001Z", "1066-10-14T09:00:00.000000Z",
        "1969-12-31T23:59:59.999999Z", "9998-12-31T23:59:59.999999Z"}) {
    EXPECT_EQ(ParseTime(text), text);
    EXPECT_EQ(TimeText(ToMicroseconds(text)), text);
  }
}

TEST(ParseTime, RefusesEverythingElse) {
  for (const char* const text :
       {"", "yesterday", "2026", "2026-13-01", "2026-02-29", "2026-1-31",
        "2026-01-32", "2026-01-31T12:00:00", "2026-01-31T24:00Z",
        "2026-01-31T12:60Z", "2026-01-31T12:00:60Z", "2026-01-31T12:00:00.Z",
        "2026-01-31T12:00:00Zx", "2026-01-31T12:00+1", " 2026-01-31",
        "2026-01-31T", "+026-01-31", "2026--1-31", "2026-01-31T12:00+24:00"}) {
    const std::string said =
        ZARN::Testing::TextOf<std::invalid_argument>([&] { ParseTime(text); });
    EXPECT_EQ(said.rfind("\"" + std::string(text) + "\" is not a time; ", 0),
              0U)
        << said;
  }
}

}  // namespace
}  // namespace ZARN::SQL

#include "io/IntegerName.hpp"

#include <gtest/gtest.h>

namespace ZARN::IO {
namespace {

TEST(IntegerName, ReadsWholeNumbersInTheirUsualForm) {
  EXPECT_EQ(IntegerOf("0"), 0);
  EXPECT_EQ(IntegerOf("-12"), -12);
  EXPECT_EQ(IntegerOf("9223372036854775807"), INT64_MAX);
  EXPECT_EQ(IntegerOf("-9223372036854775808"), INT64_MIN);
}

TEST(IntegerName, RefusesWhatANumberWouldNotGiveBack) {
  for (const char* name : {"", "a", "7a", " 7", "7 ", "+7", "007", "-0", "7.0",
                           "1e3", "9223372036854775808"}) {
    EXPECT_EQ(IntegerOf(name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace ZARN::IO

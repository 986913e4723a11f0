// On in this file, whatever the build sets.
#undef ZARN_ASSERTIONS
#define ZARN_ASSERTIONS
#include "log/Assert.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace ZARN {
namespace {

TEST(Assert, DoesNothingIfTheConditionHolds) {
  int asked = 0;
  ZARN_ASSERT(++asked == 1, asked);
  EXPECT_EQ(asked, 1);
}

TEST(AssertDeathTest, PrintsConditionAndNumbersAndAborts) {
  const int cell = 17;
  const std::uint8_t cells = 16;
  EXPECT_DEATH(ZARN_ASSERT(cell < cells, cell, cells),
               "AssertTest.cpp:[0-9]+: cell < cells does not hold: "
               "cell, cells = 17, 16\n");
}

TEST(AssertDeathTest, PrintsAllDigitsOfANumber) {
  const double third = 1.0 / 3.0;
  EXPECT_DEATH(ZARN_ASSERT(third > 1.0, third), "= 0.33333333333333331\n");
}

TEST(Assert, WorksInAConstantExpression) {
  constexpr auto kHalf = [](int number) {
    ZARN_ASSERT(number % 2 == 0, number);
    return number / 2;
  };
  static_assert(kHalf(4) == 2);
}

}  // namespace
}  // namespace ZARN

#include "log/Grouped.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace ZARN {
namespace {

TEST(Grouped, SeparatesThousands) {
  EXPECT_EQ(Grouped(0), "0");
  EXPECT_EQ(Grouped(7), "7");
  EXPECT_EQ(Grouped(999), "999");
  EXPECT_EQ(Grouped(1000), "1,000");
  EXPECT_EQ(Grouped(12345), "12,345");
  EXPECT_EQ(Grouped(999999), "999,999");
  EXPECT_EQ(Grouped(1000000), "1,000,000");
  EXPECT_EQ(Grouped(1234567), "1,234,567");
  EXPECT_EQ(Grouped(std::numeric_limits<std::uint64_t>::max()),
            "18,446,744,073,709,551,615");
}

}  // namespace
}  // namespace ZARN

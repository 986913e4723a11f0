// Off in this file, whatever the build sets.
#undef ZARN_ASSERTIONS
#include "log/Assert.hpp"

#include <gtest/gtest.h>

namespace ZARN {
namespace {

TEST(AssertOff, DoesNotEvaluateTheCondition) {
  int asked = 0;
  ZARN_ASSERT(++asked == 0, ++asked);
  EXPECT_EQ(asked, 0);
}

}  // namespace
}  // namespace ZARN

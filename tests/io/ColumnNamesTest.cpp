#include "io/ColumnNames.hpp"

#include <gtest/gtest.h>

namespace ZARN::IO {
namespace {

TEST(ColumnNames, AreOursUnlessOthersAreGiven) {
  const ColumnNames names({{"start_x", "evt.x"}, {"type", "kind"}});
  EXPECT_EQ(names.Of("start_x"), "evt.x");
  EXPECT_EQ(names.Of("start_y"), "start_y");
  EXPECT_TRUE(names.Has("type"));
  EXPECT_FALSE(names.Has("kind"));
}

TEST(ColumnNames, SuggestTheNearestForOneThatWasGiven) {
  const ColumnNames names({{"start_x", "evt.x"}, {"end_x", "pos.x"}});
  EXPECT_EQ(names.DescribeMissing({"start_y", "evt.x"}, {"start_z", "evt_x"}),
            "missing columns: start_y, evt.x; did you mean evt_x?");
  EXPECT_EQ(names.DescribeMissing({"start_y"}, {"start_z"}),
            "missing columns: start_y");
  EXPECT_EQ(names.DescribeMissing({"pos.x"}, {"nothing like it"}),
            "missing columns: pos.x");
}

}  // namespace
}  // namespace ZARN::IO

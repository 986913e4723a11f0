#include "io/CountsFile.hpp"

#include <gtest/gtest.h>

#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;

class CountsFileTest : public Testing::InFolder {};

TEST_F(CountsFileTest, WritesOneRowPerCall) {
  CountsFile file("counts.csv", "pmt");
  file.Write("a", 4, 1, eShadowingComponent::kAVHDRope);
  file.Write("\"b,c\"", 1, 0, eShadowingComponent::kNone);
  file.Write("d", 0, 0, eShadowingComponent::kNone);
  file.Finish();
  file.Commit();
  EXPECT_EQ(Text("counts.csv"),
            "pmt,paths,shadowed,fraction,by\n"
            "a,4,1,0.25,AVHDRope\n"
            "\"b,c\",1,0,0,\n"
            "d,0,0,,\n");
}

}  // namespace
}  // namespace ZARN::IO

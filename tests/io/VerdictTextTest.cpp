#include "io/VerdictText.hpp"

#include <gtest/gtest.h>

#include <string>

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;

TEST(VerdictText, WritesWhetherAPathIsShadowedAndByWhat) {
  std::string text = "7,";
  AppendVerdict(text, eShadowingComponent::kBellyPlate);
  EXPECT_EQ(text, "7,1,BellyPlate");
  text.clear();
  AppendVerdict(text, eShadowingComponent::kNone);
  EXPECT_EQ(text, "0,");
}

TEST(VerdictText, WritesTheTypeOfThePathOrNoPath) {
  std::string text = "a,b,";
  AppendPathVerdict(text, DU::kAVToWater, eShadowingComponent::kAVPipe);
  EXPECT_EQ(text, "a,b,AV->Water,1,AVPipe");
  text = "a,b,";
  AppendPathVerdict(text, DU::kUninitialised, eShadowingComponent::kNone);
  EXPECT_EQ(text, "a,b,,,no path");
}

}  // namespace
}  // namespace ZARN::IO

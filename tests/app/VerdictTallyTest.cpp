#include "app/VerdictTally.hpp"

#include <gtest/gtest.h>

#include "app/TallyFile.hpp"
#include "tests/app/InFolder.hpp"

namespace ZARN::App {
namespace {

using DU::eShadowingComponent;

TEST(VerdictTally, CountsPathsAndShadowedOnes) {
  VerdictTally tally;
  EXPECT_EQ(tally.Paths(), 0U);
  EXPECT_EQ(tally.MostFrequent(), eShadowingComponent::kNone);
  tally.Add(eShadowingComponent::kNone);
  EXPECT_EQ(tally.MostFrequent(), eShadowingComponent::kNone);
  tally.Add(eShadowingComponent::kNeckBoss);
  tally.Add(eShadowingComponent::kNone);
  EXPECT_EQ(tally.Paths(), 3U);
  EXPECT_EQ(tally.Shadowed(), 1U);
  EXPECT_EQ(tally.MostFrequent(), eShadowingComponent::kNeckBoss);
}

TEST(VerdictTally, NamesTheComponentTestedFirstOfTwoThatAreLevel) {
  VerdictTally tally;
  tally.Add(eShadowingComponent::kAVPipe);
  tally.Add(eShadowingComponent::kBellyPlate);
  EXPECT_EQ(tally.MostFrequent(), eShadowingComponent::kBellyPlate);
  tally.Add(eShadowingComponent::kAVPipe);
  EXPECT_EQ(tally.MostFrequent(), eShadowingComponent::kAVPipe);
}

class TallyFileTest : public Testing::InFolder {};

TEST_F(TallyFileTest, WritesARowForEach) {
  VerdictTally some;
  some.Add(eShadowingComponent::kAVHDRope);
  for (int i = 0; i < 3; ++i) some.Add(eShadowingComponent::kNone);
  VerdictTally clear;
  clear.Add(eShadowingComponent::kNone);
  TallyFile file("counts.csv", "pmt");
  file.Write("a", some);
  file.Write("\"b,c\"", clear);
  file.Write("d", VerdictTally());
  file.Finish();
  file.Commit();
  EXPECT_EQ(Text("counts.csv"),
            "pmt,paths,shadowed,fraction,by\n"
            "a,4,1,0.25,AVHDRope\n"
            "\"b,c\",1,0,0,\n"
            "d,0,0,,\n");
}

}  // namespace
}  // namespace ZARN::App

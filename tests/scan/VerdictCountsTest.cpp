#include "scan/VerdictCounts.hpp"

#include <gtest/gtest.h>

namespace ZARN::Scan {
namespace {

using DU::eShadowingComponent;

TEST(VerdictCounts, CountsPathsAndShadowedOnes) {
  VerdictCounts counts;
  EXPECT_EQ(counts.Paths(), 0U);
  EXPECT_EQ(counts.MostFrequent(), eShadowingComponent::kNone);
  counts.Add(eShadowingComponent::kNone);
  EXPECT_EQ(counts.MostFrequent(), eShadowingComponent::kNone);
  counts.Add(eShadowingComponent::kNeckBoss);
  counts.Add(eShadowingComponent::kNone);
  EXPECT_EQ(counts.Paths(), 3U);
  EXPECT_EQ(counts.Shadowed(), 1U);
  EXPECT_EQ(counts.Of(eShadowingComponent::kNone), 2U);
  EXPECT_EQ(counts.Of(eShadowingComponent::kNeckBoss), 1U);
  EXPECT_EQ(counts.Of(eShadowingComponent::kAVPipe), 0U);
  EXPECT_EQ(counts.MostFrequent(), eShadowingComponent::kNeckBoss);
}

TEST(VerdictCounts, NamesTheComponentTestedFirstOnATie) {
  VerdictCounts counts;
  counts.Add(eShadowingComponent::kAVPipe);
  counts.Add(eShadowingComponent::kBellyPlate);
  EXPECT_EQ(counts.MostFrequent(), eShadowingComponent::kBellyPlate);
  counts.Add(eShadowingComponent::kAVPipe);
  EXPECT_EQ(counts.MostFrequent(), eShadowingComponent::kAVPipe);
}

}  // namespace
}  // namespace ZARN::Scan

#include "scan/VerdictCounts.hpp"

#include <gtest/gtest.h>

#include <vector>

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

TEST(VerdictCounts, CountsALongRowAndSkipsReasonsWithoutAPath) {
  std::vector<DU::eVerdict> row;
  for (int i = 0; i < 12000; ++i) {
    row.push_back(static_cast<DU::eVerdict>(i % 12));
  }
  row.insert(row.end(), 700, DU::eVerdict::kClear);
  VerdictCounts counts;
  counts.AddRow(row.data(), row.size());
  EXPECT_EQ(counts.Paths(), 7700U);
  EXPECT_EQ(counts.Of(eShadowingComponent::kNone), 1700U);
  for (const auto component : DU::kShadowingComponents) {
    EXPECT_EQ(counts.Of(component), 1000U);
  }
  VerdictCounts twice = counts;
  twice += counts;
  EXPECT_EQ(twice.Shadowed(), 12000U);
}

}  // namespace
}  // namespace ZARN::Scan

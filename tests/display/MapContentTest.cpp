#include "display/MapContent.hpp"

#include <gtest/gtest.h>

namespace ZARN::Display {
namespace {

TEST(MapCounts, CountsPathsAndReasonsApart) {
  MapCounts counts;
  counts.Add(DU::eVerdict::kClear, 5);
  counts.Add(DU::eVerdict::kNeckBoss);
  counts.Add(DU::eVerdict::kTotalReflection, 2);
  counts.Add(DU::eVerdict::kPositionNotFinite);
  EXPECT_EQ(counts.paths.Paths(), 6U);
  EXPECT_EQ(counts.paths.Shadowed(), 1U);
  EXPECT_EQ(counts.WithoutPath(), 3U);
  EXPECT_EQ(counts.withoutPath[0], 2U);
  EXPECT_EQ(counts.withoutPath[3], 1U);
  EXPECT_EQ(counts.All(), 9U);
}

TEST(MapCounts, DoesNotCountReflectedLight) {
  MapCounts counts;
  counts.Add(DU::eVerdict::kNoReflectedPath);
  EXPECT_EQ(counts.All(), 0U);
}

}  // namespace
}  // namespace ZARN::Display

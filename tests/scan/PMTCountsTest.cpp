#include "scan/PMTCounts.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace ZARN::Scan {
namespace {

using DU::eShadowingComponent;
using DU::eVerdict;

TEST(PMTCounts, CountsThePathsToEachPMTAsOftenAsItsBytesCanHold) {
  const std::vector<eVerdict> row = {eVerdict::kClear, eVerdict::kNeckBoss,
                                     eVerdict::kTotalReflection};
  PMTCounts counts(row.size());
  std::vector<VerdictCounts> totals(row.size());
  int rows = 0;
  for (int move = 0; move < 3; ++move) {
    while (!counts.IsFull()) {
      counts.Add(row.data());
      ++rows;
    }
    counts.MoveTo(totals);
  }
  counts.Add(row.data());
  counts.MoveTo(totals);
  EXPECT_EQ(rows, 3 * 255);
  EXPECT_EQ(totals[0].Of(eShadowingComponent::kNone), 766U);
  EXPECT_EQ(totals[1].Of(eShadowingComponent::kNeckBoss), 766U);
  EXPECT_EQ(totals[1].Paths(), 766U);
  EXPECT_EQ(totals[2].Paths(), 0U);
}

}  // namespace
}  // namespace ZARN::Scan

#include "lightpath/PMTArray.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "tests/property/Random.hpp"

namespace ZARN::Testing {
namespace {

std::vector<TVector3> Rings(const std::vector<double>& radii, int count) {
  Random random(1);
  std::vector<TVector3> positions;
  for (int i = 0; i < count; ++i) {
    positions.push_back(random.Direction() * random.Pick(radii));
  }
  return positions;
}

/// Expects every PMT once, and in groups only PMTs of their distances.
void ExpectConsistent(const DU::PMTArray& pmts) {
  std::vector<std::uint32_t> order = pmts.Order();
  for (const DU::PMTArray::Group& group : pmts.Groups()) {
    for (std::size_t i = group.begin; i < group.end; ++i) {
      const double radius = pmts.At(order[i]).Mag();
      EXPECT_GE(radius, group.lowest);
      EXPECT_LE(radius, group.highest);
      EXPECT_NEAR(pmts.InverseRadius()[i] * radius, 1.0, 1e-15);
    }
  }
  std::sort(order.begin(), order.end());
  std::vector<std::uint32_t> all(pmts.Count());
  std::iota(all.begin(), all.end(), 0U);
  EXPECT_EQ(order, all);
}

TEST(PMTArray, PutsPMTsAtOneDistanceInOneGroup) {
  const DU::PMTArray pmts(Rings({8400.0, 8400.0004, 8400.0008}, 500));
  ASSERT_EQ(pmts.Groups().size(), 1U);
  EXPECT_EQ(pmts.Groups()[0].begin, 0U);
  EXPECT_EQ(pmts.Groups()[0].end, 500U);
  ExpectConsistent(pmts);
}

TEST(PMTArray, PutsEachRingInAGroup) {
  const DU::PMTArray pmts(Rings({7000.0, 8500.0, 10000.0}, 3000));
  EXPECT_EQ(pmts.Groups().size(), 3U);
  ExpectConsistent(pmts);
}

/// Expects the patches of a group to be its PMTs, in order.
void ExpectPatches(const DU::PMTArray& pmts, const DU::PMTArray::Group& group) {
  std::size_t end = group.begin;
  for (const DU::PMTArray::Patch& patch : group.patches) {
    EXPECT_EQ(patch.begin, end);
    EXPECT_GT(patch.end, patch.begin);
    EXPECT_LE(patch.end - patch.begin, DU::PMTArray::kMostInPatch);
    EXPECT_NEAR(patch.axis.Mag(), 1.0, 1e-15);
    EXPECT_NEAR(std::hypot(patch.cosine, patch.sine), 1.0, 1e-15);
    for (std::size_t i = patch.begin; i < patch.end; ++i) {
      const TVector3 direction(pmts.X()[i], pmts.Y()[i], pmts.Z()[i]);
      EXPECT_GE(direction.Dot(patch.axis), patch.cosine);
    }
    end = patch.end;
  }
  EXPECT_EQ(end, group.end);
}

TEST(PMTArray, DividesAGroupIntoPatches) {
  const DU::PMTArray pmts(Rings({8400.0}, 8000));
  ASSERT_EQ(pmts.Groups().size(), 1U);
  const DU::PMTArray::Group& group = pmts.Groups()[0];
  ExpectPatches(pmts, group);
  EXPECT_EQ(group.patches.size(), 125U);
  // A round one would have an angle of 0.18 rad.
  for (const DU::PMTArray::Patch& patch : group.patches) {
    EXPECT_GT(patch.cosine, std::cos(0.5));
  }
}

TEST(PMTArray, MakesPatchesOfAnyPMTs) {
  for (const int count : {1, 2, 63, 64, 65, 129, 200}) {
    const DU::PMTArray pmts(Rings({7000.0, 8400.0}, count));
    for (const auto& group : pmts.Groups()) ExpectPatches(pmts, group);
  }
  const DU::PMTArray same(std::vector<TVector3>(200, {0, 0, 8400}));
  ExpectPatches(same, same.Groups().at(0));
  const DU::PMTArray opposite({{0, 0, 8400}, {0, 0, -8400}});
  ExpectPatches(opposite, opposite.Groups().at(0));
}

TEST(PMTArray, DividesDistancesWithoutSteps) {
  Random random(2);
  std::vector<TVector3> positions;
  for (int i = 0; i < 5000; ++i) {
    positions.push_back(random.Direction() * random.Uniform(7000.0, 10000.0));
  }
  const DU::PMTArray pmts(positions);
  EXPECT_GT(pmts.Groups().size(), 4U);
  EXPECT_LT(pmts.Groups().size(), 64U);
  ExpectConsistent(pmts);
}

TEST(PMTArray, KeepsUnusualPositionsOutOfTheGroups) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  std::vector<TVector3> positions = Rings({8400.0}, 10);
  positions.insert(positions.begin() + 3, {nan, 0, 0});
  positions.emplace_back(0, 0, 0);
  positions.emplace_back(0, infinity, 0);
  positions.emplace_back(1e200, 0, 0);
  const DU::PMTArray pmts(positions);
  EXPECT_EQ(pmts.Count(), 14U);
  ASSERT_EQ(pmts.Groups().size(), 1U);
  EXPECT_EQ(pmts.Groups()[0].end, 10U);
  EXPECT_EQ(pmts.X().size(), 10U);
  ExpectConsistent(pmts);
}

TEST(PMTArray, CanBeEmpty) {
  EXPECT_EQ(DU::PMTArray().Count(), 0U);
  EXPECT_TRUE(DU::PMTArray(std::vector<TVector3>()).Groups().empty());
}

}  // namespace
}  // namespace ZARN::Testing

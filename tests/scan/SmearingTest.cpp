#include "scan/Smearing.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace ZARN::Scan {
namespace {

DU::Smearing WithSeed(std::int64_t seed) {
  DU::Smearing smearing;
  smearing.sigma = 20.0;
  smearing.seed = seed;
  return smearing;
}

std::vector<TVector3> Some(const DU::Smearing& smearing, std::uint64_t number,
                           int count) {
  SmearedPositions positions(smearing, number);
  std::vector<TVector3> all;
  for (int i = 0; i < count; ++i) all.push_back(positions.Next({1, 2, 3}));
  return all;
}

TEST(Smearing, DependsOnlyOnSeedAndEvent) {
  const auto some = Some(WithSeed(1), 5, 10);
  EXPECT_EQ(Some(WithSeed(1), 5, 10), some);
  EXPECT_NE(Some(WithSeed(1), 6, 10), some);
  EXPECT_NE(Some(WithSeed(2), 5, 10), some);
  EXPECT_NE(Some(WithSeed(1), 5 + (1ULL << 32U), 10), some);
  EXPECT_NE(Some(WithSeed(1 + (1LL << 32U)), 5, 10), some);
}

TEST(Smearing, IsGaussianInEachCoordinate) {
  constexpr int kCount = 100000;
  const TVector3 centre(1, 2, 3);
  TVector3 sum;
  for (int axis = 0; axis < 3; ++axis) {
    double squares = 0.0;
    double mixed = 0.0;
    int within = 0;
    sum = {};
    for (const TVector3& position : Some(WithSeed(3), 0, kCount)) {
      const TVector3 offset = (position - centre) * (1 / 20.0);
      sum += offset;
      squares += offset[axis] * offset[axis];
      mixed += offset[axis] * offset[(axis + 1) % 3];
      if (std::abs(offset[axis]) < 1.0) ++within;
    }
    // Five standard deviations of each.
    EXPECT_NEAR(sum[axis] / kCount, 0.0, 0.016);
    EXPECT_NEAR(squares / kCount, 1.0, 0.023);
    EXPECT_NEAR(mixed / kCount, 0.0, 0.016);
    EXPECT_NEAR(within / 1e5, 0.6827, 0.0074);
  }
}

TEST(Smearing, StaysAtThePositionWithoutAnUncertainty) {
  SmearedPositions positions(DU::Smearing{}, 7);
  EXPECT_EQ(positions.Next({1, 2, 3}), TVector3(1, 2, 3));
}

TEST(Smearing, MeansTheSharesOfPairsThatHaveOne) {
  SmearedMean mean;
  EXPECT_EQ(mean.Value(), std::nullopt);
  mean.Add({0, 0});
  EXPECT_EQ(mean.Value(), std::nullopt);
  mean.Add({4, 1});
  mean.Add({100, 75});
  mean.Add({0, 0});
  EXPECT_EQ(mean.Value(), 0.5);
}

}  // namespace
}  // namespace ZARN::Scan

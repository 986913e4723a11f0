#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "lightpath/Kernels.hpp"
#include "log/Log.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/RootMessages.hpp"
#include "tests/property/RowComparison.hpp"
#include "tests/property/RowPlaces.hpp"
#include "tests/support/Captured.hpp"

namespace ZARN::Testing {
namespace {

constexpr int kRowShards = 4;
/// PMTs of an event; more of them at limits of verdicts are added.
constexpr std::size_t kPMTs = 240;
constexpr std::size_t kLimits = 8;

class RowsOfRandomGeometries : public testing::TestWithParam<int> {
 protected:
  /// Compare rows of one event in each place.
  void CompareAll(const DU::ShadowingCalculator& shadowing,
                  const DU::LightPathCalculator& light, Random& random) {
    RowComparison comparison(shadowing, light);
    for (const eEventPlace place : kEventPlaces) {
      const TVector3 eventPos = DrawEvent(place, light.GetMedia(), random);
      std::vector<TVector3> positions =
          DrawPMTs(kPMTs, light.GetMedia(), eventPos, random);
      const std::vector<TVector3> limits =
          comparison.NearLimits(eventPos, positions, kLimits, random);
      positions.insert(positions.end(), limits.begin(), limits.end());
      const std::string difference = comparison.Compare(
          eventPos, DU::PMTArray(positions), DU::AvailableKernels(), tally_);
      ASSERT_EQ(difference, "") << "event " << NameOf(place) << ", tolerance "
                                << Exact(shadowing.GetAVHDRopeTolerance())
                                << ", light with " << Exact(light.GetMedia());
    }
  }

  RowTally tally_;
};

TEST_P(RowsOfRandomGeometries, EqualThoseOfTheirPairs) {
  const Captured captured(warn);
  const RootMessages messages;  // about zero vectors
  const auto pairs = static_cast<std::uint64_t>(PairsInAll() / kRowShards);
  for (int geometry = 0; tally_.pairs < pairs; ++geometry) {
    SCOPED_TRACE("geometry " + std::to_string(geometry));
    Random random(31U * static_cast<std::uint64_t>(GetParam() + 1) +
                  1000003U * static_cast<std::uint64_t>(geometry));
    DU::ShadowingCalculator shadowing;
    DU::LightPathCalculator light;
    BeginRandomRun(shadowing, light, random);
    CompareAll(shadowing, light, random);
    if (HasFatalFailure()) return;
  }
  RecordProperty("pairs", std::to_string(tally_.pairs));
  RecordProperty("open", std::to_string(tally_.open));
  constexpr std::uint64_t kOften = 10;
  // With few pairs some cases may not occur.
  if (pairs < 200000) return;
  // Otherwise the comparison says nothing.
  EXPECT_LT(tally_.open, tally_.pairs * 2 / 3);
  for (std::size_t i = 0; i < RowTally::kVerdicts; ++i) {
    const auto verdict = static_cast<DU::eVerdict>(i);
    if (verdict != DU::eVerdict::kNoReflectedPath) {
      EXPECT_GT(tally_.direct[i], kOften) << NameOf(verdict);
    }
    if (HasPath(verdict) || verdict == DU::eVerdict::kNoReflectedPath) {
      EXPECT_GT(tally_.reflected[i], kOften) << NameOf(verdict);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shards, RowsOfRandomGeometries,
                         testing::Range(0, kRowShards));

}  // namespace
}  // namespace ZARN::Testing

#include <gtest/gtest.h>

#include <vector>

#include "tests/du/Detector.hpp"
#include "tests/du/Formulas.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/du/RootWarnings.hpp"
#include "tests/support/ScarceMemory.hpp"

// A calculator without enough memory for its layers.

namespace ZARN::DU {
namespace {

using Testing::RootWarnings;
using Testing::ScarceMemory;

class NoMemory : public testing::Test {
 protected:
  static constexpr std::size_t kPaths = 3000;
  static constexpr std::size_t kLessThanLayersNeed = 40'000;  // bytes

  NoMemory()
      : calculator_(Testing::InRun(Testing::VariedTables())),
        paths_(Testing::PathsAtHardware(calculator_, 90).Make(kPaths)),
        verdicts_(kPaths) {
    for (const LightPath& path : paths_) {
      expected_.push_back(Testing::FindByFormulas(calculator_, path));
    }
  }

  ShadowingCalculator calculator_;
  std::vector<LightPath> paths_;
  std::vector<eShadowingComponent> expected_;
  std::vector<eShadowingComponent> verdicts_;
};

TEST_F(NoMemory, LeavesSingleCallsToTheFormulas) {
  const RootWarnings warnings;
  {
    const ScarceMemory scarce(kLessThanLayersNeed);
    for (std::size_t i = 0; i < kPaths; ++i) {
      verdicts_[i] = calculator_.FindShadowing(paths_[i]);
    }
  }
  EXPECT_EQ(verdicts_, expected_);
  EXPECT_TRUE(RootWarnings::Messages().empty());
}

TEST_F(NoMemory, LeavesBatchesToTheFormulas) {
  {
    const ScarceMemory scarce(kLessThanLayersNeed);
    calculator_.FindShadowing(paths_.data(), kPaths, verdicts_.data(), 2);
  }
  EXPECT_EQ(verdicts_, expected_);
}

TEST_F(NoMemory, LeavesCriticalTolerancesToTheFormulas) {
  std::vector<CriticalTolerances> found;
  found.reserve(kPaths);
  {
    const ScarceMemory scarce(kLessThanLayersNeed);
    for (const LightPath& path : paths_) {
      found.push_back(calculator_.FindCriticalTolerances(path));
    }
  }
  // A copy of the tables has memory.
  const auto other = Testing::InRun(Testing::VariedTables());
  for (std::size_t i = 0; i < kPaths; ++i) {
    EXPECT_EQ(found[i].of, other.FindCriticalTolerances(paths_[i]).of);
  }
}

TEST_F(NoMemory, AllowsTolerancesToBeSet) {
  {
    const ScarceMemory none(0);
    calculator_.SetAllGeometryTolerances(-1000.0);
  }
  EXPECT_EQ(calculator_.GetNCDAnchorTolerance(), -1000.0);
  calculator_.FindShadowing(paths_.data(), kPaths, verdicts_.data());
  EXPECT_NE(verdicts_, expected_);
  // When tolerances are set again, there is memory.
  calculator_.SetAllGeometryTolerances(150.0);
  calculator_.FindShadowing(paths_.data(), kPaths, verdicts_.data());
  EXPECT_EQ(verdicts_, expected_);
}

}  // namespace
}  // namespace ZARN::DU

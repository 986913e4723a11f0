#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "scan/VerdictCounts.hpp"
#include "tests/du/Detector.hpp"
#include "tests/support/Captured.hpp"

namespace ZARN::Testing {

/// A test of scans in a detector with all components, where light is refracted.
class ScanTest : public ::testing::Test {
 protected:
  ScanTest() {
    const Captured messages(warn);
    Tables tables = DetectorTables();
    for (const char* medium : {"inner_av", "acrylic", "water"}) {
      tables.Set("OPTICS", medium, "refractive_index",
                 medium[0] == 'w' ? 1.33 : 1.5);
    }
    tables.Load();
    shadowing_.BeginOfRun();
    lightPath_.BeginOfRun();
  }

  /// Add PMTs all around.
  ///
  /// @param step  between polar angles, from 0.1 to less than pi
  void AddPMTs(int count, double step) {
    for (int i = 0; i < count; ++i) {
      pmts_.emplace_back();
      pmts_.back().SetMagThetaPhi(8300, 0.1 + step * i, 0.7 * i);
    }
  }

  DU::ShadowingCalculator shadowing_;
  DU::LightPathCalculator lightPath_;
  std::vector<TVector3> events_;
  std::vector<TVector3> pmts_;
};

inline void ExpectSame(const Scan::VerdictCounts& found,
                       const Scan::VerdictCounts& wanted) {
  EXPECT_EQ(found.Of(DU::eShadowingComponent::kNone),
            wanted.Of(DU::eShadowingComponent::kNone));
  for (const auto component : DU::kShadowingComponents) {
    EXPECT_EQ(found.Of(component), wanted.Of(component));
  }
}

}  // namespace ZARN::Testing

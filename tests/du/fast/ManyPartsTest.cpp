#include <gtest/gtest.h>
#include <malloc.h>

#include <memory>
#include <vector>

#include "du/fast/LazyLayers.hpp"
#include "tests/du/Detector.hpp"

// The memory of the layers of a geometry with many parts.

namespace ZARN::DU {
namespace {

using Testing::Tables;

/// A hundred hold-down ropes with 200,000 surface points.
Tables ManyRopes() {
  constexpr int kRopes = 100;
  std::vector<double> rollDegrees;
  for (int i = 0; i < kRopes; ++i) rollDegrees.push_back(360.0 * i / kRopes);
  Tables tables = Testing::DetectorTables();
  tables.Set("GEO_LOCATIONS", "rolls", "roll", rollDegrees);
  return tables;
}

double MebibytesInUse() {
  const auto memory = mallinfo2();
  return static_cast<double>(memory.uordblks + memory.hblkhd) / (1U << 20U);
}

TEST(LayersOfManyParts, TakeLittleMemory) {
  ShadowingCalculator calculator = Testing::InRun(ManyRopes());
  constexpr double kMost = 64.0 / 10.0;  // MiB; 64 for a thousand ropes
  constexpr double kMapOfAnySize = 4.0;
  for (const double tolerance : {150.0, 20.0, 0.0, -5.0}) {
    SCOPED_TRACE(tolerance);
    calculator.SetAllGeometryTolerances(tolerance);
    const double before = MebibytesInUse();
    const auto layers = std::make_unique<PreparedLayers>(
        calculator.GetHardware(), ShadowingLayers());
    EXPECT_LT(MebibytesInUse() - before, kMost + kMapOfAnySize);
  }
}

}  // namespace
}  // namespace ZARN::DU

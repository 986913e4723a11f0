#include "du/fast/LazyLayers.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "tests/du/Detector.hpp"
#include "tests/du/PathsAtHardware.hpp"

namespace ZARN::DU {
namespace {

using Testing::VariedDetector;

/// How many paths of a kind the formulas judge before the layers are made.
int PathsByFormulas(const Hardware& hardware, ePathKind kind) {
  LazyLayers layers(hardware, {});
  int paths = 0;
  for (; layers.Get() == nullptr; ++paths) {
    layers.CountByFormulas(hardware, kind);
  }
  return paths;
}

TEST(LazyLayers, AreNotMadeForAFewPaths) {
  LazyLayers layers(VariedDetector().GetHardware(), {});
  EXPECT_EQ(layers.Get(), nullptr);
  for (int i = 0; i < 10; ++i) {
    layers.CountByFormulas(VariedDetector().GetHardware(),
                           ePathKind::kOneCrossing);
  }
  EXPECT_EQ(layers.Get(), nullptr);
}

TEST(LazyLayers, AreMadeOnceTheFormulasHaveCostAsMuch) {
  const int crossing =
      PathsByFormulas(VariedDetector().GetHardware(), ePathKind::kOneCrossing);
  EXPECT_GT(crossing, 10);
  // In water no surface point is looked at, so the formulas cost less.
  EXPECT_GT(PathsByFormulas(VariedDetector().GetHardware(), ePathKind::kWater),
            10 * crossing);
  // Where there is next to nothing to test, layers hardly pay.
  EXPECT_GT(PathsByFormulas(Hardware(), ePathKind::kOneCrossing),
            100 * crossing);
}

TEST(LazyLayers, AreMadeAtOnceOnRequest) {
  LazyLayers layers(VariedDetector().GetHardware(), {});
  layers.Make(VariedDetector().GetHardware());
  const PreparedLayers* const made = layers.Get();
  ASSERT_NE(made, nullptr);
  EXPECT_NE(made->filter.Map().At(Testing::kFreeSpot),
            ShadowMap::kNothingKnown);
  layers.Make(VariedDetector().GetHardware());
  layers.CountByFormulas(VariedDetector().GetHardware(),
                         ePathKind::kOneCrossing);
  EXPECT_EQ(layers.Get(), made);
}

TEST(LazyLayers, AreThoseThatAreWanted) {
  LazyLayers layers(VariedDetector().GetHardware(), {true, true, false});
  layers.Make(VariedDetector().GetHardware());
  EXPECT_EQ(layers.Get()->filter.Map().At(Testing::kFreeSpot),
            ShadowMap::kNothingKnown);
}

TEST(LazyLayers, AreMadeByOneOfSeveralThreads) {
  LazyLayers layers(VariedDetector().GetHardware(), {});
  std::atomic<int> withoutLayers = 0;
  std::vector<const PreparedLayers*> found(4);
  std::vector<std::thread> threads;
  for (const PreparedLayers*& mine : found) {
    threads.emplace_back([&] {
      while ((mine = layers.Get()) == nullptr) {
        ++withoutLayers;
        layers.CountByFormulas(VariedDetector().GetHardware(),
                               ePathKind::kOneCrossing);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(withoutLayers, 10);
  EXPECT_EQ(std::set<const PreparedLayers*>(found.begin(), found.end()).size(),
            1U);
}

}  // namespace
}  // namespace ZARN::DU

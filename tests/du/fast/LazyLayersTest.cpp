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

const Hardware& Detector() {
  static const ShadowingCalculator detector =
      Testing::InRun(Testing::VariedTables());
  return detector.GetHardware();
}

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
  LazyLayers layers(Detector(), {});
  EXPECT_EQ(layers.Get(), nullptr);
  for (int i = 0; i < 10; ++i) {
    layers.CountByFormulas(Detector(), ePathKind::kOneCrossing);
  }
  EXPECT_EQ(layers.Get(), nullptr);
}

TEST(LazyLayers, AreMadeOnceTheFormulasHaveCostAsMuch) {
  const int crossing = PathsByFormulas(Detector(), ePathKind::kOneCrossing);
  EXPECT_GT(crossing, 10);
  // In water no surface point is looked at, so the formulas cost less.
  EXPECT_GT(PathsByFormulas(Detector(), ePathKind::kWater), 10 * crossing);
  // Where there is next to nothing to test, layers hardly pay.
  EXPECT_GT(PathsByFormulas(Hardware(), ePathKind::kOneCrossing),
            100 * crossing);
}

TEST(LazyLayers, AreMadeAtOnceOnRequest) {
  LazyLayers layers(Detector(), {});
  layers.Make(Detector());
  const PreparedLayers* const made = layers.Get();
  ASSERT_NE(made, nullptr);
  EXPECT_NE(made->filter.Map().At(Testing::kFreeSpot),
            ShadowMap::kNothingKnown);
  layers.Make(Detector());
  layers.CountByFormulas(Detector(), ePathKind::kOneCrossing);
  EXPECT_EQ(layers.Get(), made);
}

TEST(LazyLayers, AreThoseThatAreWanted) {
  LazyLayers layers(Detector(), {true, true, false});
  layers.Make(Detector());
  EXPECT_EQ(layers.Get()->filter.Map().At(Testing::kFreeSpot),
            ShadowMap::kNothingKnown);
}

TEST(LazyLayers, AreMadeByOneOfSeveralThreads) {
  LazyLayers layers(Detector(), {});
  std::atomic<int> withoutLayers = 0;
  std::vector<const PreparedLayers*> found(4);
  std::vector<std::thread> threads;
  for (const PreparedLayers*& mine : found) {
    threads.emplace_back([&] {
      while ((mine = layers.Get()) == nullptr) {
        ++withoutLayers;
        layers.CountByFormulas(Detector(), ePathKind::kOneCrossing);
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

#include "du/ForEachOnThreads.hpp"

#include <gtest/gtest.h>

#include <ROOT/TSeq.hxx>
#include <ROOT/TThreadExecutor.hxx>
#include <mutex>
#include <numeric>
#include <set>
#include <thread>
#include <vector>

#include "tests/du/Detector.hpp"
#include "tests/du/RootWarnings.hpp"

namespace ZARN::DU {
namespace {

TEST(ForEachOnThreads, CallsWorkOnceForEachIndex) {
  for (const std::size_t threads : {0U, 1U, 2U, 7U, 100U}) {
    for (const std::size_t count : {0U, 1U, 2U, 50U}) {
      std::vector<int> worked(count, 0);
      ForEachOnThreads(count, threads, [&](std::size_t i) { ++worked[i]; });
      EXPECT_EQ(worked, std::vector<int>(count, 1));
    }
  }
}

TEST(ForEachOnThreads, UsesNoMoreThreadsThanAskedFor) {
  std::mutex guard;
  std::set<std::thread::id> ids;
  ForEachOnThreads(200, 3, [&](std::size_t) {
    const std::lock_guard<std::mutex> lock(guard);
    ids.insert(std::this_thread::get_id());
  });
  EXPECT_GE(ids.size(), 1U);
  EXPECT_LE(ids.size(), 3U);
}

TEST(FindShadowingOfManyPaths, WritesNoWarningNextToAThreadPoolOfRoot) {
  const ShadowingCalculator detector =
      Testing::InRun(Testing::DetectorTables());
  const std::vector<LightPath> paths(50000, Testing::BlockedPath());
  std::vector<eShadowingComponent> verdicts(paths.size());
  const Testing::RootWarnings warnings;
  ROOT::TThreadExecutor pool(2);
  pool.Foreach([](int) {}, ROOT::TSeqI(2));
  detector.FindShadowing(paths.data(), paths.size(), verdicts.data(), 3);
  EXPECT_TRUE(Testing::RootWarnings::Messages().empty());
  EXPECT_EQ(verdicts, std::vector<eShadowingComponent>(
                          paths.size(), eShadowingComponent::kAVHDRope));
}

}  // namespace
}  // namespace ZARN::DU

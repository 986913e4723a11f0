#include "app/ParallelFor.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace ZARN::App {
namespace {

TEST(ParallelFor, DoesEveryItemOnceWhateverTheNumberOfThreads) {
  for (const std::size_t threads : {1U, 2U, 7U, 100U}) {
    for (const std::size_t count : {0U, 1U, 2U, 50U}) {
      std::vector<std::atomic<int>> done(count);
      ParallelFor(count, threads,
                  [&](std::size_t item, std::size_t) { ++done[item]; });
      for (const auto& times : done) EXPECT_EQ(times, 1);
    }
  }
}

TEST(ParallelFor, KeepsAsManyThreadsBusyAsItIsGiven) {
  constexpr std::size_t kThreads = 5;
  std::atomic<std::size_t> waiting = 0;
  std::atomic<bool> isLate = false;
  ParallelFor(kThreads, kThreads, [&](std::size_t, std::size_t) {
    ++waiting;
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (waiting < kThreads && !isLate) {
      isLate = isLate || std::chrono::steady_clock::now() > end;
      std::this_thread::yield();
    }
  });
  EXPECT_FALSE(isLate) << "five items at once never came together";
}

TEST(ParallelFor, NumbersItsWorkers) {
  constexpr std::size_t kThreads = 3;
  std::vector<std::atomic<int>> inUse(kThreads);
  std::atomic<bool> isShared = false;
  ParallelFor(200, kThreads, [&](std::size_t, std::size_t worker) {
    ASSERT_LT(worker, kThreads);
    if (++inUse[worker] > 1) isShared = true;
    std::this_thread::yield();
    --inUse[worker];
  });
  EXPECT_FALSE(isShared) << "two threads had one number at once";
}

TEST(ParallelFor, PassesAnExceptionOnAndStops) {
  for (const std::size_t threads : {1U, 4U}) {
    std::atomic<int> done = 0;
    const auto run = [&] {
      ParallelFor(1000000, threads, [&](std::size_t item, std::size_t) {
        ++done;
        if (item == 10) throw std::runtime_error("at 10");
      });
    };
    try {
      run();
      FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(std::string(error.what()), "at 10");
    }
    EXPECT_LT(done, 1000000);
  }
}

}  // namespace
}  // namespace ZARN::App

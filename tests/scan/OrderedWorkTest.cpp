#include "scan/OrderedWork.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace ZARN::Scan {
namespace {

constexpr auto kLate =
    std::chrono::seconds(60);  // only reached if a thread hangs

TEST(OrderedWork, ProcessesEveryItemOnceAndReturnsThemInOrder) {
  for (const std::size_t threads : {1U, 2U, 7U, 100U}) {
    for (const int count : {0, 1, 2, 50}) {
      OrderedWork<int> work(threads,
                            [](int& item, std::size_t) { item += 1000; });
      for (int i = 0; i < count; ++i) work.Push(i);
      EXPECT_EQ(work.Size(), count);
      for (int i = 0; i < count; ++i) EXPECT_EQ(work.Pop(), 1000 + i);
      EXPECT_EQ(work.Size(), 0U);
    }
  }
}

TEST(OrderedWork, KeepsTheOrderWhenPushAndPopAlternate) {
  for (const std::size_t threads : {1U, 3U}) {
    OrderedWork<int> work(threads, [](int&, std::size_t) {});
    int pushed = 0;
    for (int popped = 0; popped < 2000; ++popped) {
      while (work.Size() < 1U + static_cast<std::size_t>(popped) % 9) {
        work.Push(pushed++);
      }
      ASSERT_EQ(work.Pop(), popped);
    }
  }
}

TEST(OrderedWork, UsesAllItsThreads) {
  constexpr std::size_t kThreads = 5;
  std::atomic<std::size_t> waiting = 0;
  std::atomic<bool> isLate = false;
  OrderedWork<int> work(kThreads, [&](int&, std::size_t) {
    ++waiting;
    const auto end = std::chrono::steady_clock::now() + kLate;
    while (waiting < kThreads && !isLate) {
      isLate = isLate || std::chrono::steady_clock::now() > end;
      std::this_thread::yield();
    }
  });
  for (std::size_t i = 0; i < kThreads; ++i) work.Push(0);
  while (work.Size() > 0) work.Pop();
  EXPECT_FALSE(isLate) << "five items were never in work at the same time";
}

TEST(OrderedWork, GivesEachThreadAFixedWorkerNumber) {
  constexpr std::size_t kThreads = 3;
  std::vector<std::set<std::thread::id>> threads(kThreads);
  std::vector<std::atomic<int>> inUse(kThreads);
  std::atomic<bool> isShared = false;
  {
    OrderedWork<int> work(kThreads, [&](int&, std::size_t worker) {
      ASSERT_LT(worker, kThreads);
      if (++inUse[worker] > 1) isShared = true;
      threads[worker].insert(std::this_thread::get_id());
      std::this_thread::yield();
      --inUse[worker];
    });
    for (int round = 0; round < 50; ++round) {
      for (int i = 0; i < 20; ++i) work.Push(0);
      while (work.Size() > 0) work.Pop();
    }
  }
  EXPECT_FALSE(isShared) << "two threads had the same number";
  for (const auto& ids : threads) EXPECT_LE(ids.size(), 1U);
  for (const auto& id : threads[0]) EXPECT_EQ(id, std::this_thread::get_id());
}

TEST(OrderedWork, UsesNoOtherThreadForOneThreadOrOneItem) {
  const auto own = std::this_thread::get_id();
  const auto expectOwn = [own](int&, std::size_t worker) {
    EXPECT_EQ(std::this_thread::get_id(), own);
    EXPECT_EQ(worker, 0U);
  };
  OrderedWork<int> oneThread(1, expectOwn);
  for (int i = 0; i < 20; ++i) oneThread.Push(i);
  while (oneThread.Size() > 0) oneThread.Pop();
  OrderedWork<int> oneItem(8, expectOwn);
  oneItem.Push(0);
  // If there were another thread, it would take the item now.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  oneItem.Pop();
}

TEST(OrderedWork, ThrowsTheExceptionInPlaceOfItsItem) {
  for (const std::size_t threads : {1U, 4U}) {
    OrderedWork<int> work(threads, [](int& item, std::size_t) {
      if (item % 10 == 5) throw std::runtime_error(std::to_string(item));
    });
    for (int i = 0; i < 30; ++i) work.Push(i);
    for (int i = 0; i < 30; ++i) {
      try {
        EXPECT_EQ(work.Pop(), i);
        EXPECT_NE(i % 10, 5);
      } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), std::to_string(i));
        EXPECT_EQ(i % 10, 5);
      }
    }
  }
}

TEST(OrderedWork, DropsItemsThatHaveNotStartedWhenDestroyed) {
  std::atomic<int> done = 0;
  {
    OrderedWork<int> work(4, [&](int&, std::size_t) {
      ++done;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    for (int i = 0; i < 10000; ++i) work.Push(i);
    work.Pop();
  }
  EXPECT_GE(done, 1);
  EXPECT_LT(done, 10000);
}

/// The owner's thread may wait for input, so it must receive the interrupt.
TEST(OrderedWork, LeavesSignalsToTheOwnersThread) {
  std::atomic<bool> hasBegun = false;
  std::atomic<int> unblocked = 0;
  const auto count = [&] {
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      if (sigismember(&blocked, signal) == 0) ++unblocked;
    }
  };
  const auto end = std::chrono::steady_clock::now() + kLate;
  OrderedWork<int> work(2, [&](int& item, std::size_t worker) {
    if (worker == 1) {
      count();
      hasBegun = true;
    }
    // The second item goes to the other thread.
    while (item == 0 && !hasBegun && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
  });
  work.Push(0);
  work.Push(1);
  while (work.Size() > 0) work.Pop();
  EXPECT_TRUE(hasBegun);
  EXPECT_EQ(unblocked, 0);
  count();
  EXPECT_EQ(unblocked, 3);
}

}  // namespace
}  // namespace ZARN::Scan

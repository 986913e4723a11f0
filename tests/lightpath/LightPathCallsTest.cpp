#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "TVector3.h"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "log/Log.hpp"
#include "tests/lightpath/InRealVessel.hpp"
#include "tests/lightpath/Vessels.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/SameBits.hpp"
#include "tests/support/Captured.hpp"

namespace {

/// Number of allocations of this program.
std::atomic<long> allocations{0};

void* Allocate(std::size_t size) noexcept {
  allocations.fetch_add(1, std::memory_order_relaxed);
  return std::malloc(size > 0 ? size : 1);
}

}  // namespace

// All forms that this program uses, so that none is paired with a form that is
// not replaced. Not inlined: the compiler would warn about a free that does not
// match a new.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
  return operator new(size);
}
[[gnu::noinline]] void* operator new(std::size_t size,
                                     const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size,
                                       const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory,
                                       std::size_t /*size*/) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory,
                                         std::size_t /*size*/) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory,
                                       const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete[](
    void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}

namespace ZARN::Testing {
namespace {

using DU::LightPathCalculator;

/// Properties of every call of the calculator, for any path.
class LightPathCalls : public InRealVessel {};

TEST_F(LightPathCalls, WriteNoMessages) {
  const Captured warnings(ZARN::warn);
  const Captured diagnostics(ZARN::debug);
  const TVector3 pmtPos(0, 0, 8400);
  int without = 0;
  for (int i = 0; i <= 180; ++i) {
    const double angle = kPi * i / 180.0;
    for (const double radius : {0.0, 5700.0, 5799.9, 5830.0, kOuter, 6500.0}) {
      Calculate({radius * std::sin(angle), 0, radius * std::cos(angle)},
                pmtPos);
      if (calculator_.HasPath()) continue;
      ++without;
      ExpectNoPath(calculator_);
    }
  }
  EXPECT_GT(without, 50);
  Calculate({kNaN, 0, 0}, pmtPos);
  Calculate({0, 0, 0}, {0, 0, 0});
  Calculate(pmtPos, pmtPos);
  calculator_.CalcReflectionByPosition({0, 0, -7000}, pmtPos);
  calculator_.CalcReflectionByPosition({0, 7000, 0}, pmtPos);
  EXPECT_EQ(warnings.Text(), "");
  EXPECT_EQ(diagnostics.Text(), "");
}

TEST_F(LightPathCalls, ResetThePreviousPath) {
  const TVector3 pmtPos(0, 0, 8400);
  Calculate({0, 0, -7000}, pmtPos);
  ASSERT_NE(calculator_.GetAVPoint4(), TVector3());
  ExpectExactly({0, 0, 100}, pmtPos, DU::kInnerAVToWater, {0, 0, 1},
                {{0, 0, kInner}, {0, 0, kOuter}});
  ExpectExactly({0, 0, 7000}, pmtPos, DU::kWater, {0, 0, 1}, {});
  Calculate({0, 0, -7000}, pmtPos);
  // Into the dark zone behind the vessel's edge.
  Calculate({-3000, kOuter - 1.0, 0}, {7000, kOuter - 1.0, 0});
  ExpectNoPath(calculator_);
  // Points that were set by hand are reset too.
  calculator_.SetAVPoint3({1, 2, 3});
  ExpectExactly({0, 0, 5830}, pmtPos, DU::kAVToWater, {0, 0, 1},
                {{0, 0, kOuter}});
}

TEST(LightPathCalculatorBeforeItsRun, Throws) {
  LightPathCalculator calculator;
  EXPECT_THROW(calculator.CalcByPosition({0, 0, 0}, {0, 0, 8400}),
               std::logic_error);
  EXPECT_THROW(calculator.CalcReflectionByPosition({0, 0, 7000}, {0, 0, 8400}),
               std::logic_error);
  EXPECT_THROW(calculator.CalcByPosition({kNaN, 0, 0}, {0, 0, 8400}),
               std::logic_error);
}

/// Pairs of all kinds, for tests that compare many paths.
std::vector<std::array<TVector3, 2>> ManyPairs(int count) {
  Random random(11);
  std::vector<std::array<TVector3, 2>> pairs;
  pairs.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    pairs.push_back({random.Uniform(0.0, 9000.0) * random.Direction(),
                     random.Uniform(5870.0, 12000.0) * random.Direction()});
  }
  return pairs;
}

TEST_F(LightPathCalls, AllocateNothing) {
  const auto pairs = ManyPairs(5000);
  std::array<int, DU::kNumberOfLightPathTypes> ofType{};
  const long before = allocations.load();
  for (const auto& [eventPos, pmtPos] : pairs) {
    calculator_.CalcByPosition(eventPos, pmtPos);
    ++ofType[calculator_.GetLightPathType()];
    calculator_.CalcReflectionByPosition(eventPos, pmtPos);
    ++ofType[calculator_.GetLightPathType()];
  }
  calculator_.CalcByPosition({0, 0, 0}, {0, 0, 8400});
  calculator_.CalcByPosition({kNaN, 0, 0}, {0, 0, 8400});
  const long after = allocations.load();
  EXPECT_EQ(after - before, 0);
  for (const DU::eLightPathType type :
       {DU::kUninitialised, DU::kInnerAVToWater, DU::kAVToWater,
        DU::kWaterThroughInnerAV, DU::kWater, DU::kWaterReflection}) {
    EXPECT_GT(ofType[type], 0) << DU::kLightPathTypeNames[type];
  }
  // Check that the counter works.
  const std::vector<int> memory(100);
  EXPECT_GT(allocations.load(), after);
}

bool AreSamePaths(const DU::LightPath& a, const DU::LightPath& b) {
  return a.LightPathType == b.LightPathType &&
         AreSame(a.StartPos, b.StartPos) && AreSame(a.EndPos, b.EndPos) &&
         AreSame(a.InitialDirection, b.InitialDirection) &&
         AreSame(a.FinalDirection, b.FinalDirection) &&
         AreSame(a.AVPoint1, b.AVPoint1) && AreSame(a.AVPoint2, b.AVPoint2) &&
         AreSame(a.AVPoint3, b.AVPoint3) && AreSame(a.AVPoint4, b.AVPoint4);
}

TEST_F(LightPathCalls, AreTheSameInEveryThreadAndOrder) {
  constexpr int kThreads = 4;
  const int count = std::clamp(PairsInAll() / 50, 100, 20000);
  const auto pairs = ManyPairs(count);
  std::vector<DU::LightPath> expected;
  expected.reserve(pairs.size());
  for (const auto& [eventPos, pmtPos] : pairs) {
    calculator_.CalcByPosition(eventPos, pmtPos);
    expected.push_back(calculator_.GetLightPath());
  }
  std::vector<int> different(kThreads, 0);
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread, calculator = calculator_]() mutable {
      for (std::size_t i = 0; i < pairs.size(); ++i) {
        // Threads use different orders: no result may depend on the previous
        // pair.
        const std::size_t pick = thread % 2 == 0 ? i : pairs.size() - 1 - i;
        calculator.CalcByPosition(pairs[pick][0], pairs[pick][1]);
        if (!AreSamePaths(calculator.GetLightPath(), expected[pick])) {
          ++different[thread];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(different, std::vector<int>(kThreads, 0));
}

}  // namespace
}  // namespace ZARN::Testing

#include "scan/PairScan.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/du/Detector.hpp"
#include "tests/support/Captured.hpp"

namespace ZARN::Scan {
namespace {

/// Events inside, in the wall, in the water and at a PMT; PMTs all around.
class PairScanTest : public ::testing::Test {
 protected:
  PairScanTest() {
    const Testing::Captured messages(warn);
    Testing::Tables tables = Testing::DetectorTables();
    for (const char* medium : {"inner_av", "acrylic", "water"}) {
      tables.Set("OPTICS", medium, "refractive_index",
                 medium[0] == 'w' ? 1.33 : 1.5);
    }
    tables.Load();
    shadowing_.BeginOfRun();
    lightPath_.BeginOfRun();
    constexpr int kPMTs = 67;
    for (int i = 0; i < kPMTs; ++i) {
      TVector3 pmt;
      pmt.SetMagThetaPhi(8300, 0.1 + 0.045 * i, 0.7 * i);
      pmts_.push_back(pmt);
    }
    events_ = {{0, 0, 0},    {0, 0, 3000},  {3000, -4000, 0},
               {0, 5830, 0}, {0, 7000, 10}, pmts_.front()};
  }

  /// Verdicts and paths of all pairs, judged one by one.
  PairChunk JudgedOneByOne(bool withReflections) {
    PairChunk all;
    const auto take = [&](std::size_t pair) {
      PairVerdict verdict = {pair, lightPath_.GetLightPathType()};
      if (verdict.HasPath()) {
        verdict.by = shadowing_.FindShadowing(lightPath_.GetLightPath());
        all.paths.push_back(lightPath_.GetLightPath());
      }
      all.verdicts.push_back(verdict);
    };
    std::size_t pair = 0;
    for (const TVector3& event : events_) {
      for (const TVector3& pmt : pmts_) {
        lightPath_.CalcByPosition(event, pmt);
        take(pair);
        lightPath_.CalcReflectionByPosition(event, pmt);
        if (withReflections && lightPath_.HasPath()) take(pair);
        ++pair;
      }
    }
    return all;
  }

  static PairChunk Joined(const std::vector<PairChunk>& chunks) {
    PairChunk all;
    for (const PairChunk& chunk : chunks) {
      all.verdicts.insert(all.verdicts.end(), chunk.verdicts.begin(),
                          chunk.verdicts.end());
      all.paths.insert(all.paths.end(), chunk.paths.begin(), chunk.paths.end());
    }
    return all;
  }

  static void ExpectSame(const PairChunk& found, const PairChunk& wanted) {
    ASSERT_EQ(found.verdicts.size(), wanted.verdicts.size());
    for (std::size_t i = 0; i < wanted.verdicts.size(); ++i) {
      EXPECT_EQ(found.verdicts[i].pair, wanted.verdicts[i].pair);
      EXPECT_EQ(found.verdicts[i].type, wanted.verdicts[i].type);
      EXPECT_EQ(found.verdicts[i].by, wanted.verdicts[i].by);
    }
    ASSERT_EQ(found.paths.size(), wanted.paths.size());
    for (std::size_t i = 0; i < wanted.paths.size(); ++i) {
      EXPECT_EQ(found.paths[i].LightPathType, wanted.paths[i].LightPathType);
      EXPECT_EQ(found.paths[i].EndPos, wanted.paths[i].EndPos);
      EXPECT_EQ(found.paths[i].FinalDirection, wanted.paths[i].FinalDirection);
    }
  }

  DU::ShadowingCalculator shadowing_;
  DU::LightPathCalculator lightPath_;
  std::vector<TVector3> events_;
  std::vector<TVector3> pmts_;
};

TEST_F(PairScanTest, JudgesEveryPairInOrderWithAnyNumberOfThreads) {
  const Pairs pairs = {events_, pmts_};
  ASSERT_GT(pairs.Count(), PairScan::kChunkSize) << "more than one chunk";
  for (const bool withReflections : {false, true}) {
    const PairChunk wanted = JudgedOneByOne(withReflections);
    for (const std::size_t threads : {1U, 2U, 7U}) {
      PairScan scan(shadowing_, lightPath_, {threads, withReflections, true});
      ExpectSame(Joined(scan.FindVerdicts(pairs, 0, pairs.Count())), wanted);
    }
  }
}

TEST_F(PairScanTest, JudgesAnyPartOfThePairsRepeatedly) {
  const Pairs pairs = {events_, pmts_};
  const PairChunk wanted = JudgedOneByOne(false);
  PairScan scan(shadowing_, lightPath_, {2, false, true});
  PairChunk all;
  for (std::size_t begin = 0; begin < pairs.Count(); begin += 100) {
    const std::size_t end = std::min(begin + 100, pairs.Count());
    const PairChunk some = Joined(scan.FindVerdicts(pairs, begin, end));
    all = Joined({all, some});
  }
  ExpectSame(all, wanted);
  EXPECT_TRUE(scan.FindVerdicts(pairs, 5, 5).empty());
}

TEST_F(PairScanTest, KeepsLightPathsOnlyOnRequest) {
  const Pairs pairs = {events_, pmts_};
  PairScan scan(shadowing_, lightPath_, {});
  for (const PairChunk& chunk : scan.FindVerdicts(pairs, 0, pairs.Count())) {
    EXPECT_TRUE(chunk.paths.empty());
  }
}

TEST_F(PairScanTest, CallsBackWithEachChunkOnce) {
  const Pairs pairs = {events_, pmts_};
  std::mutex guard;
  std::vector<std::size_t> sizes(2);
  PairScan scan(shadowing_, lightPath_,
                {3, false, false, [&](std::size_t number, const auto& chunk) {
                   const std::lock_guard<std::mutex> lock(guard);
                   sizes.at(number) += chunk.verdicts.size();
                 }});
  const auto& chunks = scan.FindVerdicts(pairs, 0, pairs.Count());
  ASSERT_EQ(chunks.size(), sizes.size());
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    EXPECT_EQ(sizes[i], chunks[i].verdicts.size());
  }
}

TEST_F(PairScanTest, SkipsTheOtherChunksWhenTheCallbackThrows) {
  const Pairs pairs = {events_, pmts_};
  int calls = 0;
  PairScan scan(shadowing_, lightPath_, {1, false, false, [&](auto, auto&) {
                                           ++calls;
                                           throw std::runtime_error("stop");
                                         }});
  EXPECT_THROW(scan.FindVerdicts(pairs, 0, pairs.Count()), std::runtime_error);
  EXPECT_EQ(calls, 1);
}

TEST_F(PairScanTest, RethrowsAfterAllThreadsAreDone) {
  const Pairs pairs = {events_, pmts_};
  const PairChunk wanted = JudgedOneByOne(false);
  for (const std::size_t threads : {1U, 3U}) {
    std::atomic<bool> mayThrow = true;
    std::atomic<int> atWork = 0;
    PairScan scan(shadowing_, lightPath_,
                  {threads, false, true, [&](std::size_t number, const auto&) {
                     if (!mayThrow) return;
                     ++atWork;
                     if (number == 0) {
                       --atWork;
                       throw std::runtime_error("stop");
                     }
                     std::this_thread::sleep_for(std::chrono::milliseconds(50));
                     --atWork;
                   }});
    EXPECT_THROW(scan.FindVerdicts(pairs, 0, pairs.Count()),
                 std::runtime_error);
    EXPECT_EQ(atWork, 0) << "a thread is still working";
    mayThrow = false;
    ExpectSame(Joined(scan.FindVerdicts(pairs, 0, pairs.Count())), wanted);
  }
}

}  // namespace
}  // namespace ZARN::Scan

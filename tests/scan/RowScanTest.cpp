#include "scan/RowScan.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "tests/scan/ScanTest.hpp"

namespace ZARN::Scan {
namespace {

using DU::eVerdict;
using Testing::ExpectSame;

/// What a scan finds, event after event.
struct Found {
  std::vector<eVerdict> direct;
  std::vector<eVerdict> reflected;
  std::vector<std::uint8_t> types;
  std::vector<VerdictCounts> perEvent;
  std::uint64_t withoutPath = 0;

  void Take(const RowBlock& block) {
    direct.insert(direct.end(), block.direct.begin(), block.direct.end());
    reflected.insert(reflected.end(), block.reflected.begin(),
                     block.reflected.end());
    types.insert(types.end(), block.types.begin(), block.types.end());
    perEvent.insert(perEvent.end(), block.counts.begin(), block.counts.end());
    withoutPath += block.withoutPath;
  }
};

/// Events inside, in the wall, in the water and at a PMT; PMTs all around.
class RowScanTest : public Testing::ScanTest {
 protected:
  RowScanTest() {
    AddPMTs(67, 0.045);
    const std::vector<TVector3> kinds = {
        {0, 0, 0},     {0, 0, 3000},  {3000, -4000, 0}, {0, 5830, 0},
        {0, 7000, 10}, pmts_.front(), {0, 0, 1e80}};
    for (int i = 0; i < 40; ++i) {
      for (const TVector3& kind : kinds) {
        events_.push_back(kind + TVector3(i % 7, 0.5 * i, -i));
      }
    }
  }

  /// The same, judged pair by pair.
  Found JudgedPairByPair() {
    Found all;
    DU::LightPathCalculator path = lightPath_;
    perPMT_.assign(pmts_.size(), {});
    for (const TVector3& event : events_) {
      all.perEvent.emplace_back();
      for (std::size_t i = 0; i < pmts_.size(); ++i) {
        const auto judge = [&](std::vector<eVerdict>& verdicts) {
          if (!path.HasPath()) return false;
          const auto by = shadowing_.FindShadowing(path.GetLightPath());
          verdicts.push_back(DU::VerdictOf(by));
          all.perEvent.back().Add(by);
          perPMT_[i].Add(by);
          return true;
        };
        path.CalcByPosition(event, pmts_[i]);
        all.types.push_back(static_cast<std::uint8_t>(path.GetLightPathType()));
        if (!judge(all.direct)) {
          all.direct.push_back(WhyNoPath(event, pmts_[i]));
          ++all.withoutPath;
        }
        path.CalcReflectionByPosition(event, pmts_[i]);
        if (!judge(all.reflected)) {
          all.reflected.push_back(eVerdict::kNoReflectedPath);
        }
      }
    }
    return all;
  }

  static eVerdict WhyNoPath(const TVector3& event, const TVector3& pmt) {
    if (event.Mag() > 1e70) return eVerdict::kPositionNotFinite;
    return event == pmt ? eVerdict::kEventAtPMT : eVerdict::kTotalReflection;
  }

  DU::PMTArray PMTs() const { return DU::PMTArray(pmts_); }

  std::vector<VerdictCounts> perPMT_;  // by JudgedPairByPair
};

RowScan::Settings WithThreads(std::size_t threads) {
  RowScan::Settings settings;
  settings.threads = threads;
  return settings;
}

TEST_F(RowScanTest, EqualsTheVerdictsPairByPairWithAnyNumberOfThreads) {
  const Found wanted = JudgedPairByPair();
  std::set<eVerdict> kinds(wanted.direct.begin(), wanted.direct.end());
  kinds.insert(wanted.reflected.begin(), wanted.reflected.end());
  EXPECT_GE(kinds.size(), 8U) << "the events and PMTs test too little";
  for (const std::size_t pairsPerBlock : {1U, 200U, 1000000U}) {
    for (const std::size_t threads : {1U, 2U, 7U}) {
      RowScan::Settings settings = WithThreads(threads);
      settings.withReflections = true;
      settings.withTypes = true;
      settings.withPMTCounts = true;
      settings.pairsPerBlock = pairsPerBlock;
      RowScan scan(shadowing_, lightPath_, PMTs(), settings);
      for (int run = 0; run < 2; ++run) {
        Found found;
        scan.Run(events_, [&](const RowBlock& block) { found.Take(block); });
        EXPECT_EQ(found.direct, wanted.direct);
        EXPECT_EQ(found.reflected, wanted.reflected);
        EXPECT_EQ(found.types, wanted.types);
        EXPECT_EQ(found.withoutPath, wanted.withoutPath);
        ASSERT_EQ(found.perEvent.size(), events_.size());
        for (std::size_t i = 0; i < events_.size(); ++i) {
          ExpectSame(found.perEvent[i], wanted.perEvent[i]);
        }
        ASSERT_EQ(scan.CountsPerPMT().size(), pmts_.size());
        for (std::size_t i = 0; i < pmts_.size(); ++i) {
          ExpectSame(scan.CountsPerPMT()[i], perPMT_[i]);
        }
      }
    }
  }
}

TEST_F(RowScanTest, MakesOnlyWhatIsAskedFor) {
  RowScan scan(shadowing_, lightPath_, PMTs(), WithThreads(2));
  Found found;
  scan.Run(events_, [&](const RowBlock& block) {
    EXPECT_EQ(block.Reflected(0), nullptr);
    found.Take(block);
  });
  EXPECT_EQ(found.direct, JudgedPairByPair().direct);
  EXPECT_TRUE(found.reflected.empty());
  EXPECT_TRUE(found.types.empty());
  EXPECT_TRUE(scan.CountsPerPMT().empty());
}

TEST_F(RowScanTest, NumbersEventsAndSlots) {
  RowScan::Settings settings = WithThreads(3);
  settings.pairsPerBlock = 3 * (pmts_.size() + 10);
  std::mutex guard;
  std::set<std::size_t> inWork;
  settings.onBlock = [&](const RowBlock& block) {
    const std::lock_guard<std::mutex> lock(guard);
    EXPECT_LT(block.slot, RowScan::SlotsFor(3));
    EXPECT_TRUE(inWork.insert(block.slot).second) << "two blocks in one slot";
  };
  RowScan scan(shadowing_, lightPath_, PMTs(), settings);
  std::size_t next = 0;
  scan.Run(events_, [&](const RowBlock& block) {
    const std::lock_guard<std::mutex> lock(guard);
    EXPECT_EQ(inWork.erase(block.slot), 1U) << "not called back";
    EXPECT_EQ(block.firstEvent, next);
    EXPECT_LE(block.events.size(), 3U);
    for (const TVector3& event : block.events) {
      EXPECT_EQ(event, events_[next++]);
    }
  });
  EXPECT_EQ(next, events_.size());
}

TEST_F(RowScanTest, WorksWithoutEventsAndWithoutPMTs) {
  RowScan scan(shadowing_, lightPath_, PMTs(), WithThreads(2));
  scan.Run({}, [](const RowBlock&) { ADD_FAILURE() << "there is no block"; });
  RowScan::Settings settings = WithThreads(2);
  settings.withReflections = true;
  settings.withPMTCounts = true;
  RowScan empty(shadowing_, lightPath_, DU::PMTArray(), settings);
  std::size_t events = 0;
  empty.Run(events_, [&](const RowBlock& block) {
    events += block.events.size();
    EXPECT_TRUE(block.direct.empty());
    EXPECT_EQ(block.withoutPath, 0U);
  });
  EXPECT_EQ(events, events_.size());
}

TEST_F(RowScanTest, CountsTheVerdictsOnSmearedPositions) {
  DU::Smearing smearing;
  smearing.sigma = 300.0;
  smearing.samples = 5;
  smearing.seed = 11;
  std::vector<std::pair<int, int>> wanted;
  std::vector<std::pair<int, int>> wantedReflected;
  for (std::size_t event = 0; event < events_.size(); ++event) {
    std::vector<TVector3> positions;
    SmearedPositions smeared(smearing, event);
    for (int i = 0; i < 5; ++i)
      positions.push_back(smeared.Next(events_[event]));
    for (const TVector3& pmt : pmts_) {
      wanted.emplace_back();
      wantedReflected.emplace_back();
      DU::LightPathCalculator path = lightPath_;
      const auto count = [&](std::pair<int, int>& counts) {
        if (!path.HasPath()) return;
        ++counts.first;
        const auto by = shadowing_.FindShadowing(path.GetLightPath());
        if (by != DU::eShadowingComponent::kNone) ++counts.second;
      };
      for (const TVector3& position : positions) {
        path.CalcByPosition(position, pmt);
        count(wanted.back());
        path.CalcReflectionByPosition(position, pmt);
        count(wantedReflected.back());
      }
    }
  }
  const Found plain = JudgedPairByPair();
  for (const std::size_t threads : {1U, 3U}) {
    RowScan::Settings settings = WithThreads(threads);
    settings.withReflections = true;
    settings.smearing = smearing;
    RowScan scan(shadowing_, lightPath_, PMTs(), settings);
    std::vector<std::pair<int, int>> found;
    std::vector<std::pair<int, int>> foundReflected;
    Found unsmeared;
    scan.Run(events_, [&](const RowBlock& block) {
      unsmeared.Take(block);
      for (const SmearedCount& count : block.smeared) {
        found.emplace_back(count.paths, count.shadowed);
      }
      for (const SmearedCount& count : block.smearedReflected) {
        foundReflected.emplace_back(count.paths, count.shadowed);
      }
    });
    EXPECT_EQ(found, wanted);
    EXPECT_EQ(foundReflected, wantedReflected);
    EXPECT_EQ(unsmeared.direct, plain.direct);
  }
}

TEST_F(RowScanTest, EndsWhenTheSinkThrows) {
  RowScan::Settings settings = WithThreads(1);
  settings.pairsPerBlock = 1;
  settings.withPMTCounts = true;
  int blocks = 0;
  RowScan scan(shadowing_, lightPath_, PMTs(), settings);
  const auto stop = [&](const RowBlock&) {
    ++blocks;
    throw std::runtime_error("stop");
  };
  EXPECT_THROW(scan.Run(events_, stop), std::runtime_error);
  EXPECT_EQ(blocks, 1);
  // What was judged before counts no more.
  scan.Run({}, [](const RowBlock&) {});
  for (const VerdictCounts& counts : scan.CountsPerPMT()) {
    EXPECT_EQ(counts.Paths(), 0U);
  }
}

TEST_F(RowScanTest, RethrowsAfterAllThreadsAreDoneAndCanBeUsedAgain) {
  const Found wanted = JudgedPairByPair();
  for (const std::size_t threads : {1U, 3U}) {
    std::atomic<bool> mayThrow = true;
    std::atomic<int> atWork = 0;
    RowScan::Settings settings = WithThreads(threads);
    settings.pairsPerBlock = 10 * pmts_.size();
    settings.onBlock = [&](const RowBlock& block) {
      if (!mayThrow) return;
      ++atWork;
      if (block.firstEvent == 0) {
        --atWork;
        throw std::runtime_error("stop");
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      --atWork;
    };
    RowScan scan(shadowing_, lightPath_, PMTs(), settings);
    EXPECT_THROW(scan.Run(events_, [](const RowBlock&) {}), std::runtime_error);
    EXPECT_EQ(atWork, 0) << "a thread is still working";
    mayThrow = false;
    Found found;
    scan.Run(events_, [&](const RowBlock& block) { found.Take(block); });
    EXPECT_EQ(found.direct, wanted.direct);
  }
}

}  // namespace
}  // namespace ZARN::Scan

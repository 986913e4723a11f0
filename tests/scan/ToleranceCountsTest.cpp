#include "scan/ToleranceCounts.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "tests/scan/ScanTest.hpp"

namespace ZARN::Scan {
namespace {

using DU::eShadowingComponent;
using Testing::ExpectSame;

/// Events inside, in the wall and in the water, and PMTs all around.
class ToleranceCountsTest : public Testing::ScanTest {
 protected:
  ToleranceCountsTest() {
    AddPMTs(41, 0.07);
    for (int i = 0; i < 8; ++i) {
      events_.emplace_back(0, 100 * i, 3000);
      events_.emplace_back(i, 5830, 0);
      events_.emplace_back(0, 7000, 300 * i);
    }
  }

  RowScan::Settings SettingsOf(std::size_t threads) const {
    RowScan::Settings settings;
    settings.threads = threads;
    settings.withReflections = true;
    settings.withPMTCounts = true;
    settings.pairsPerBlock = 150;
    return settings;
  }

  void Scan(ToleranceCounts& counts, std::size_t threads,
            std::vector<VerdictCounts>* perEvent = nullptr) const {
    RowScan::Settings settings = SettingsOf(threads);
    settings.onBlock = [&](const RowBlock& block) { counts.Judge(block); };
    RowScan(shadowing_, lightPath_, DU::PMTArray(pmts_), settings)
        .Run(events_, [&](const RowBlock& block) {
          if (perEvent == nullptr) return;
          for (std::size_t event = 0; event < block.events.size(); ++event) {
            const VerdictCounts* const found = counts.OfEvent(block, event);
            perEvent->insert(perEvent->end(), found,
                             found + counts.Tolerances().size());
          }
        });
  }

  static ToleranceCounts::Settings CountsFor(
      const std::vector<double>& tolerances, std::size_t threads) {
    return {tolerances, RowScan::SlotsFor(threads), true};
  }

  /// Compare with a scan at each tolerance; the fractions shadowed at them.
  std::vector<double> ExpectThoseOfSingleScans(
      const std::vector<double>& tolerances) const;
};

std::vector<double> ToleranceCountsTest::ExpectThoseOfSingleScans(
    const std::vector<double>& tolerances) const {
  ToleranceCounts counts(shadowing_, lightPath_, pmts_,
                         CountsFor(tolerances, 3));
  std::vector<VerdictCounts> perEvent;
  Scan(counts, 3, &perEvent);
  EXPECT_EQ(perEvent.size(), events_.size() * tolerances.size());
  std::vector<double> fractions;
  for (std::size_t i = 0; i < tolerances.size(); ++i) {
    SCOPED_TRACE(tolerances[i]);
    DU::ShadowingCalculator single = shadowing_;
    single.SetAllGeometryTolerances(tolerances[i]);
    RowScan scan(single, lightPath_, DU::PMTArray(pmts_), SettingsOf(1));
    VerdictCounts all;
    std::size_t next = 0;
    scan.Run(events_, [&](const RowBlock& block) {
      for (const VerdictCounts& wanted : block.counts) {
        ExpectSame(perEvent[next++ * tolerances.size() + i], wanted);
        all += wanted;
      }
    });
    ExpectSame(counts.OfAll()[i], all);
    for (std::size_t pmt = 0; pmt < pmts_.size(); ++pmt) {
      ExpectSame(counts.OfPMT(pmt)[i], scan.CountsPerPMT()[pmt]);
    }
    fractions.push_back(static_cast<double>(all.Shadowed()) /
                        static_cast<double>(all.Paths()));
  }
  return fractions;
}

TEST_F(ToleranceCountsTest, AreThoseOfAScanAtEachTolerance) {
  const auto fractions = ExpectThoseOfSingleScans({-20, 0, 150, 600});
  EXPECT_LT(fractions[0], fractions[3]);
}

TEST_F(ToleranceCountsTest, AreExactWherePlatesDoNotGrowWithTheTolerance) {
  shadowing_ =
      Testing::InRun(Testing::Only({eShadowingComponent::kBellyPlate}));
  // At 36,000 mm the edges of a plate meet again behind its centre.
  const auto fractions = ExpectThoseOfSingleScans({36000, 17000, 150, -700});
  EXPECT_LT(fractions[0], fractions[1]);
  EXPECT_EQ(fractions[3], 0.0);
}

TEST_F(ToleranceCountsTest, AreTheSameInPartsOfARow) {
  const std::size_t half = pmts_.size() / 2;
  ToleranceCounts whole(shadowing_, lightPath_, pmts_, CountsFor({0, 150}, 1));
  ToleranceCounts parts(shadowing_, lightPath_, pmts_, CountsFor({0, 150}, 1));
  RowScan::Settings settings;
  settings.onBlock = [&](const RowBlock& block) {
    whole.Judge(block);
    RowBlock part = block;
    part.direct.clear();
    for (std::size_t event = 0; event < block.events.size(); ++event) {
      part.direct.insert(part.direct.end(), block.Direct(event) + half,
                         block.Direct(event) + block.pmts);
    }
    part.firstPMT = half;
    part.pmts = block.pmts - half;
    parts.Judge(part);
  };
  RowScan(shadowing_, lightPath_, DU::PMTArray(pmts_), settings)
      .Run(events_, [](const RowBlock& /*block*/) {});
  VerdictCounts counted;
  for (std::size_t pmt = 0; pmt < pmts_.size(); ++pmt) {
    ExpectSame(parts.OfPMT(pmt)[1],
               pmt < half ? VerdictCounts() : whole.OfPMT(pmt)[1]);
    counted += parts.OfPMT(pmt)[1];
  }
  EXPECT_GT(counted.Shadowed(), 0U);
  ExpectSame(parts.OfAll()[1], counted);
}

TEST_F(ToleranceCountsTest, StopWithTheExceptionOfTheCheck) {
  ToleranceCounts::Settings settings = CountsFor({0, 150}, 2);
  settings.checkForStop = [] { throw std::runtime_error("stop"); };
  ToleranceCounts counts(shadowing_, lightPath_, pmts_, settings);
  EXPECT_THROW(Scan(counts, 2), std::runtime_error);
}

TEST_F(ToleranceCountsTest, AreZeroWithoutEvents) {
  events_.clear();
  ToleranceCounts counts(shadowing_, lightPath_, pmts_, CountsFor({0, 150}, 1));
  Scan(counts, 1);
  for (const VerdictCounts& found : counts.OfAll()) {
    EXPECT_EQ(found.Paths(), 0U);
  }
}

}  // namespace
}  // namespace ZARN::Scan

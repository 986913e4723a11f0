#include "display/MapScan.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <set>
#include <stdexcept>
#include <vector>

#include "db/DB.hpp"
#include "tests/scan/ScanTest.hpp"

namespace ZARN::Display {
namespace {

using DU::eVerdict;
using Testing::ExpectSame;

constexpr double kRadius = 8300.0;

/// An event from which some light is reflected totally, and more targets than
/// one part has.
class MapScanTest : public Testing::ScanTest {
 protected:
  MapScanTest()
      : targets_(EndsOnSphere(EvenDirections(10000), {}, kRadius)),
        ends_(targets_.make(0, targets_.count)) {}

  MapTables Tables() const { return {&shadowing_, &lightPath_}; }

  MapVerdicts Scan(const MapScanSettings& settings) const {
    return ScanMap(Tables(), events_, targets_, settings);
  }

  /// The verdict on one path, judged alone.
  eVerdict Single(const TVector3& event, const TVector3& end) {
    lightPath_.CalcByPosition(event, end);
    if (!lightPath_.HasPath()) return eVerdict::kTotalReflection;
    return DU::VerdictOf(shadowing_.FindShadowing(lightPath_.GetLightPath()));
  }

  MapPoints targets_;
  std::vector<TVector3> ends_;
};

MapScanSettings WithThreads(std::size_t threads) {
  MapScanSettings settings;
  settings.threads = threads;
  return settings;
}

TEST_F(MapScanTest, EqualsTheVerdictsOnSinglePathsWithAnyNumberOfThreads) {
  events_ = {{4600, 0, 3000}};
  std::vector<eVerdict> wanted;
  MapCounts counts;
  for (const TVector3& end : ends_) {
    wanted.push_back(Single(events_.front(), end));
    counts.Add(wanted.back());
  }
  EXPECT_GE(std::set<eVerdict>(wanted.begin(), wanted.end()).size(), 7U)
      << "the event tests too little";
  for (const std::size_t threads : {1U, 2U, 7U}) {
    const MapVerdicts found = Scan(WithThreads(threads));
    EXPECT_EQ(found.verdicts, wanted);
    ExpectSame(found.counts.paths, counts.paths);
    EXPECT_EQ(found.counts.withoutPath, counts.withoutPath);
    EXPECT_TRUE(found.before.empty());
    EXPECT_TRUE(found.paths.empty());
    EXPECT_TRUE(found.changes.empty());
  }
}

TEST_F(MapScanTest, CountsSeveralEventsForEachTarget) {
  for (int i = 0; i < 9; ++i) events_.emplace_back(4600, 100 * i, 500 * i);
  std::vector<std::uint64_t> paths(ends_.size());
  std::vector<std::uint64_t> shadowed(ends_.size());
  MapCounts counts;
  for (const TVector3& event : events_) {
    MapScanSettings settings;
    const MapVerdicts one = ScanMap(Tables(), {event}, targets_, settings);
    for (std::size_t i = 0; i < ends_.size(); ++i) {
      paths[i] += DU::HasPath(one.verdicts[i]) ? 1U : 0U;
      shadowed[i] += DU::IsShadowed(one.verdicts[i]) ? 1U : 0U;
      counts.Add(one.verdicts[i]);
    }
  }
  for (const std::size_t threads : {1U, 2U, 7U}) {
    const MapVerdicts found = Scan(WithThreads(threads));
    EXPECT_EQ(found.paths, paths);
    EXPECT_EQ(found.shadowed, shadowed);
    EXPECT_TRUE(found.verdicts.empty());
    ExpectSame(found.counts.paths, counts.paths);
    EXPECT_EQ(found.counts.withoutPath, counts.withoutPath);
  }
}

TEST_F(MapScanTest, CountsAtEachToleranceAsAScanAtIt) {
  events_ = {{0, 0, 3000}, {-3000, 2000, 0}};
  targets_ = EndsOnSphere(EvenDirections(5000), {}, kRadius);
  for (const std::size_t threads : {1U, 3U}) {
    MapScanSettings settings = WithThreads(threads);
    settings.tolerances = {0, 150, 300};
    const MapVerdicts found = Scan(settings);
    ASSERT_EQ(found.atTolerances.size(), settings.tolerances.size());
    for (std::size_t i = 0; i < settings.tolerances.size(); ++i) {
      DU::ShadowingCalculator single = shadowing_;
      single.SetAllGeometryTolerances(settings.tolerances[i]);
      const MapVerdicts wanted =
          ScanMap({&single, &lightPath_}, events_, targets_, WithThreads(1));
      ExpectSame(found.atTolerances[i], wanted.counts.paths);
    }
    ExpectSame(found.atTolerances[1], found.counts.paths);
    EXPECT_LT(found.atTolerances[0].Shadowed(),
              found.atTolerances[2].Shadowed());
  }
}

TEST_F(MapScanTest, ComparesTwoSetsOfTables) {
  events_ = {{4600, 0, 3000}};
  DU::ShadowingCalculator narrow = shadowing_;
  narrow.SetAllGeometryTolerances(0.0);
  const MapVerdicts before =
      ScanMap({&narrow, &lightPath_}, events_, targets_, WithThreads(1));
  const MapVerdicts after = Scan(WithThreads(1));
  MapScanSettings settings = WithThreads(3);
  settings.before = MapTables{&narrow, &lightPath_};
  const MapVerdicts found = Scan(settings);
  EXPECT_EQ(found.before, before.verdicts);
  EXPECT_EQ(found.verdicts, after.verdicts);
  ExpectSame(found.counts.paths, after.counts.paths);
  ASSERT_GT(found.changes.size(), 3U);
  std::uint64_t changed = 0;
  for (std::size_t i = 0; i < found.changes.size(); ++i) {
    const MapChange& change = found.changes[i];
    std::uint64_t wanted = 0;
    for (std::size_t k = 0; k < ends_.size(); ++k) {
      wanted += before.verdicts[k] == change.before &&
                        after.verdicts[k] == change.after
                    ? 1U
                    : 0U;
    }
    EXPECT_NE(change.before, change.after);
    EXPECT_EQ(change.count, wanted);
    EXPECT_LE(change.count, found.changes[i > 0 ? i - 1 : 0].count);
    changed += change.count;
  }
  std::uint64_t different = 0;
  for (std::size_t i = 0; i < ends_.size(); ++i) {
    different += before.verdicts[i] == after.verdicts[i] ? 0U : 1U;
  }
  EXPECT_EQ(changed, different);
}

TEST_F(MapScanTest, TakesAllReasonsForNoPathAsOneKindOfChange) {
  // In the water, unless the vessel is larger.
  events_ = {{0, 0, 7000}};
  DU::LightPathCalculator larger = lightPath_;
  TableSet tables = DB::Get();
  TableEntry vessel;
  vessel.table = "SOLID";
  vessel.index = "acrylic_vessel_outer";
  vessel.fields = {{"r_sphere", 7500.0}, {"r_neck", 700.0}};
  tables.Add({vessel});
  larger.BeginOfRun(tables);
  MapScanSettings settings;
  settings.before = MapTables{&shadowing_, &larger};
  const MapVerdicts found =
      ScanMap(Tables(), events_, PointsOf(events_), settings);
  EXPECT_EQ(found.before, std::vector<eVerdict>{eVerdict::kPMTNotInWater});
  EXPECT_EQ(found.verdicts, std::vector<eVerdict>{eVerdict::kEventAtPMT});
  EXPECT_TRUE(found.changes.empty());
  EXPECT_EQ(found.counts.WithoutPath(), 1U);
}

TEST_F(MapScanTest, FindsNothingWithoutTargets) {
  events_ = {{0, 0, 3000}};
  targets_ = EvenDirections(0);
  MapScanSettings settings = WithThreads(2);
  settings.tolerances = {0, 150};
  const MapVerdicts found = Scan(settings);
  EXPECT_TRUE(found.verdicts.empty());
  EXPECT_EQ(found.counts.All(), 0U);
  EXPECT_EQ(found.atTolerances.size(), 2U);
}

TEST_F(MapScanTest, ReportsItsProgressInPairs) {
  events_ = {{0, 0, 3000}, {0, 0, 2000}};
  std::vector<std::uint64_t> reports;
  MapScanSettings settings = WithThreads(2);
  settings.onProgress = [&](std::uint64_t pairs) { reports.push_back(pairs); };
  Scan(settings);
  EXPECT_GT(reports.size(), 1U);
  EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
  EXPECT_EQ(reports.back(), 2 * targets_.count);
}

TEST_F(MapScanTest, StopsWithTheExceptionOfACallback) {
  events_ = {{0, 0, 3000}};
  for (const std::size_t threads : {1U, 4U}) {
    std::atomic<int> calls = 0;
    MapScanSettings settings = WithThreads(threads);
    settings.checkForStop = [&] {
      if (++calls == 2) throw std::runtime_error("stop");
    };
    EXPECT_THROW(Scan(settings), std::runtime_error);
    settings = WithThreads(threads);
    settings.onProgress = [](std::uint64_t /*pairs*/) {
      throw std::runtime_error("stop");
    };
    EXPECT_THROW(Scan(settings), std::runtime_error);
  }
}

}  // namespace
}  // namespace ZARN::Display

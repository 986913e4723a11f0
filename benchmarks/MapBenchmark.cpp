#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "benchmarks/Ways.hpp"
#include "display/FillMap.hpp"
#include "display/MapPoints.hpp"
#include "display/MapScan.hpp"
#include "display/SkyMap.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/Verdict.hpp"
#include "io/PositionReader.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PMTArray.hpp"
#include "scan/RowScan.hpp"

/// Time of the verdicts on every direction of a sky map of usual size, per
/// direction, beside scans of as many pairs: of one event and PMTs at the ends
/// of these directions, which the scan first prepares, and of many events and
/// the prepared PMTs of the reference detector. And the time of the panel.
namespace ZARN::Benchmarks {
namespace {

using DU::eVerdict;

constexpr double kPMTRadius = 8300.0;  // of the reference detector

const TVector3& Event() {
  static const TVector3 event(4600, 0, 3000);  // with total reflection
  return event;
}

const DU::ShadowingCalculator& Shadowing() {
  static const DU::ShadowingCalculator calculator = [] {
    DU::ShadowingCalculator begun;
    begun.BeginOfRun();
    begun.MakeLayers();
    return begun;
  }();
  return calculator;
}

const DU::LightPathCalculator& Light() {
  static const DU::LightPathCalculator calculator = [] {
    DU::LightPathCalculator begun;
    begun.BeginOfRun();
    return begun;
  }();
  return calculator;
}

Display::MapGrid Grid() {
  return Display::FindMapGrid({}, Display::eMapColumn::kShown);
}

/// All that the command does to judge every direction.
std::vector<eVerdict> JudgePixels(std::size_t threads) {
  const Display::MapGrid grid = Grid();
  const std::vector<std::uint32_t> pixels = Display::JudgedPixels(grid);
  Display::MapScanSettings settings;
  settings.threads = threads;
  return Display::ScanMap(
             {&Shadowing(), &Light()}, {Event()},
             Display::EndsOnSphere(Display::DirectionsOf(grid, pixels), {},
                                   kPMTRadius),
             settings)
      .verdicts;
}

const std::vector<TVector3>& Ends() {
  static const std::vector<TVector3> ends = [] {
    const Display::MapGrid grid = Grid();
    const std::vector<std::uint32_t> pixels = Display::JudgedPixels(grid);
    return Display::EndsOnSphere(Display::DirectionsOf(grid, pixels), {},
                                 kPMTRadius)
        .make(0, pixels.size());
  }();
  return ends;
}

/// The verdicts on all events, one after the other.
std::vector<eVerdict> ScanRows(const std::vector<TVector3>& events,
                               const DU::PMTArray& pmts, std::size_t threads) {
  Scan::RowScan::Settings settings;
  settings.threads = threads;
  Scan::RowScan scan(Shadowing(), Light(), pmts, settings);
  std::vector<eVerdict> verdicts;
  scan.Run(events, [&](const Scan::RowBlock& block) {
    verdicts.insert(verdicts.end(), block.direct.begin(), block.direct.end());
  });
  return verdicts;
}

void CountItems(benchmark::State& state, std::size_t pairs) {
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(pairs));
  state.counters["pairs"] = static_cast<double>(pairs);
}

void AddWays(std::size_t threads) {
  const std::string name = "map/" + std::to_string(threads) + "/";
  AddBenchmark(name + "directions", [=](benchmark::State& state) {
    RequireEqual(name, ScanRows({Event()}, DU::PMTArray(Ends()), 1),
                 JudgePixels(threads));
    for ([[maybe_unused]] auto _ : state) {
      benchmark::DoNotOptimize(JudgePixels(threads).data());
    }
    CountItems(state, Ends().size());
  });
  AddBenchmark(name + "scan-of-the-ends", [=](benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
      benchmark::DoNotOptimize(
          ScanRows({Event()}, DU::PMTArray(Ends()), threads).data());
    }
    CountItems(state, Ends().size());
  });
  AddBenchmark(name + "scan-of-events", [=](benchmark::State& state) {
    const DU::PMTArray pmts(IO::PositionsOf(
        IO::ReadPositions(std::string(ZARN_DATA_DIR) + "/pmts.csv", "pmt")));
    std::vector<TVector3> events;
    while (events.size() * pmts.Count() < Ends().size()) {
      events.push_back(Event() +
                       TVector3(0, static_cast<double>(events.size()), 0));
    }
    for ([[maybe_unused]] auto _ : state) {
      benchmark::DoNotOptimize(ScanRows(events, pmts, threads).data());
    }
    CountItems(state, events.size() * pmts.Count());
  });
  AddBenchmark(name + "panel", [=](benchmark::State& state) {
    constexpr std::size_t kDirections = 100'000;
    Display::MapScanSettings settings;
    settings.threads = threads;
    settings.tolerances =
        Display::PanelTolerances(DU::Hardware::kDefaultTolerance);
    for ([[maybe_unused]] auto _ : state) {
      benchmark::DoNotOptimize(
          Display::ScanMap(
              {&Shadowing(), &Light()}, {Event()},
              Display::EndsOnSphere(Display::EvenDirections(kDirections), {},
                                    kPMTRadius),
              settings)
              .atTolerances.data());
    }
    CountItems(state, kDirections);
  });
}

void AddAll() {
  AddWays(1);
  AddWays(2);
}

}  // namespace
}  // namespace ZARN::Benchmarks

int main(int argc, char** argv) {
  return ZARN::Benchmarks::RunBenchmarks(argc, argv, ZARN::Benchmarks::AddAll);
}

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PathBatch.hpp"
#include "lightpath/RaySearch.hpp"
#include "tests/lightpath/RowColumns.hpp"
#include "tests/property/Random.hpp"

/// Time of one light path in the reference detector, by where the event lies,
/// and how often the swept angle is computed for it. The events fill the
/// medium (or a ball of 500 mm around the centre) and see PMTs all around. And
/// the time of rows, each path with all its numbers, beside that of the same
/// paths one by one.
namespace ZARN {
namespace {

using DU::LightPathCalculator;
using Testing::CalcOneByOne;
using Testing::Random;
using Testing::RowColumns;

constexpr double kPMTRadius = 8300.0;

struct Pair {
  TVector3 event;
  TVector3 pmt;
};

enum eEvents { kNearCentre, kInside, kInWall, kInWater, kMixed };

const LightPathCalculator& Calculator() {
  static const LightPathCalculator calculator = [] {
    LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
    LightPathCalculator begun;
    begun.BeginOfRun();
    return begun;
  }();
  return calculator;
}

/// Evenly spread between two spheres.
double RadiusBetween(Random& random, double low, double high) {
  return std::cbrt(random.Uniform(low * low * low, high * high * high));
}

std::vector<Pair> MakePairs(eEvents where) {
  constexpr int kPairs = 1 << 14;
  const DU::ConcentricMedia& media = Calculator().GetMedia();
  Random random(2);
  std::vector<Pair> pairs;
  for (int i = 0; i < kPairs; ++i) {
    eEvents from = where;
    // As in the example paths, but for types that cannot occur.
    if (where == kMixed) {
      const double share = random.Uniform(0, 1);
      from = share < 0.47   ? kNearCentre
             : share < 0.60 ? kInside
             : share < 0.62 ? kInWall
                            : kInWater;
    }
    double radius = 0.0;
    if (from == kNearCentre) radius = RadiusBetween(random, 0, 500);
    if (from == kInside) radius = RadiusBetween(random, 0, media.InnerRadius);
    if (from == kInWall) {
      radius = RadiusBetween(random, media.InnerRadius, media.OuterRadius);
    }
    if (from == kInWater) {
      radius = RadiusBetween(random, media.OuterRadius, kPMTRadius);
    }
    pairs.push_back(
        {random.Direction() * radius, random.Direction() * kPMTRadius});
  }
  return pairs;
}

/// Mean number of times that the swept angle is computed.
double EvaluationsOf(const std::vector<Pair>& pairs) {
  const DU::ConcentricMedia& media = Calculator().GetMedia();
  std::int64_t evaluations = 0;
  std::int64_t searches = 0;
  LightPathCalculator calculator = Calculator();
  for (const Pair& pair : pairs) {
    calculator.CalcByPosition(pair.event, pair.pmt);
    if (calculator.GetLightPathType() == DU::kWater) continue;
    ++searches;
    evaluations += FindShortestRay(media, {pair.event.Mag(), pair.pmt.Mag(),
                                           pair.event.Angle(pair.pmt)})
                       .Evaluations;
  }
  return static_cast<double>(evaluations) / static_cast<double>(searches);
}

void BM_CalcByPosition(benchmark::State& state, eEvents where) {
  const std::vector<Pair> pairs = MakePairs(where);
  state.counters["evaluations"] = EvaluationsOf(pairs);
  LightPathCalculator calculator = Calculator();
  std::size_t i = 0;
  for ([[maybe_unused]] auto _ : state) {
    const Pair& pair = pairs[i++ % pairs.size()];
    calculator.CalcByPosition(pair.event, pair.pmt);
    benchmark::DoNotOptimize(calculator.GetLightPath());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(BM_CalcByPosition, near_centre, kNearCentre);
BENCHMARK_CAPTURE(BM_CalcByPosition, inside, kInside);
BENCHMARK_CAPTURE(BM_CalcByPosition, in_wall, kInWall);
BENCHMARK_CAPTURE(BM_CalcByPosition, in_water, kInWater);
BENCHMARK_CAPTURE(BM_CalcByPosition, mixed, kMixed);

/// Events within a distance from the centre, each with 8,000 PMTs: the CPU time
/// of a path in a row, that of a path alone, their ratio, and the share of
/// paths that the row computes as single ones.
void BM_Row(benchmark::State& state, double mostRadius, DU::eKernel kernel) {
  constexpr int kEvents = 32;
  constexpr int kPMTs = 8000;
  Random random(3);
  std::vector<TVector3> positions;
  for (int i = 0; i < kPMTs; ++i) {
    positions.push_back(random.Direction() * kPMTRadius);
  }
  const DU::PMTArray pmts(positions);
  std::vector<TVector3> events;
  for (int i = 0; i < kEvents; ++i) {
    events.push_back(random.Direction() * RadiusBetween(random, 0, mostRadius));
  }
  LightPathCalculator calculator = Calculator();
  const RowColumns columns(pmts.Count());
  std::clock_t alone = 0;
  std::clock_t inRow = 0;
  std::int64_t single = 0;
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    const TVector3& event = events[next++ % events.size()];
    const std::clock_t start = std::clock();
    CalcOneByOne(calculator, event, pmts, columns.Row());
    benchmark::ClobberMemory();
    const std::clock_t middle = std::clock();
    DU::PathBatch batch(calculator.GetMedia(), calculator.GetGroupIndices(),
                        event, pmts);
    batch.UseKernel(kernel);
    batch.Calc(columns.Row());
    benchmark::ClobberMemory();
    alone += middle - start;
    inRow += std::clock() - middle;
    const double* bounds = columns.Row().Bound;
    single += std::count(bounds, bounds + kPMTs, 0.0);
  }
  const double paths = static_cast<double>(state.iterations()) * kPMTs;
  const auto nanoseconds = [&](std::clock_t time) {
    return 1e9 * static_cast<double>(time) / CLOCKS_PER_SEC / paths;
  };
  state.counters["alone_ns"] = nanoseconds(alone);
  state.counters["row_ns"] = nanoseconds(inRow);
  state.counters["ratio"] = nanoseconds(alone) / nanoseconds(inRow);
  state.counters["single"] = static_cast<double>(single) / paths;
}

const bool kAreRowsRegistered = [] {
  constexpr std::array kNames = {"baseline", "avx2", "avx512"};
  for (const DU::eKernel kernel : DU::AvailableKernels()) {
    const std::string name = kNames[static_cast<std::size_t>(kernel)];
    for (const double radius : {500.0, 5150.0, 5800.0}) {
      benchmark::RegisterBenchmark(
          ("BM_Row/" + name + "/within_" +
           std::to_string(static_cast<int>(radius)) + "_mm")
              .c_str(),
          [=](benchmark::State& state) { BM_Row(state, radius, kernel); });
    }
  }
  return true;
}();

}  // namespace
}  // namespace ZARN

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/RaySearch.hpp"
#include "tests/property/Random.hpp"

/// Time of one light path in the reference detector, by where the event lies,
/// and how often the swept angle is computed for it. The events fill the
/// medium (or a ball of 500 mm around the centre) and see PMTs all around.
namespace ZARN {
namespace {

using DU::LightPathCalculator;
using Testing::Random;

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

}  // namespace
}  // namespace ZARN

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/PathSet.hpp"
#include "benchmarks/Ways.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/fast/ShadowingBatch.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "du/fast/ShadowingLayers.hpp"

/// Time of a verdict on the reference detector: layer by layer beside the plain
/// reference, one path a call and in batches, in the cache and out of it.
///
/// Names are parts divided by slashes; script/benchmark reads them.
namespace ZARN::Benchmarks {
namespace {

using DU::eLightPathType;
using DU::eShadowingComponent;
using DU::LightPath;
using DU::ShadowingCalculator;
using DU::ShadowingLayers;

constexpr std::size_t kNear = 4096;      // paths that stay in the cache
constexpr std::size_t kFar = 1'000'000;  // paths that do not
/// The plain reference is asked for one in so many of the latter.
constexpr std::size_t kFarShare = 64;

const char* KeyOf(eLightPathType type) {
  switch (type) {
    case DU::kInnerAVToWater:
      return "inner";
    case DU::kAVThroughInnerAVToWater:
      return "av-inner";
    case DU::kAVToWater:
      return "av";
    case DU::kWaterThroughInnerAV:
      return "water-inner";
    case DU::kWater:
      return "water";
    case DU::kWaterReflection:
      return "reflection";
    default:
      return "mixed";
  }
}

struct NamedLayers {
  const char* name;
  ShadowingLayers layers;
};

/// Each with those before it.
constexpr std::array kLayers = {NamedLayers{"off", {false, false, false}},
                                NamedLayers{"algebra", {true, false, false}},
                                NamedLayers{"tables", {true, true, false}},
                                NamedLayers{"map", {true, true, true}}};

const ShadowingCalculator& CalculatorWith(const NamedLayers& named) {
  static std::map<std::string, ShadowingCalculator> calculators;
  const auto [entry, isNew] = calculators.try_emplace(named.name);
  if (isNew) {
    entry->second.BeginOfRun();
    entry->second.UseLayers(named.layers);
    entry->second.MakeLayers();
  }
  return entry->second;
}

const ShadowingCalculator& Calculator() {
  return CalculatorWith(kLayers.back());
}

PlainCalculator& Plain() {
  static PlainCalculator plain;
  return plain;
}

/// A set that the plain reference judges at a tolerance.
PathSet JudgedSet(eLightPathType type, double tolerance) {
  PathSet set(PathSource().Draw(type, kNear));
  Plain().SetAllGeometryTolerances(tolerance);
  for (const LightPath& path : set.Records()) {
    set.expected.push_back(Plain().FindShadowing(path));
  }
  return set;
}

constexpr double kUsualTolerance = 150.0;

const PathSet& NearSet(eLightPathType type) {
  static std::map<eLightPathType, PathSet> sets;
  const auto found = sets.find(type);
  if (found != sets.end()) return found->second;
  return sets.emplace(type, JudgedSet(type, kUsualTolerance)).first->second;
}

/// The calculator judges these one by one, and the plain reference some.
const PathSet& FarSet(eLightPathType type) {
  static std::map<eLightPathType, PathSet> sets;
  const auto found = sets.find(type);
  if (found != sets.end()) return found->second;
  PathSet set(PathSource().Draw(type, kFar));
  Plain().SetAllGeometryTolerances(kUsualTolerance);
  std::vector<eShadowingComponent> some;
  std::vector<eShadowingComponent> plain;
  for (std::size_t i = 0; i < set.Size(); ++i) {
    const LightPath& path = set.Records()[i];
    set.expected.push_back(Calculator().FindShadowing(path));
    if (i % kFarShare != 0) continue;
    some.push_back(set.expected.back());
    plain.push_back(Plain().FindShadowing(path));
  }
  RequireEqual("paths out of the cache", plain, some);
  return sets.emplace(type, std::move(set)).first->second;
}

/// Which path is asked next waits for the verdict before it, whose value,
/// below 8, changes nothing: the paths are all asked, in order.
void AskDependently(const PathSet& paths, eShadowingComponent* verdicts) {
  const ShadowingCalculator& calculator = Calculator();
  std::size_t i = 0;
  while (i < paths.Size()) {
    verdicts[i] = calculator.FindShadowing(paths.Records()[i]);
    i += 1U + (static_cast<std::size_t>(verdicts[i]) >> 3U);
  }
}

eShadowingComponent ByOf(const ShadowingCalculator& calculator) {
  if (!calculator.IsShadowed()) return eShadowingComponent::kNone;
  if (calculator.IsShadowedByAVHDRope()) return eShadowingComponent::kAVHDRope;
  if (calculator.IsShadowedBySupportRope()) {
    return eShadowingComponent::kSupportRope;
  }
  if (calculator.IsShadowedByBellyPlate()) {
    return eShadowingComponent::kBellyPlate;
  }
  if (calculator.IsShadowedByNCDAnchor()) {
    return eShadowingComponent::kNCDAnchor;
  }
  if (calculator.IsShadowedByAVPipe()) return eShadowingComponent::kAVPipe;
  return eShadowingComponent::kNeckBoss;
}

/// Through the flags; the path is first put where the calculator reads it.
void AskFlags(const PathSet& paths, eShadowingComponent* verdicts) {
  static ShadowingCalculator calculator = Calculator();
  static DU::LightPathCalculator path;
  for (const LightPath& record : paths.Records()) {
    path.SetLightPath(record);
    calculator.CheckForShadowing(path);
    *verdicts++ = ByOf(calculator);
  }
}

Way PlainWay(double tolerance) {
  return [tolerance](const PathSet& paths, eShadowingComponent* verdicts) {
    Plain().SetAllGeometryTolerances(tolerance);
    for (const LightPath& path : paths.Records()) {
      *verdicts++ = Plain().FindShadowing(path);
    }
  };
}

/// Streams over the numbers of columns, as many bytes as they are, and does
/// next to nothing with them.
std::uint64_t ReadAll(const PathSet& paths, std::size_t begin,
                      std::size_t end) {
  std::uint64_t bits = 0;
  for (const std::vector<double>& column : paths.Numbers()) {
    for (std::size_t i = begin; i < end; ++i) {
      std::uint64_t word = 0;
      std::memcpy(&word, &column[i], sizeof(word));
      bits ^= word;
    }
  }
  return bits;
}

/// The bandwidth of memory: the same columns as a batch reads, and nothing
/// else.
void TimeReading(benchmark::State& state) {
  const PathSet& paths = FarSet(kMixed);
  const auto threads = static_cast<std::size_t>(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    std::vector<std::thread> readers;
    for (std::size_t i = 0; i < threads; ++i) {
      readers.emplace_back([&, i] {
        benchmark::DoNotOptimize(ReadAll(paths, paths.Size() * i / threads,
                                         paths.Size() * (i + 1) / threads));
      });
    }
    for (std::thread& reader : readers) reader.join();
  }
  state.SetBytesProcessed(
      state.iterations() *
      static_cast<std::int64_t>(sizeof(double) * paths.Size() *
                                paths.Numbers().size()));
}

BENCHMARK(TimeReading)->Name("read")->Arg(1)->Arg(2)->UseRealTime();

void TimeBeginOfRun(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    ShadowingCalculator calculator;
    calculator.BeginOfRun();
    benchmark::DoNotOptimize(&calculator);
  }
}

BENCHMARK(TimeBeginOfRun)->Name("setup/begin-of-run");

void TimeTolerances(benchmark::State& state) {
  ShadowingCalculator calculator = Calculator();
  double tolerance = kUsualTolerance;
  for ([[maybe_unused]] auto _ : state) {
    tolerance = tolerance == kUsualTolerance ? 100.0 : kUsualTolerance;
    calculator.SetAllGeometryTolerances(tolerance);
    benchmark::DoNotOptimize(&calculator);
  }
}

BENCHMARK(TimeTolerances)->Name("setup/tolerances");

void TimeLayers(benchmark::State& state) {
  ShadowingCalculator calculator = Calculator();
  for ([[maybe_unused]] auto _ : state) {
    calculator.SetAllGeometryTolerances(kUsualTolerance);
    calculator.MakeLayers();
    benchmark::DoNotOptimize(&calculator);
  }
}

BENCHMARK(TimeLayers)->Name("setup/layers");

/// Critical tolerances of all components, from the nearest items and from all.
DU::CriticalTolerances ByNearestItems(const LightPath& path) {
  return Calculator().FindCriticalTolerances(path);
}

DU::CriticalTolerances ByAllItems(const LightPath& path) {
  DU::CriticalTolerances tolerances;
  for (std::size_t i = 0; i < tolerances.of.size(); ++i) {
    tolerances.of[i] = DU::CriticalTolerance(
        Calculator().GetHardware(), DU::kShadowingComponents[i],
        DU::SegmentsOf(path, DU::ShapeOfType(path.LightPathType)));
  }
  return tolerances;
}

using FindTolerances = DU::CriticalTolerances (*)(const LightPath&);

void AddCriticalTolerances(const std::string& name, FindTolerances find) {
  AddBenchmark(name, [name, find](benchmark::State& state) {
    const PathSet& paths = NearSet(kMixed);
    // The way by all items takes a tenth of a millisecond.
    const std::size_t count = paths.Size() / 16;
    for (std::size_t i = 0; i < count; ++i) {
      const LightPath& path = paths.Records()[i];
      if (ByNearestItems(path).of != ByAllItems(path).of) {
        EndForDifference(name);
      }
    }
    for ([[maybe_unused]] auto _ : state) {
      for (std::size_t i = 0; i < count; ++i) {
        benchmark::DoNotOptimize(find(paths.Records()[i]));
      }
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(count));
  });
}

void AddSingleCalls(eLightPathType type) {
  const std::string end = std::string("/") + KeyOf(type);
  const auto near = [type]() -> const PathSet& { return NearSet(type); };
  AddWay("near/plain" + end, near, PlainWay(kUsualTolerance));
  for (const NamedLayers& layers : kLayers) {
    AddWay(std::string("near/") + layers.name + end, near,
           SingleCalls([&layers]() -> const ShadowingCalculator& {
             return CalculatorWith(layers);
           }));
  }
  AddWay("near/dependent" + end, near, AskDependently);
  AddWay("near/flags" + end, near, AskFlags);
  AddWay("near/batch" + end, near, ColumnBatch(Calculator));
}

/// Hit shares by tolerance.
void AddTolerance(int tolerance) {
  const std::string begin = "tolerance/" + std::to_string(tolerance) + "/";
  static std::map<int, PathSet> sets;
  static std::map<int, ShadowingCalculator> calculators;
  const auto paths = [=]() -> const PathSet& {
    const auto found = sets.find(tolerance);
    if (found != sets.end()) return found->second;
    calculators[tolerance] = Calculator();
    calculators[tolerance].SetAllGeometryTolerances(tolerance);
    calculators[tolerance].MakeLayers();
    return sets.emplace(tolerance, JudgedSet(kMixed, tolerance)).first->second;
  };
  const auto calculator = [=]() -> const ShadowingCalculator& {
    return calculators.at(tolerance);
  };
  AddWay(begin + "plain", paths, PlainWay(tolerance));
  AddWay(begin + "single", paths, SingleCalls(calculator));
  AddWay(begin + "batch", paths, ColumnBatch(calculator));
}

/// A batch of columns with a certain kernel, as the calculator does it with the
/// widest.
class KernelBatch {
 public:
  explicit KernelBatch(DU::eKernel kernel) { batch_.UseKernel(kernel); }

  void Judge(const PathSet& paths, eShadowingComponent* verdicts) const {
    const ShadowingCalculator& calculator = Calculator();
    std::array<std::uint8_t, DU::kBatchPaths> found;
    for (std::size_t first = 0; first < paths.Size(); first += found.size()) {
      const std::size_t count = std::min(found.size(), paths.Size() - first);
      batch_.Judge(filter_, DU::PathsInColumns(paths.Columns(), first), count,
                   found.data());
      for (std::size_t i = 0; i < count; ++i) {
        verdicts[first + i] =
            found[i] == DU::kOpenVerdict
                ? calculator.FindShadowing(paths.Columns().At(first + i))
                : static_cast<eShadowingComponent>(found[i]);
      }
    }
  }

 private:
  DU::ShadowingFilter filter_{Calculator().GetHardware(),
                              DU::ShadowingLayers()};
  DU::ShadowingBatch batch_{filter_};
};

const KernelBatch& BatchWith(DU::eKernel kernel) {
  static std::map<DU::eKernel, KernelBatch> batches;
  return batches.try_emplace(kernel, kernel).first->second;
}

void AddBatches(eLightPathType type) {
  const std::string end = std::string("/") + KeyOf(type);
  const auto near = [type]() -> const PathSet& { return NearSet(type); };
  const auto far = [type]() -> const PathSet& { return FarSet(type); };
  AddWay("far/single" + end, far, SingleCalls(Calculator));
  for (const DU::eKernel kernel : DU::AvailableKernels()) {
    const std::string way =
        std::string("/columns/") + NameOf(kernel) + "/1" + end;
    const Way judge = [kernel](const PathSet& paths, auto* verdicts) {
      BatchWith(kernel).Judge(paths, verdicts);
    };
    AddWay("near" + way, near, judge);
    AddWay("far" + way, far, judge);
  }
  for (const std::size_t threads : {1U, 2U}) {
    const std::string way = "chosen/" + std::to_string(threads) + end;
    AddWay("near/records/" + way, near, RecordBatch(Calculator, threads));
    AddWay("near/columns/" + way, near, ColumnBatch(Calculator, threads));
    AddWay("far/records/" + way, far, RecordBatch(Calculator, threads));
    AddWay("far/columns/" + way, far, ColumnBatch(Calculator, threads));
  }
}

void AddAll() {
  benchmark::AddCustomContext("kernel", NameOf(DU::AvailableKernels().back()));
  AddSingleCalls(kMixed);
  for (const eLightPathType type : kTypesThatOccur) AddSingleCalls(type);
  for (const eLightPathType type : {kMixed, DU::kInnerAVToWater, DU::kWater}) {
    AddBatches(type);
  }
  for (const int tolerance : {-10, 0, 50, 150, 400}) AddTolerance(tolerance);
  AddCriticalTolerances("critical-tolerances/all-items", ByAllItems);
  AddCriticalTolerances("critical-tolerances/nearest", ByNearestItems);
}

}  // namespace
}  // namespace ZARN::Benchmarks

int main(int argc, char** argv) {
  return ZARN::Benchmarks::RunBenchmarks(argc, argv, ZARN::Benchmarks::AddAll);
}

#include "benchmarks/Ways.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "log/Log.hpp"

namespace ZARN::Benchmarks {
namespace {

using DU::eShadowingComponent;

double ShareShadowed(const std::vector<eShadowingComponent>& verdicts) {
  const auto clear =
      std::count(verdicts.begin(), verdicts.end(), eShadowingComponent::kNone);
  return 1.0 -
         static_cast<double>(clear) / static_cast<double>(verdicts.size());
}

}  // namespace

Way SingleCalls(const Subject& subject) {
  return [=](const PathSet& paths, eShadowingComponent* verdicts) {
    const DU::ShadowingCalculator& calculator = subject();
    for (const DU::LightPath& path : paths.Records()) {
      *verdicts++ = calculator.FindShadowing(path);
    }
  };
}

Way RecordBatch(const Subject& subject, std::size_t threads) {
  return [=](const PathSet& paths, eShadowingComponent* verdicts) {
    subject().FindShadowing(paths.Records().data(), paths.Size(), verdicts,
                            threads);
  };
}

Way ColumnBatch(const Subject& subject, std::size_t threads) {
  return [=](const PathSet& paths, eShadowingComponent* verdicts) {
    subject().FindShadowing(paths.Columns(), paths.Size(), verdicts, threads);
  };
}

void AddWay(const std::string& name,
            const std::function<const PathSet&()>& paths, const Way& way) {
  // The library calls the function anew for every repetition.
  const auto time = [=, isCompared = false](benchmark::State& state) mutable {
    const PathSet& set = paths();
    std::vector<eShadowingComponent> verdicts(set.Size());
    if (!isCompared) {
      way(set, verdicts.data());
      RequireEqual(name, set.expected, verdicts);
      isCompared = true;
    }
    for ([[maybe_unused]] auto _ : state) {
      way(set, verdicts.data());
      benchmark::ClobberMemory();
    }
    const auto size = static_cast<double>(set.Size());
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(set.Size()));
    state.counters["paths"] = size;
    state.counters["shadowed"] = ShareShadowed(set.expected);
    state.counters["column_bytes"] = set.ColumnBytesPerPath();
  };
  AddBenchmark(name, time);
}

void AddBenchmark(const std::string& name,
                  const std::function<void(benchmark::State&)>& time) {
  benchmark::RegisterBenchmark(name.c_str(), time)->UseRealTime();
}

void EndForDifference(const std::string& name) {
  std::cerr << name << ": the verdicts differ: nothing is timed\n";
  std::exit(1);
}

const char* NameOf(DU::eKernel kernel) {
  switch (kernel) {
    case DU::eKernel::kBaseline:
      return "baseline";
    case DU::eKernel::kAVX2:
      return "AVX2";
    case DU::eKernel::kAVX512:
      return "AVX-512";
  }
  return "";
}

eShadowingComponent PlainCalculator::FindShadowing(const DU::LightPath& path) {
  path_.SetLightPath(path);
  if (!calculator_.CheckForShadowing(path_)) return eShadowingComponent::kNone;
  if (calculator_.ShadowedByAVHDRope) return eShadowingComponent::kAVHDRope;
  if (calculator_.ShadowedBySupportRope) {
    return eShadowingComponent::kSupportRope;
  }
  if (calculator_.ShadowedByBellyPlate) return eShadowingComponent::kBellyPlate;
  if (calculator_.ShadowedByNCDAnchor) return eShadowingComponent::kNCDAnchor;
  if (calculator_.ShadowedByAVPipe) return eShadowingComponent::kAVPipe;
  return eShadowingComponent::kNeckBoss;
}

int RunBenchmarks(int argc, char** argv, const std::function<void()>& addAll) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  warn.Switch(otext::eState::kSilent);
  LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
  addAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace ZARN::Benchmarks

#include <benchmark/benchmark.h>

#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "app/InputFile.hpp"
#include "app/LightPathReader.hpp"
#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "log/Log.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

/// Time per light path of the calculator beside the plain reference, on the
/// reference detector and the example paths. Only the ratios within one run
/// mean something.
namespace ZARN {
namespace {

using DU::LightPath;
using DU::LightPathCalculator;

/// The example paths, by type; under kUninitialised all of them as they come.
std::map<int, std::vector<LightPath>> ReadPaths() {
  std::map<int, std::vector<LightPath>> paths;
  App::InputFile input(ZARN_DATA_DIR "/example-paths.csv");
  App::LightPathReader reader(input);
  LightPathCalculator path;
  while (reader.Next(path)) {
    paths[DU::kUninitialised].push_back(path.GetLightPath());
    paths[path.GetLightPathType()].push_back(path.GetLightPath());
  }
  return paths;
}

/// Everything that is timed, set up once.
struct Subjects {
  Subjects() {
    LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
    warn.SetOutput(&messages);
    calculator.BeginOfRun();
    reference.BeginOfRun();
    paths = ReadPaths();
    RequireEqualVerdicts();
  }

  /// A fast wrong answer is not worth timing.
  void RequireEqualVerdicts() {
    LightPathCalculator path;
    for (const LightPath& p : paths[DU::kUninitialised]) {
      path.SetLightPath(p);
      const bool expected = reference.CheckForShadowing(path);
      const bool found =
          calculator.FindShadowing(p) != DU::eShadowingComponent::kNone;
      if (calculator.CheckForShadowing(path) != expected || found != expected) {
        std::cerr << "the verdicts differ: nothing is timed\n";
        std::exit(1);
      }
    }
  }

  std::ostringstream messages;
  DU::ShadowingCalculator calculator;
  Reference::PlainShadowingCalculator reference{messages, messages};
  std::map<int, std::vector<LightPath>> paths;
};

Subjects& TheSubjects() {
  static Subjects subjects;
  return subjects;
}

template <class Ask>
void TimePaths(benchmark::State& state, const Ask& ask) {
  const auto& paths = TheSubjects().paths[static_cast<int>(state.range(0))];
  state.SetLabel(state.range(0) == DU::kUninitialised
                     ? "mixed"
                     : DU::kLightPathTypeNames.at(
                           static_cast<std::size_t>(state.range(0))));
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ask(paths[i]));
    i = i + 1 == paths.size() ? 0 : i + 1;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_PlainReference(benchmark::State& state) {
  LightPathCalculator path;
  TimePaths(state, [&](const LightPath& p) {
    path.SetLightPath(p);
    return TheSubjects().reference.CheckForShadowing(path);
  });
}

void BM_CheckForShadowing(benchmark::State& state) {
  LightPathCalculator path;
  TimePaths(state, [&](const LightPath& p) {
    path.SetLightPath(p);
    return TheSubjects().calculator.CheckForShadowing(path);
  });
}

void BM_FindShadowing(benchmark::State& state) {
  TimePaths(state, [&](const LightPath& p) {
    return TheSubjects().calculator.FindShadowing(p);
  });
}

BENCHMARK(BM_PlainReference)
    ->ArgName("type")
    ->DenseRange(DU::kUninitialised, DU::kWaterReflection);
BENCHMARK(BM_CheckForShadowing)
    ->ArgName("type")
    ->DenseRange(DU::kUninitialised, DU::kWaterReflection);
BENCHMARK(BM_FindShadowing)
    ->ArgName("type")
    ->DenseRange(DU::kUninitialised, DU::kWaterReflection);

}  // namespace
}  // namespace ZARN

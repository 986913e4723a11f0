#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "benchmarks/PathSet.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "lightpath/Kernels.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Benchmarks {

/// A way to judge all paths of a set.
using Way = std::function<void(const PathSet& paths,
                               DU::eShadowingComponent* verdicts)>;

/// Makes, or finds, the calculator that is asked; called once a pass.
using Subject = std::function<const DU::ShadowingCalculator&()>;

/// Ask one path after the other.
Way SingleCalls(const Subject& subject);
/// Ask for all paths at once.
Way RecordBatch(const Subject& subject, std::size_t threads = 1);
Way ColumnBatch(const Subject& subject, std::size_t threads = 1);

/// Time a way, one pass over the set a time. Before that its verdicts are
/// compared with those expected; a difference ends the program, for a fast
/// wrong answer is not worth timing.
///
/// @param paths  called when the benchmark runs: large sets take seconds
void AddWay(const std::string& name,
            const std::function<const PathSet&()>& paths, const Way& way);

/// Time anything else by the clock on the wall, as AddWay does.
void AddBenchmark(const std::string& name,
                  const std::function<void(benchmark::State&)>& time);

[[noreturn]] void EndForDifference(const std::string& name);

/// End the program unless the verdicts are equal.
template <class Verdict>
void RequireEqual(const std::string& name, const std::vector<Verdict>& expected,
                  const std::vector<Verdict>& found) {
  if (found != expected) EndForDifference(name);
}

/// In the names of benchmarks.
const char* NameOf(DU::eKernel kernel);

/// The plain reference, asked for records.
class PlainCalculator {
 public:
  /// Begin the run of the tables in the database.
  PlainCalculator() { calculator_.BeginOfRun(); }

  void SetAllGeometryTolerances(double tolerance) {
    calculator_.SetAllGeometryTolerances(tolerance);
  }

  /// The verdict; the path is first put where the calculator reads it.
  DU::eShadowingComponent FindShadowing(const DU::LightPath& path);

 private:
  std::ostringstream messages_;
  Reference::PlainShadowingCalculator calculator_{messages_, messages_};
  DU::LightPathCalculator path_;
};

/// The program: silences ZARN::warn, loads the reference detector, lets
/// @p addAll register the benchmarks, and runs those that are asked for.
int RunBenchmarks(int argc, char** argv, const std::function<void()>& addAll);

}  // namespace ZARN::Benchmarks

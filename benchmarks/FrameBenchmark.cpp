// Verdicts on light paths of ROOT files: by a column of ROOT's frame, and by
// our own source of frames.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <ROOT/RDataFrame.hxx>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/PathSet.hpp"
#include "benchmarks/Ways.hpp"
#include "io/LightPathColumns.hpp"
#include "io/RootPaths.hpp"
#include "rdf/DataFrame.hpp"

namespace ZARN::Benchmarks {
namespace {

using ROOT::RDF::RNode;

constexpr std::size_t kPaths = 250'000;
constexpr const char* kTree = "paths";

/// A folder with the same paths as a TTree and as an RNTuple, written with
/// ROOT's defaults.
class Files {
 public:
  Files() : paths_(PathSource().Draw(kMixed, kPaths)) {
    std::string pattern =
        std::filesystem::temp_directory_path() / "zarn-frames-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no temporary folder");
    }
    folder_ = pattern;
    ROOT::RDF::RSnapshotOptions options;
    Frame().Snapshot(kTree, Name("ttree"), IO::LightPathColumns(), options);
    options.fOutputFormat = ROOT::RDF::ESnapshotOutputFormat::kRNTuple;
    Frame().Snapshot(kTree, Name("rntuple"), IO::LightPathColumns(), options);
  }
  ~Files() { std::filesystem::remove_all(folder_); }

  const std::vector<DU::LightPath>& Paths() const { return paths_; }
  std::string Name(const std::string& format) const {
    return folder_ / (format + ".root");
  }

 private:
  RNode Frame() const {
    RNode frame = ROOT::RDataFrame(kPaths).Define(
        "type",
        [this](ULong64_t i) {
          return static_cast<int>(paths_[i].LightPathType);
        },
        {"rdfentry_"});
    for (const IO::LightPathVector& vector : IO::kLightPathVectors) {
      for (int axis = 0; axis < 3; ++axis) {
        frame = frame.Define(
            vector.name + std::string("_") + "xyz" [axis],
            [this, member = vector.member, axis](ULong64_t i) {
              return (paths_[i].*member)[axis];
            },
            { "rdfentry_" });
      }
    }
    return frame;
  }

  std::vector<DU::LightPath> paths_;
  std::filesystem::path folder_;
};

const Files& TheFiles() {
  static const Files files;
  return files;
}

const DU::ShadowingCalculator& Calculator() {
  static const DU::ShadowingCalculator calculator = [] {
    DU::ShadowingCalculator begun;
    begun.BeginOfRun();
    begun.MakeLayers();
    return begun;
  }();
  return calculator;
}

template <std::size_t>
using Number = double;

/// Something that needs all coordinates.
template <std::size_t... kColumns>
auto Least(std::index_sequence<kColumns...>) {
  return [](int type, Number<kColumns>... coordinates) {
    return type < 0 ? 0.0 : std::min({coordinates...});
  };
}

void ReadAll(RNode frame) {
  benchmark::DoNotOptimize(*frame
                                .Define("least",
                                        Least(std::make_index_sequence<24>()),
                                        IO::LightPathColumns())
                                .Sum<double>("least"));
}

void SumCodes(RNode frame) {
  benchmark::DoNotOptimize(*frame.Sum<int>("code"));
}

void ReadInBulk(const std::string& file) {
  IO::RootPaths paths(file);
  IO::RootPaths::Block block;
  std::vector<std::uint64_t> starts = paths.ClusterStarts();
  starts.push_back(paths.Entries());
  for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
    constexpr std::uint64_t kInBlock = 2048;
    for (std::uint64_t first = starts[i]; first < starts[i + 1];
         first += kInBlock) {
      const std::uint64_t count = std::min(kInBlock, starts[i + 1] - first);
      paths.Read(first, static_cast<std::size_t>(count), block);
    }
  }
  benchmark::DoNotOptimize(block.paths.types.data());
}

void Add(const std::string& name, const std::function<void()>& work) {
  AddBenchmark(name, [work](benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) work();
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(kPaths));
    state.counters["paths"] = kPaths;
  });
}

void RequireTheVerdicts(const std::string& name, RNode frame) {
  std::vector<int> expected;
  for (const DU::LightPath& path : TheFiles().Paths()) {
    expected.push_back(static_cast<int>(Calculator().FindShadowing(path)));
  }
  RequireEqual(name, expected, *frame.Take<int>("code"));
}

void AddAll() {
  for (const std::string format : {"ttree", "rntuple"}) {
    const std::string file = TheFiles().Name(format);
    const auto column = [file] {
      return RDF::DefineShadowing(ROOT::RDataFrame(kTree, file), Calculator());
    };
    const auto source = [file] { return RDF::FromPaths(file, &Calculator()); };
    const std::string name = "frames/" + format + "/";
    RequireTheVerdicts(name + "column", column());
    RequireTheVerdicts(name + "source", source());
    Add(name + "bulk", [file] { ReadInBulk(file); });
    Add(name + "read", [file] { ReadAll(ROOT::RDataFrame(kTree, file)); });
    Add(name + "column", [column] { SumCodes(column()); });
    Add(name + "source-read", [file] { ReadAll(RDF::FromPaths(file)); });
    Add(name + "source", [source] { SumCodes(source()); });
  }
}

}  // namespace
}  // namespace ZARN::Benchmarks

int main(int argc, char** argv) {
  return ZARN::Benchmarks::RunBenchmarks(argc, argv, ZARN::Benchmarks::AddAll);
}

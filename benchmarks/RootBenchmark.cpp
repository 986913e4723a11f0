#include <TBranch.h>
#include <TBufferFile.h>
#include <TFile.h>
#include <TTree.h>
#include <benchmark/benchmark.h>

#include <ROOT/RField.hxx>
#include <ROOT/RNTupleModel.hxx>
#include <ROOT/RNTupleReader.hxx>
#include <ROOT/RNTupleWriter.hxx>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/CheckOutput.hpp"
#include "app/PathCheck.hpp"
#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "io/LightPathColumns.hpp"
#include "io/PathSource.hpp"
#include "scan/VerdictCounts.hpp"

/// Judging the light paths of a ROOT file, as zarn-shadow check does, beside
/// only reading its columns in bulk: processor time on one thread; and the time
/// on two threads, of which one reads.
namespace ZARN {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExamples = ZARN_DATA_DIR "/example-paths.csv";
constexpr std::size_t kPaths = 500'000;

/// The files, in a folder that is removed at the end.
class Files {
 public:
  Files() {
    std::string folder = (fs::temp_directory_path() / "zarn-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
      throw std::runtime_error(folder + " cannot be made");
    }
    folder_ = folder;
    ReadExamples();
  }
  ~Files() { fs::remove_all(folder_); }

  /// The path of a file, which is written when it is first asked for.
  ///
  /// @param kind  "tree-doubles", "ntuple-floats", ...
  std::string Get(const std::string& kind) const {
    const std::string name = PathOf(kind);
    if (fs::exists(name)) return name;
    if (kind == "tree-doubles") WriteTree<double>(name);
    if (kind == "tree-floats") WriteTree<float>(name);
    if (kind == "ntuple-doubles") WriteNTuple<double>(name);
    if (kind == "ntuple-floats") WriteNTuple<float>(name);
    return name;
  }

 private:
  std::string PathOf(const std::string& kind) const {
    return (folder_ / (kind + ".root")).string();
  }

  void ReadExamples() {
    const auto source = IO::OpenPaths(kExamples, {});
    const auto block = source->MakeBlock();
    while (block->Read()) {
      block->Parse();
      for (std::size_t i = 0; i < block->paths.Size(); ++i) {
        types_.push_back(block->paths.types[i]);
        auto& values = values_.emplace_back();
        for (std::size_t c = 0; c < values.size(); ++c) {
          values[c] = block->paths.coordinates[c][i];
        }
      }
      block->Count();
    }
  }

  /// Call a function with the type and the coordinates of each path.
  template <class Coordinate, class Use>
  void ForEach(std::int32_t& type, std::array<Coordinate, 24>& values,
               const Use& use) const {
    for (std::size_t i = 0; i < kPaths; ++i) {
      const std::size_t example = i % types_.size();
      // Real paths do not repeat, which would make them easier to unpack.
      const double scale = 1 + 1e-5 * static_cast<double>(i / types_.size());
      type = types_[example];
      for (std::size_t c = 0; c < values.size(); ++c) {
        values[c] = static_cast<Coordinate>(scale * values_[example][c]);
      }
      use();
    }
  }

  template <class Coordinate>
  void WriteTree(const std::string& name) const {
    TFile file(name.c_str(), "RECREATE");
    TTree tree("paths", "");
    std::int32_t type = 0;
    std::array<Coordinate, 24> values;
    const std::vector<std::string> columns = IO::LightPathColumns();
    tree.Branch("type", &type);
    for (std::size_t c = 0; c < values.size(); ++c) {
      tree.Branch(columns[c + 1].c_str(), &values[c]);
    }
    ForEach(type, values, [&] { tree.Fill(); });
    file.Write();
  }

  template <class Coordinate>
  void WriteNTuple(const std::string& name) const {
    auto model = ROOT::RNTupleModel::CreateBare();
    const std::vector<std::string> columns = IO::LightPathColumns();
    model->MakeField<std::int32_t>("type");
    for (std::size_t c = 1; c < columns.size(); ++c) {
      model->MakeField<Coordinate>(columns[c]);
    }
    auto writer =
        ROOT::RNTupleWriter::Recreate(std::move(model), "paths", name);
    const auto entry = writer->CreateEntry();
    std::int32_t type = 0;
    std::array<Coordinate, 24> values;
    entry->BindRawPtr("type", &type);
    for (std::size_t c = 0; c < values.size(); ++c) {
      entry->BindRawPtr(columns[c + 1], &values[c]);
    }
    ForEach(type, values, [&] { writer->Fill(*entry); });
  }

  fs::path folder_;
  std::vector<int> types_;
  std::vector<std::array<double, 24>> values_;
};

std::optional<Files> files;

/// Reads all baskets of all branches, as they are on disk.
void ReadTree(const std::string& name) {
  TFile file(name.c_str());
  auto* const tree = file.Get<TTree>("paths");
  TBufferFile buffer(TBuffer::kWrite, 32 * 1024);
  for (TObject* const item : *tree->GetListOfBranches()) {
    auto& branch = static_cast<TBranch&>(*item);
    for (Long64_t entry = 0; entry < tree->GetEntries();) {
      const int count =
          branch.GetBulkRead().GetEntriesSerialized(entry, buffer);
      if (count <= 0) throw std::runtime_error("unreadable basket");
      benchmark::DoNotOptimize(buffer.GetCurrent());
      entry += count;
    }
  }
}

/// Reads all fields cluster by cluster, as values of their own type.
void ReadNTuple(const std::string& name) {
  auto reader = ROOT::RNTupleReader::Open("paths", name);
  const ROOT::RNTupleModel& model = reader->GetModel();
  std::vector<ROOT::RFieldBase::RBulkValues> bulks;
  for (const std::string& column : IO::LightPathColumns()) {
    bulks.push_back(model.CreateBulk(column));
  }
  for (const auto& cluster : reader->GetDescriptor().GetClusterIterable()) {
    constexpr std::uint64_t kBlock = 2048;
    for (std::uint64_t i = 0; i < cluster.GetNEntries(); i += kBlock) {
      const auto size = std::min(kBlock, cluster.GetNEntries() - i);
      for (auto& bulk : bulks) {
        benchmark::DoNotOptimize(
            bulk.ReadBulk({cluster.GetId(), i}, nullptr, size));
      }
    }
  }
}

const DU::ShadowingCalculator& Calculator() {
  static const auto calculator = [] {
    LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
    auto made = std::make_unique<DU::ShadowingCalculator>();
    made->BeginOfRun();
    made->MakeLayers();
    return made;
  }();
  return *calculator;
}

/// All that the command does between start-up and its table of counts.
void Check(const std::string& name, std::size_t threads) {
  App::CheckOptions options;
  options.paths = name;
  options.verdicts.output = "/dev/null";
  const auto source = IO::OpenPaths(name, {});
  App::CheckOutput output(options, {}, source->NameColumns());
  App::PathCheck check(Calculator(), *source, {threads});
  Scan::VerdictCounts counts;
  const IO::PathDetails noDetails;
  while (const App::PathCheck::CheckedBlock* const block = check.Next()) {
    output.BeginBlock(*block, *source);
    for (const DU::eShadowingComponent verdict : block->verdicts) {
      counts.Add(verdict);
      output.Write(nullptr, verdict, noDetails);
    }
    block->paths->Count();
  }
  output.Commit();
  if (counts.Paths() != kPaths) throw std::runtime_error("missing paths");
}

template <class Work>
benchmark::internal::Benchmark* Register(const std::string& way,
                                         const std::string& file,
                                         const Work& work) {
  return benchmark::RegisterBenchmark(
             ("root/" + way + "/" + file).c_str(),
             [work, file](benchmark::State& state) {
               if (!files.has_value()) files.emplace();
               const std::string name = files->Get(file);
               Calculator();
               for (auto _ : state) work(name);
               state.SetItemsProcessed(state.iterations() *
                                       static_cast<std::int64_t>(kPaths));
               state.counters["paths"] = kPaths;
             })
      ->Unit(benchmark::kMillisecond);
}

void RegisterAll(const std::string& file, void (*read)(const std::string&)) {
  const auto check = [](std::size_t threads) {
    return [threads](const std::string& name) { Check(name, threads); };
  };
  Register("read", file, read)->MeasureProcessCPUTime();
  Register("check", file, check(1))->MeasureProcessCPUTime();
  Register("check-on-two", file, check(2))->UseRealTime();
}

}  // namespace
}  // namespace ZARN

int main(int argc, char** argv) {
  for (const char* const kind : {"doubles", "floats"}) {
    ZARN::RegisterAll(std::string("tree-") + kind, ZARN::ReadTree);
    ZARN::RegisterAll(std::string("ntuple-") + kind, ZARN::ReadNTuple);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  ZARN::files.reset();
  return 0;
}

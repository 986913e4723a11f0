#include "app/CheckCommand.hpp"

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "app/CheckOptions.hpp"
#include "app/CountsTable.hpp"
#include "app/Grouped.hpp"
#include "app/PathCheck.hpp"
#include "app/ProgressBar.hpp"
#include "app/RunOptions.hpp"
#include "app/ScopedLogOutput.hpp"
#include "app/Signals.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/CsvText.hpp"
#include "io/InputFile.hpp"
#include "io/LightPathReader.hpp"
#include "io/OutputFile.hpp"
#include "io/Quoted.hpp"
#include "io/Sidecar.hpp"
#include "io/VerdictText.hpp"
#include "log/Log.hpp"

namespace ZARN::App {
namespace {

/// Counts the verdicts and writes them in the order of the rows.
class CheckResults {
 public:
  CheckResults(const CheckOptions& options, const IO::Origin& origin)
      : output_(options.output), sidecar_(options.output, origin) {
    output_.Write("row,shadowed,by\n");
  }

  /// Add the verdicts on the next paths. @p calculator judges the paths with
  /// messages, which were left out so far.
  void Take(const PathCheck::CheckedBlock& block,
            DU::ShadowingCalculator& calculator) {
    auto withMessages = block.withMessages.begin();
    for (std::size_t i = 0; i < block.verdicts.size(); ++i) {
      if (withMessages != block.withMessages.end() &&
          withMessages->index == i) {
        Add(FindVerdict(*withMessages++, calculator));
      } else {
        Add(block.verdicts[i]);
      }
    }
  }

  std::uint64_t Rows() const { return rows_; }

  void Commit() {
    output_.Finish();
    sidecar_.Finish();
    ThrowIfInterrupted();
    output_.Commit();
    sidecar_.Commit();
  }

  void Print(const DU::ShadowingCalculator& calculator, double seconds) const {
    PrintCounts(std::cerr, counts_, calculator, seconds);
    if (unknownTypes_ == 0) return;
    std::cerr << "paths with an unknown type name: " << Grouped(unknownTypes_)
              << ", the first " << IO::Quoted(firstUnknownType_) << "\n";
  }

 private:
  DU::eShadowingComponent FindVerdict(const PathCheck::PathWithMessages& item,
                                      DU::ShadowingCalculator& calculator) {
    ThrowIfInterrupted();
    const DU::eLightPathType type = item.path.LightPathType;
    if (type == IO::LightPathReader::kUnknownType) {
      lightPath_.LightPathTypeNames()[type] = item.typeName;
      if (unknownTypes_ == 0) firstUnknownType_ = item.typeName;
      ++unknownTypes_;
    }
    lightPath_.SetLightPath(item.path);
    calculator.CheckForShadowing(lightPath_);
    return calculator.LastVerdict();
  }

  void Add(DU::eShadowingComponent verdict) {
    counts_.Add(verdict);
    line_.clear();
    IO::AppendNumber(line_, rows_++);
    line_ += ',';
    IO::AppendVerdict(line_, verdict);
    line_ += '\n';
    output_.Write(line_);
  }

  IO::OutputFile output_;
  IO::Sidecar sidecar_;
  std::string line_;
  std::uint64_t rows_ = 0;
  Scan::VerdictCounts counts_;
  DU::LightPathCalculator lightPath_;
  std::uint64_t unknownTypes_ = 0;
  std::string firstUnknownType_;
};

void Check(const CheckOptions& options) {
  if (options.debug) debug.Switch(otext::eState::kOn);
  IO::InputFile input(options.paths);
  DU::ShadowingCalculator calculator;
  LoadTables(options.run);
  BeginRun(options.run, calculator);
  IO::LightPathReader reader(input);
  IO::CsvTable& table = reader.Table();

  const DeferredSignals deferredSignals;
  CheckResults results(options, OriginOf(options.run, calculator));

  const auto begin = std::chrono::steady_clock::now();
  {
    ProgressBar progress;
    const ScopedLogOutput logOutput(progress.Messages());
    PathCheck check(calculator, reader, options.threads);
    while (const PathCheck::CheckedBlock* const block = check.Next()) {
      results.Take(*block, calculator);
      if (block->error.has_value()) table.Fail(*block->error);
      table.Count(block->extent);
      progress.Update(results.Rows(), Share(table.BytesTaken(), input.Size()));
    }
    results.Commit();
  }
  const std::chrono::duration<double> elapsed =
      std::chrono::steady_clock::now() - begin;
  results.Print(calculator, elapsed.count());
}

}  // namespace

void AddCheckCommand(CLI::App& app) {
  CLI::App* const command = app.add_subcommand(
      "check", "Report what blocks each light path of a CSV file");
  const auto options = std::make_shared<CheckOptions>();
  AddCheckOptions(*command, *options);
  command->callback([options] {
    RequireConsistent(*options);
    Check(*options);
  });
}

}  // namespace ZARN::App

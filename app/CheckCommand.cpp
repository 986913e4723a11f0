#include "app/CheckCommand.hpp"

#include <chrono>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "app/CheckOptions.hpp"
#include "app/CheckOutput.hpp"
#include "app/CommandLine.hpp"
#include "app/CountsTable.hpp"
#include "app/PathCheck.hpp"
#include "app/ProgressBar.hpp"
#include "app/RunOptions.hpp"
#include "app/ScopedLogOutput.hpp"
#include "app/Signals.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/PathSource.hpp"
#include "io/Quoted.hpp"
#include "log/Grouped.hpp"
#include "log/Log.hpp"

namespace ZARN::App {
namespace {

/// Counts the verdicts and writes them in the order of the rows.
class CheckResults {
 public:
  CheckResults(const CheckOptions& options, const IO::Origin& origin,
               const IO::PathSource& source)
      : source_(source), output_(options, origin, source.NameColumns()) {}

  /// Add the verdicts on the next paths. @p calculator judges the paths with
  /// messages, which were left out so far.
  void Take(const PathCheck::CheckedBlock& block,
            DU::ShadowingCalculator& calculator) {
    output_.BeginBlock(block, source_);
    const std::string_view* names = block.paths->names.data();
    auto withMessages = block.withMessages.begin();
    for (std::size_t i = 0; i < block.verdicts.size(); ++i) {
      const bool hasMessages =
          withMessages != block.withMessages.end() && withMessages->index == i;
      const DU::eShadowingComponent verdict =
          hasMessages ? FindVerdict(*withMessages++, calculator)
                      : block.verdicts[i];
      counts_.Add(verdict);
      output_.Write(names, verdict,
                    block.details.empty() ? noDetails_ : block.details[i]);
      names += source_.NameColumns().size();
    }
  }

  std::uint64_t Rows() const { return output_.Rows(); }

  void Commit() { output_.Commit(); }

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
    if (type == IO::LightPathBlock::kUnknownType) {
      lightPath_.LightPathTypeNames()[type] = item.typeName;
      if (unknownTypes_ == 0) firstUnknownType_ = item.typeName;
      ++unknownTypes_;
    }
    lightPath_.SetLightPath(item.path);
    calculator.CheckForShadowing(lightPath_);
    return calculator.LastVerdict();
  }

  const IO::PathSource& source_;
  CheckOutput output_;
  const IO::PathDetails noDetails_;
  Scan::VerdictCounts counts_;
  DU::LightPathCalculator lightPath_;
  std::uint64_t unknownTypes_ = 0;
  std::string firstUnknownType_;
};

void Check(const CheckOptions& options) {
  if (options.debug) debug.Switch(otext::eState::kOn);
  DU::ShadowingCalculator calculator;
  LoadTables(options.run);
  BeginRun(options.run, calculator);
  const std::unique_ptr<IO::PathSource> source =
      IO::OpenPaths(options.paths, options.names);

  const DeferredSignals deferredSignals;
  CheckResults results(options, OriginOf(options.run, calculator), *source);

  const auto begin = std::chrono::steady_clock::now();
  {
    ProgressBar progress;
    const ScopedLogOutput logOutput(progress.Messages());
    PathCheck check(
        calculator, *source,
        {options.run.threads, options.knownTypes,
         options.verdicts.WritesNTuple(), options.verdicts.PairColumns()});
    while (const PathCheck::CheckedBlock* const block = check.Next()) {
      results.Take(*block, calculator);
      if (block->error.has_value()) source->Fail(*block->error);
      block->paths->Count();
      progress.Update(results.Rows(), source->Done());
    }
    results.Commit();
  }
  const std::chrono::duration<double> elapsed =
      std::chrono::steady_clock::now() - begin;
  results.Print(calculator, elapsed.count());
}

}  // namespace

void AddCheckCommand(CLI::App& app) {
  const auto options = std::make_shared<CheckOptions>();
  CLI::App& command = AddCommand(
      app, "check", "Report what blocks each light path of a file", [options] {
        RequireConsistent(*options);
        Check(*options);
      });
  AddCheckOptions(command, *options);
}

}  // namespace ZARN::App

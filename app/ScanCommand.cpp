#include "app/ScanCommand.hpp"

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/CountsTable.hpp"
#include "app/EventSource.hpp"
#include "app/ProgressBar.hpp"
#include "app/RunOptions.hpp"
#include "app/ScanOptions.hpp"
#include "app/ScanOutputs.hpp"
#include "app/ScopedLogOutput.hpp"
#include "app/Signals.hpp"
#include "io/PositionReader.hpp"
#include "scan/RowScan.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::App {
namespace {

/// What a scan counts.
struct ScanCounts {
  std::uint64_t pairs = 0;
  std::uint64_t withoutPath = 0;
  Scan::VerdictCounts all;

  void Add(const Scan::RowBlock& block) {
    pairs += block.events.size() * block.pmts;
    withoutPath += block.withoutPath;
    for (const Scan::VerdictCounts& counts : block.counts) all += counts;
  }

  void Print(const ScanOptions& options,
             const DU::ShadowingCalculator& shadowing, double seconds) const {
    PrintCount(std::cerr, "pairs", pairs);
    PrintCount(std::cerr, "no path", withoutPath);
    if (options.tolerances.empty()) {
      PrintCounts(std::cerr, all, shadowing, seconds);
    } else {
      PrintPaths(std::cerr, all.Paths(), seconds);
    }
  }
};

/// The events of a file as blocks for the scan; their names are kept with the
/// outputs.
class ScanInput : public Scan::RowScan::Source {
 public:
  ScanInput(EventSource& events, ScanOutputs& outputs, std::size_t slots)
      : events_(events), outputs_(outputs), done_(slots) {}

  bool Next(Scan::RowBlock& block, std::size_t most) override {
    std::vector<IO::NamedPosition>& events = outputs_.EventsOf(block.slot);
    if (!events_.Next(events, most)) return false;
    if (block.firstEvent == 0) {
      outputs_.Begin(events);
      if (outputs_.RequiresIntegers()) events_.RequireIntegers();
    }
    block.events = IO::PositionsOf(events);
    done_[block.slot] = events_.Done();
    return true;
  }

  /// Fraction of the events up to the end of a block; nullopt if unknown.
  std::optional<double> DoneAfter(const Scan::RowBlock& block) const {
    return done_[block.slot];
  }

 private:
  EventSource& events_;
  ScanOutputs& outputs_;
  std::vector<std::optional<double>> done_;  // by slot
};

Scan::RowScan::Settings SettingsOf(const ScanOptions& options,
                                   ScanOutputs& outputs) {
  Scan::RowScan::Settings settings;
  settings.threads = options.run.threads;
  settings.withReflections = options.withReflections;
  settings.withTypes = options.WritesVerdicts() || options.paths.has_value();
  settings.withPMTCounts =
      options.perPMT.has_value() && options.tolerances.empty();
  settings.pairsPerBlock = outputs.PairsPerBlock();
  settings.smearing = options.Smearing();
  settings.checkForStop = ThrowIfInterrupted;
  settings.onBlock = [&outputs](const Scan::RowBlock& block) {
    outputs.MakeRows(block);
  };
  return settings;
}

void RunScan(const ScanOptions& options) {
  LoadTables(options.run);
  DU::ShadowingCalculator shadowing;
  BeginRun(options.run, shadowing);
  DU::LightPathCalculator lightPath;
  lightPath.SetWavelength(options.wavelength);
  BeginRun(options.run, lightPath);
  const std::vector<IO::NamedPosition> pmts =
      IO::ReadPositions(options.input.pmts, "pmt", options.input.names);
  EventSource events = OpenEvents(options.input);

  const DeferredSignals deferredSignals;
  ScanOutputs outputs(options, shadowing, lightPath, pmts);
  ScanInput input(events, outputs,
                  Scan::RowScan::SlotsFor(options.run.threads));
  Scan::RowScan scan(shadowing, lightPath, DU::PMTArray(IO::PositionsOf(pmts)),
                     SettingsOf(options, outputs));
  ScanCounts counts;

  const auto begin = std::chrono::steady_clock::now();
  {
    ProgressBar progress;
    const ScopedLogOutput logOutput(progress.Messages());
    scan.Run(input, [&](const Scan::RowBlock& block) {
      outputs.Write(block);
      counts.Add(block);
      progress.Update(counts.pairs, input.DoneAfter(block));
    });
    outputs.WriteTotals(scan.CountsPerPMT());
    outputs.Commit();
  }
  const std::chrono::duration<double> elapsed =
      std::chrono::steady_clock::now() - begin;
  counts.Print(options, shadowing, elapsed.count());
}

}  // namespace

void AddScanCommand(CLI::App& app) {
  const auto options = std::make_shared<ScanOptions>();
  CLI::App& command = AddCommand(
      app, "scan", "Report what blocks the light from each event to each PMT",
      [options] {
        RequireConsistent(*options);
        RunScan(*options);
      });
  AddScanOptions(command, *options);
}

}  // namespace ZARN::App

#include "app/ScanCommand.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/CountsTable.hpp"
#include "app/EventSource.hpp"
#include "app/ProgressBar.hpp"
#include "app/RunOptions.hpp"
#include "app/ScanOptions.hpp"
#include "app/ScanOutputs.hpp"
#include "app/ScopedLogOutput.hpp"
#include "app/Signals.hpp"
#include "io/InputFile.hpp"
#include "io/PositionReader.hpp"
#include "scan/PairScan.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::App {
namespace {

/// What a scan counts.
struct ScanCounts {
  std::uint64_t pairs = 0;
  std::uint64_t withoutPath = 0;
  Scan::VerdictCounts all;
  std::vector<Scan::VerdictCounts> perPMT;

  void Print(const DU::ShadowingCalculator& shadowing, double seconds) const {
    PrintCount(std::cerr, "pairs", pairs);
    PrintCount(std::cerr, "no path", withoutPath);
    PrintCounts(std::cerr, all, shadowing, seconds);
  }
};

std::vector<IO::NamedPosition> ReadPMTs(const std::string& path) {
  IO::InputFile input(path);
  IO::PositionReader reader(input, "pmt");
  std::vector<IO::NamedPosition> pmts;
  for (IO::NamedPosition pmt; reader.Next(pmt);) pmts.push_back(pmt);
  return pmts;
}

std::vector<TVector3> PositionsOf(const std::vector<IO::NamedPosition>& items) {
  std::vector<TVector3> positions;
  positions.reserve(items.size());
  for (const IO::NamedPosition& item : items) {
    positions.push_back(item.position);
  }
  return positions;
}

/// Judge the pairs of some events, one slice after the other.
void ScanEvents(Scan::PairScan& scan, const Scan::Pairs& pairs,
                ScanOutputs& outputs, ScanCounts& counts,
                const std::function<void(double)>& tellShareDone) {
  std::vector<Scan::VerdictCounts> perEvent(pairs.events.size());
  for (std::size_t begin = 0; begin < pairs.Count();
       begin += ScanOutputs::kSliceSize) {
    const std::size_t end =
        std::min(begin + ScanOutputs::kSliceSize, pairs.Count());
    const std::vector<Scan::PairChunk>& slice =
        scan.FindVerdicts(pairs, begin, end);
    outputs.Write(slice);
    for (const Scan::PairChunk& chunk : slice) {
      for (const Scan::PairVerdict& verdict : chunk.verdicts) {
        if (!verdict.HasPath()) {
          ++counts.withoutPath;
          continue;
        }
        counts.all.Add(verdict.by);
        counts.perPMT[pairs.PMTOf(verdict.pair)].Add(verdict.by);
        perEvent[pairs.EventOf(verdict.pair)].Add(verdict.by);
      }
    }
    counts.pairs += end - begin;
    tellShareDone(static_cast<double>(end) /
                  static_cast<double>(pairs.Count()));
  }
  for (std::size_t event = 0; event < perEvent.size(); ++event) {
    outputs.WriteEvent(event, perEvent[event]);
  }
}

void RunScan(const ScanOptions& options) {
  LoadTables(options.run);
  DU::ShadowingCalculator shadowing;
  BeginRun(options.run, shadowing);
  DU::LightPathCalculator lightPath;
  lightPath.SetWavelength(options.wavelength);
  BeginRun(options.run, lightPath);
  const std::vector<IO::NamedPosition> pmts = ReadPMTs(options.pmts);
  const std::vector<TVector3> pmtPositions = PositionsOf(pmts);
  EventSource source = options.at.has_value() ? EventSource(*options.at)
                                              : EventSource(*options.events);

  const DeferredSignals deferredSignals;
  ScanOutputs outputs(options, shadowing, pmts);
  Scan::PairScan scan(
      shadowing, lightPath,
      {options.threads, options.withReflections, options.paths.has_value(),
       [&outputs](std::size_t number, const auto& chunk) {
         ThrowIfInterrupted();
         outputs.MakeRows(number, chunk);
       }});
  ScanCounts counts;
  counts.perPMT.resize(pmts.size());

  const auto begin = std::chrono::steady_clock::now();
  {
    ProgressBar progress;
    const ScopedLogOutput logOutput(progress.Messages());
    while (source.Next(pmts.size())) {
      outputs.SetEvents(source.Events());
      const std::vector<TVector3> positions = PositionsOf(source.Events());
      ScanEvents(scan, {positions, pmtPositions}, outputs, counts,
                 [&](double share) {
                   progress.Update(counts.pairs, source.Done(share));
                 });
    }
    for (std::size_t i = 0; i < pmts.size(); ++i) {
      outputs.WritePMT(i, counts.perPMT[i]);
    }
    outputs.Commit();
  }
  const std::chrono::duration<double> elapsed =
      std::chrono::steady_clock::now() - begin;
  counts.Print(shadowing, elapsed.count());
}

}  // namespace

void AddScanCommand(CLI::App& app) {
  CLI::App* const command = app.add_subcommand(
      "scan", "Report what blocks the light from each event to each PMT");
  const auto options = std::make_shared<ScanOptions>();
  AddScanOptions(*command, *options);
  command->callback([options] {
    RequireConsistent(*options);
    RunScan(*options);
  });
}

}  // namespace ZARN::App

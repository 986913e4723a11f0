#include "app/ScanCommand.hpp"

#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/DistinctFiles.hpp"
#include "app/EventSource.hpp"
#include "app/Failure.hpp"
#include "app/InputFile.hpp"
#include "app/MessagesPast.hpp"
#include "app/OutputFile.hpp"
#include "app/PairScan.hpp"
#include "app/PositionReader.hpp"
#include "app/ProgressBar.hpp"
#include "app/Quoted.hpp"
#include "app/RunOptions.hpp"
#include "app/Signals.hpp"
#include "app/TallyFile.hpp"
#include "app/VerdictNTuple.hpp"
#include "app/VerdictTally.hpp"

namespace ZARN::App {
namespace {

struct ScanOptions {
  RunOptions run;
  std::string events;
  std::optional<TVector3> at;
  std::string pmts;
  std::optional<std::string> output;
  std::optional<std::string> paths;
  std::optional<std::string> perPMT;
  std::optional<std::string> perEvent;
  double wavelength = DU::LightPathCalculator::kDefaultWavelength;
  std::size_t threads = 1;
  bool withReflections = false;

  bool WritesNTuple() const {
    constexpr std::string_view kEnding = ".root";
    return output.has_value() && output->size() >= kEnding.size() &&
           output->compare(output->size() - kEnding.size(), kEnding.size(),
                           kEnding) == 0;
  }
};

/// Everything that a scan writes.
class ScanOutputs {
 public:
  ScanOutputs(const ScanOptions& options,
              const DU::ShadowingCalculator& shadowing) {
    if (options.WritesNTuple()) {
      ntuple_.emplace(*options.output,
                      VerdictNTuple::Origin{options.run.run,
                                            shadowing.GetAVHDRopeTolerance(),
                                            options.wavelength});
    } else {
      verdicts_.emplace(options.output);
      verdicts_->Write(PairScan::kVerdictHeader);
    }
    if (options.paths.has_value()) {
      paths_.emplace(options.paths);
      paths_->Write(PairScan::PathHeader());
    }
    if (options.perPMT.has_value()) perPMT_.emplace(options.perPMT, "pmt");
    if (options.perEvent.has_value()) {
      perEvent_.emplace(options.perEvent, "event");
    }
  }

  void Write(const PairScan::Chunk& chunk) {
    if (verdicts_.has_value()) verdicts_->Write(chunk.verdictText);
    if (paths_.has_value()) paths_->Write(chunk.pathText);
  }
  void Write(const NamedPosition& event, const NamedPosition& pmt,
             const PathVerdict& verdict) {
    if (ntuple_.has_value()) ntuple_->Fill(event.name, pmt.name, verdict);
  }
  void WriteEvent(const NamedPosition& event, const VerdictTally& tally) {
    if (perEvent_.has_value()) perEvent_->Write(event.cell, tally);
  }
  void WritePMT(const NamedPosition& pmt, const VerdictTally& tally) {
    if (perPMT_.has_value()) perPMT_->Write(pmt.cell, tally);
  }

  void Commit() {
    ForEachFile([](auto& file) { file.Finish(); });
    ThrowIfInterrupted();
    ForEachFile([](auto& file) { file.Commit(); });
  }

 private:
  template <class Work>
  void ForEachFile(const Work& work) {
    if (ntuple_.has_value()) work(*ntuple_);
    if (verdicts_.has_value()) work(*verdicts_);
    if (paths_.has_value()) work(*paths_);
    if (perPMT_.has_value()) work(*perPMT_);
    if (perEvent_.has_value()) work(*perEvent_);
  }

  std::optional<VerdictNTuple> ntuple_;
  std::optional<OutputFile> verdicts_;
  std::optional<OutputFile> paths_;
  std::optional<TallyFile> perPMT_;
  std::optional<TallyFile> perEvent_;
};

/// What is counted.
struct ScanTallies {
  std::uint64_t pairs = 0;
  std::uint64_t withoutPath = 0;
  VerdictTally all;
  std::vector<VerdictTally> perPMT;

  void Print(const DU::ShadowingCalculator& shadowing, double seconds) const {
    PrintCount(std::cerr, "pairs", pairs);
    PrintCount(std::cerr, "no path", withoutPath);
    all.Print(std::cerr, shadowing, seconds);
  }
};

std::vector<NamedPosition> ReadPMTs(const std::string& path) {
  InputFile input(path);
  PositionReader reader(input, "pmt");
  std::vector<NamedPosition> pmts;
  for (NamedPosition pmt; reader.Next(pmt);) pmts.push_back(pmt);
  return pmts;
}

void CheckFiles(const ScanOptions& options) {
  std::vector<std::string> inputs = FilesOf(options.run);
  inputs.push_back(options.pmts);
  if (!options.at.has_value()) inputs.push_back(options.events);
  std::vector<std::string> outputs = {options.output.value_or("-")};
  for (const auto& output : {options.paths, options.perPMT, options.perEvent}) {
    if (output.has_value()) outputs.push_back(*output);
  }
  RequireDistinctFiles(inputs, outputs);
}

/// Judge the pairs of some events, a slice at a time: between slices results
/// are written and the progress is shown.
void ScanEvents(PairScan& scan, const Pairs& pairs, ScanOutputs& outputs,
                ScanTallies& tallies,
                const std::function<void(double)>& tellShareDone) {
  constexpr std::size_t kSlice = 1UL << 14U;
  std::vector<VerdictTally> perEvent(pairs.events.size());
  for (std::size_t begin = 0; begin < pairs.Count(); begin += kSlice) {
    const std::size_t end = std::min(begin + kSlice, pairs.Count());
    std::size_t next = begin;
    for (const PairScan::Chunk& chunk : scan.Judge(pairs, begin, end)) {
      outputs.Write(chunk);
      for (const PathVerdict& verdict : chunk.verdicts) {
        const std::size_t pair = verdict.IsReflected() ? next - 1 : next++;
        outputs.Write(pairs.Event(pair), pairs.PMT(pair), verdict);
        if (!verdict.HasPath()) {
          ++tallies.withoutPath;
          continue;
        }
        tallies.all.Add(verdict.by);
        tallies.perPMT[pair % pairs.pmts.size()].Add(verdict.by);
        perEvent[pair / pairs.pmts.size()].Add(verdict.by);
      }
    }
    tallies.pairs += end - begin;
    tellShareDone(static_cast<double>(end) /
                  static_cast<double>(pairs.Count()));
  }
  for (std::size_t i = 0; i < pairs.events.size(); ++i) {
    outputs.WriteEvent(pairs.events[i], perEvent[i]);
  }
}

void Scan(const ScanOptions& options) {
  CheckFiles(options);
  LoadTables(options.run);
  DU::ShadowingCalculator shadowing;
  BeginRun(options.run, shadowing);
  DU::LightPathCalculator lightPath;
  lightPath.SetWavelength(options.wavelength);
  BeginRun(options.run, lightPath);
  const std::vector<NamedPosition> pmts = ReadPMTs(options.pmts);
  EventSource source = options.at.has_value() ? EventSource(*options.at)
                                              : EventSource(options.events);

  const KeptSignals keptSignals;
  ScanOutputs outputs(options, shadowing);
  PairScan scan(shadowing, lightPath,
                {options.threads, options.withReflections,
                 !options.WritesNTuple(), options.paths.has_value()});
  ScanTallies tallies;
  tallies.perPMT.resize(pmts.size());

  const auto begin = std::chrono::steady_clock::now();
  {
    ProgressBar progress;
    const MessagesPast messagesPast(progress);
    while (source.Next(pmts.size())) {
      ScanEvents(scan, {source.Events(), pmts}, outputs, tallies,
                 [&](double share) {
                   progress.Update(tallies.pairs, source.Done(share));
                 });
    }
    for (std::size_t i = 0; i < pmts.size(); ++i) {
      outputs.WritePMT(pmts[i], tallies.perPMT[i]);
    }
    outputs.Commit();
  }
  const std::chrono::duration<double> elapsed =
      std::chrono::steady_clock::now() - begin;
  tallies.Print(shadowing, elapsed.count());
}

TVector3 PositionOf(const std::string& option, const std::string& text) {
  std::array<double, 3> values = {};
  std::size_t begin = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::size_t comma = text.find(',', begin);
    const bool isLast = i + 1 == values.size();
    if ((comma == std::string::npos) != isLast) {
      throw CLI::ValidationError(
          option, Quoted(text) + " is not three numbers with commas between");
    }
    values[i] = NumberOf(option, text.substr(begin, comma - begin));
    begin = comma + 1;
  }
  return {values[0], values[1], values[2]};
}

}  // namespace

void AddScanCommand(CLI::App& app) {
  CLI::App* const command = app.add_subcommand(
      "scan", "Tell for every event and every PMT what blocks the light");
  const auto options = std::make_shared<ScanOptions>();
  CLI::Option* const events =
      command
          ->add_option("--events", options->events,
                       "CSV file of events; - reads standard input")
          ->type_name("EVENTS.csv");
  CLI::Option* const at =
      command
          ->add_option_function<std::string>(
              "--at",
              [options](const std::string& text) {
                options->at = PositionOf("--at", text);
              },
              "Instead of a file one event, named 0, at this position in mm")
          ->type_name("X,Y,Z")
          ->excludes(events);
  command
      ->add_option("--pmts", options->pmts,
                   "CSV file of PMTs; - reads standard input")
      ->required()
      ->type_name("PMTS.csv");
  AddRunOptions(*command, options->run);
  command
      ->add_option_function<std::string>(
          "--wavelength",
          [options](const std::string& text) {
            options->wavelength = NumberOf("--wavelength", text);
            if (options->wavelength > 0) return;
            throw CLI::ValidationError("--wavelength",
                                       Quoted(text) + " is not above 0");
          },
          "Wavelength of the light in nm (default: 400)")
      ->type_name("NM");
  command->add_flag("--reflections", options->withReflections,
                    "Also judge the light reflected at the vessel");
  command
      ->add_option("-o,--output", options->output,
                   "Write the verdicts to this file: CSV or, named .root, an "
                   "RNTuple")
      ->type_name("OUT");
  command
      ->add_option("--paths", options->paths,
                   "Write every light path to this file, as check reads it")
      ->type_name("PATHS.csv");
  command
      ->add_option("--per-pmt", options->perPMT,
                   "Write counts for each PMT to this file")
      ->type_name("OUT.csv");
  command
      ->add_option("--per-event", options->perEvent,
                   "Write counts for each event to this file")
      ->type_name("OUT.csv");
  AddThreadsOption(*command, options->threads);
  command->footer(
      "EVENTS and PMTS have a header row and these columns, in any order:\n"
      "  event / pmt          any name; carried through\n"
      "  x, y, z              position, mm\n"
      "Other columns are ignored. The light is refracted at the vessel's\n"
      "surfaces; its media are the entries inner_av, acrylic and water of the\n"
      "table OPTICS.\n\n"
      "The verdicts go to standard output unless -o names a file, in the "
      "order\nof the events and for each of the PMTs:\n"
      "  event, pmt           the names\n"
      "  type                 the path's type, e.g. AV->Water\n"
      "  shadowed             0 or 1; -1 in an RNTuple where there is no path\n"
      "  by                   AVHDRope, SupportRope, BellyPlate, NCDAnchor,\n"
      "                       AVPipe, NeckBoss, or empty; no path (type and\n"
      "                       shadowed are then empty) where total reflection\n"
      "                       leaves none, to a PMT that is not in the water,\n"
      "                       from an event at the PMT or a place not finite\n"
      "The counts are CSV: pmt or event, paths, shadowed, fraction, and by, "
      "the\n"
      "component that blocks most. - is standard output for any one file.\n"
      "check on PATHS gives the same verdicts with the same tables, run and\n"
      "tolerance.\n\n"
      "Exit status: 0; 1 output cannot be written; 2 bad usage or input;\n"
      "130 interrupted.\n\n"
      "Example:\n"
      "  zarn-shadow scan --events data/source-scan.csv --pmts data/pmts.csv "
      "\\\n"
      "      --geometry data/reference-detector -o verdicts.csv");
  command->callback([options, events, at] {
    if (events->count() + at->count() == 0) {
      throw CLI::RequiredError("--events or --at");
    }
    Scan(*options);
  });
}

}  // namespace ZARN::App

#include "app/CheckCommand.hpp"

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "app/Failure.hpp"
#include "app/InputFile.hpp"
#include "app/LightPathReader.hpp"
#include "app/MessagesPast.hpp"
#include "app/Numbers.hpp"
#include "app/OutputFile.hpp"
#include "app/ProgressBar.hpp"
#include "app/Quoted.hpp"
#include "app/RunOptions.hpp"
#include "app/Signals.hpp"
#include "app/VerdictTally.hpp"
#include "du/ShadowingCalculator.hpp"
#include "log/Log.hpp"

namespace ZARN::App {
namespace {

struct CheckOptions {
  std::string paths;
  RunOptions run;
  std::optional<std::string> output;
  bool debug = false;
};

DU::eShadowingComponent VerdictOf(const DU::ShadowingCalculator& calculator) {
  using eComponent = DU::eShadowingComponent;
  if (calculator.IsShadowedByAVHDRope()) return eComponent::kAVHDRope;
  if (calculator.IsShadowedBySupportRope()) return eComponent::kSupportRope;
  if (calculator.IsShadowedByBellyPlate()) return eComponent::kBellyPlate;
  if (calculator.IsShadowedByNCDAnchor()) return eComponent::kNCDAnchor;
  if (calculator.IsShadowedByAVPipe()) return eComponent::kAVPipe;
  if (calculator.IsShadowedByNeckBoss()) return eComponent::kNeckBoss;
  return eComponent::kNone;
}

void WriteVerdict(OutputFile& output, std::uint64_t row,
                  DU::eShadowingComponent verdict) {
  std::string line = std::to_string(row);
  line += verdict == DU::eShadowingComponent::kNone ? ",0," : ",1,";
  line += DU::NameOf(verdict);
  line += '\n';
  output.Write(line);
}

void Check(const CheckOptions& options) {
  if (options.debug) debug.Switch(otext::eState::kOn);
  InputFile input(options.paths);
  DU::ShadowingCalculator calculator;
  LoadTables(options.run);
  BeginRun(options.run, calculator);
  LightPathReader reader(input);

  const KeptSignals keptSignals;
  OutputFile output(options.output);
  VerdictTally tally;

  const auto begin = std::chrono::steady_clock::now();
  {
    ProgressBar progress;
    const MessagesPast messagesPast(progress);
    output.Write("row,shadowed,by\n");
    DU::LightPathCalculator lightPath;
    for (std::uint64_t row = 0; reader.Next(lightPath); ++row) {
      ThrowIfInterrupted();
      calculator.CheckForShadowing(lightPath);
      const DU::eShadowingComponent verdict = VerdictOf(calculator);
      tally.Add(verdict);
      WriteVerdict(output, row, verdict);
      progress.Update(row + 1, Share(reader.BytesTaken(), input.Size()));
    }
    output.Finish();
    ThrowIfInterrupted();
    output.Commit();
  }
  const std::chrono::duration<double> elapsed =
      std::chrono::steady_clock::now() - begin;

  tally.Print(std::cerr, calculator, elapsed.count());
  if (reader.UnknownTypes() > 0) {
    std::cerr << "paths whose type has an unknown name: "
              << Grouped(reader.UnknownTypes()) << ", the first "
              << Quoted(reader.FirstUnknownType()) << "\n";
  }
}

}  // namespace

void AddCheckCommand(CLI::App& app) {
  CLI::App* const command = app.add_subcommand(
      "check", "Tell for every light path of a CSV file what blocks it");
  const auto options = std::make_shared<CheckOptions>();
  command
      ->add_option("PATHS", options->paths,
                   "CSV file of light paths; - reads standard input")
      ->required()
      ->type_name("CSV");
  AddRunOptions(*command, options->run);
  command
      ->add_option("-o,--output", options->output,
                   "Write the verdicts to this file (default: standard output)")
      ->type_name("OUT.csv");
  command->add_flag("--debug", options->debug,
                    "Show the calculator's diagnostics on standard error");
  command->footer(
      "PATHS has a header row and these columns, in any order:\n"
      "  type                 name of the path type, e.g. AV->Water\n"
      "  start_x, _y, _z      start of the path, mm\n"
      "  end_x, _y, _z        its end at the PMT, mm\n"
      "  initial_x, _y, _z    direction of travel at the start\n"
      "  final_x, _y, _z      direction of travel on the last stretch\n"
      "  av1_x ... av4_z      up to four points on the vessel, mm\n"
      "An empty coordinate is 0. Other columns are ignored.\n\n"
      "The verdicts are CSV:\n"
      "  row                  number of the path, from 0\n"
      "  shadowed             0 or 1\n"
      "  by                   AVHDRope, SupportRope, BellyPlate, NCDAnchor,\n"
      "                       AVPipe, NeckBoss, or empty\n"
      "Set-up messages, warnings and a table of counts go to standard "
      "error.\n\n"
      "Exit status: 0; 1 output cannot be written; 2 bad usage or input;\n"
      "130 interrupted.\n\n"
      "Example:\n"
      "  zarn-shadow check data/example-paths.csv \\\n"
      "      --geometry data/reference-detector -o verdicts.csv");
  command->callback([options] { Check(*options); });
}

}  // namespace ZARN::App

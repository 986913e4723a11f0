#include "app/ScanOptions.hpp"

#include <string>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/TolerancesOption.hpp"
#include "app/Usage.hpp"
#include "io/DistinctFiles.hpp"
#include "io/Quoted.hpp"
#include "io/Sidecar.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kInputs =
    "EVENTS and PMTS have these columns, in any order:\n"
    "  event / pmt          any name; copied to the output\n"
    "  x, y, z              position, mm\n"
    "Other columns are ignored. --input-columns gives other names of event,\n"
    "event_x, event_y, event_z, pmt, pmt_x, pmt_y and pmt_z. CSV has a header\n"
    "row. ROOT is a TTree or an RNTuple; EVENTS.root:TREE names one of "
    "several.\n"
    "The light is refracted at the vessel's surfaces; the refractive indices "
    "are\n"
    "read from the entries inner_av, acrylic and water of the table "
    "OPTICS.\n\n";

constexpr const char* kVerdicts =
    "The verdicts go to standard output unless -o names a file or only counts\n"
    "are asked for: for each event, in order, one row per PMT:\n"
    "  event, pmt           the names; integers in an RNTuple if all names of\n"
    "                       PMTs, or those of the first events, are integers\n"
    "  type                 the path's type, e.g. AV->Water\n"
    "  shadowed             0 or 1; -1 in an RNTuple if there is no path\n"
    "  by                   AVHDRope, SupportRope, BellyPlate, NCDAnchor,\n"
    "                       AVPipe, NeckBoss, or empty; no path (type and\n"
    "                       shadowed are then empty) if total reflection\n"
    "                       leaves none, the PMT is not in the water, the\n"
    "                       event is at the PMT or a position is not finite\n"
    "With --smear these columns follow, over the positions around the event:\n";

constexpr const char* kColumns =
    "Columns that --columns can add, in the order given (empty, numbers in an\n"
    "RNTuple NaN, if there is no path):\n";

constexpr const char* kCountsAndExample =
    "With --tolerances the light is judged at several tolerances, and -o is a\n"
    "table of the counts over all events and PMTs:\n"
    "  tolerance            mm\n"
    "  component            any, or the name of one of the six\n"
    "  paths                number of light paths\n"
    "  shadowed             number of those whose verdict it is\n"
    "  fraction             shadowed / paths; empty (NaN) without paths\n"
    "  fraction_error       its binomial standard error\n"
    "The counts of PMTs and events then have a row for each tolerance, and "
    "the\n"
    "column tolerance after the name.\n"
    "The counts are: pmt or event, paths, shadowed, fraction, and by, the\n"
    "component that blocks most; with --smear then smeared_fraction, the mean\n"
    "over the rows that have one. An output is an RNTuple if its name ends in\n"
    ".root, else CSV. Any one output can be - (standard output).\n"
    "check gives the same verdicts for PATHS with the same tables, run and\n"
    "tolerance.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow scan --events data/source-scan.csv --pmts data/pmts.csv "
    "\\\n"
    "      --geometry data/reference-detector -o verdicts.csv";

std::string Footer() {
  constexpr std::size_t kNameWidth = 21;
  const auto describe = [](const std::vector<IO::PairColumn>& columns) {
    std::string text;
    for (const IO::PairColumn& column : columns) {
      std::string name = column.name;
      name.resize(kNameWidth, ' ');
      text += "  " + name + column.description + "\n";
    }
    return text;
  };
  return kInputs + (kVerdicts + describe(IO::SmearedColumns())) + kColumns +
         describe(IO::PairColumns()) + kCountsAndExample;
}

std::vector<std::string> NamesOfColumns() {
  std::vector<std::string> names;
  for (const IO::PairColumn& column : IO::PairColumns()) {
    names.emplace_back(column.name);
  }
  return names;
}

void AddSmearing(CLI::App& command, ScanOptions& options) {
  AddOption(
      command, "--smear",
      [&options](const std::string& text) {
        options.sigma = NumberOf("--smear", text);
        if (*options.sigma >= 0) return;
        throw BadUsage("--smear: " + IO::Quoted(text) + " is less than 0");
      },
      "SIGMA",
      "Also judge Gaussian positions around each event; mm in each "
      "coordinate");
  AddOption(
      command, "--samples",
      [&options](const std::string& text) {
        const int number = WholeNumberOf("--samples", text);
        if (number < 1 || number > DU::Smearing::kMostSamples) {
          throw BadUsage("--samples: " + IO::Quoted(text) +
                         " is out of range (1 to 65535)");
        }
        options.samples = number;
      },
      "N", "Number of positions for --smear (default: 100)");
  AddOption(command, "--seed", options.seed, "S",
            "Seed of the positions for --smear (default: 1)");
}

void RequireNoConflictWithTolerances(const ScanOptions& options) {
  if (options.tolerances.empty()) return;
  if (options.run.tolerance.has_value()) {
    throw BadUsage("--tolerances and --tolerance exclude each other");
  }
  if (options.sigma.has_value()) {
    throw BadUsage("--tolerances and --smear exclude each other");
  }
  if (!options.verdicts.columns.empty()) {
    throw BadUsage("--columns needs verdicts: --tolerances writes counts");
  }
}

void AddOutputs(CLI::App& command, ScanOptions& options) {
  AddVerdictOptions(command, options.verdicts, NamesOfColumns());
  AddOption(command, "--paths", options.paths, "PATHS",
            "Write every light path to this file, which check can read");
  AddOption(command, "--per-pmt", options.perPMT, "OUT",
            "Write counts for each PMT to this file");
  AddOption(command, "--per-event", options.perEvent, "OUT",
            "Write counts for each event to this file");
}

}  // namespace

std::optional<DU::Smearing> ScanOptions::Smearing() const {
  if (!sigma.has_value()) return std::nullopt;
  DU::Smearing smearing;
  smearing.sigma = *sigma;
  if (samples.has_value()) {
    smearing.samples = static_cast<std::size_t>(*samples);
  }
  if (seed.has_value()) smearing.seed = *seed;
  return smearing;
}

std::vector<const IO::PairColumn*> ScanOptions::AllColumns() const {
  std::vector<const IO::PairColumn*> all;
  if (sigma.has_value()) {
    for (const IO::PairColumn& column : IO::SmearedColumns()) {
      all.push_back(&column);
    }
  }
  const auto chosen = verdicts.PairColumns();
  all.insert(all.end(), chosen.begin(), chosen.end());
  return all;
}

void AddScanOptions(CLI::App& command, ScanOptions& options) {
  AddInputOptions(command, options.input);
  AddRunOptions(command, options.run);
  AddThreadsOption(command, options.run.threads);
  AddWavelengthOption(command, options.wavelength);
  AddFlag(command, "--reflections", options.withReflections,
          "Also judge the light reflected at the vessel");
  AddSmearing(command, options);
  AddTolerancesOption(command, options.tolerances,
                      "Count at several tolerances");
  AddOutputs(command, options);
  SetFooter(command, Footer());
}

void RequireConsistent(const ScanOptions& options) {
  RequireEvents(options.input, "scan");
  RequireNoConflictWithTolerances(options);
  if (!options.verdicts.columns.empty() && !options.WritesVerdicts()) {
    throw BadUsage("--columns needs -o: only counts are written");
  }
  if (options.samples.has_value() && !options.sigma.has_value()) {
    throw BadUsage("--samples needs --smear");
  }
  if (options.seed.has_value() && !options.sigma.has_value()) {
    throw BadUsage("--seed needs --smear");
  }
  std::vector<std::string> inputs = FilesOf(options.run);
  for (const std::string& file : FilesOf(options.input)) inputs.push_back(file);
  std::vector<std::string> outputs;
  if (options.WritesResults())
    outputs.push_back(options.verdicts.output.value_or("-"));
  for (const auto& output : {options.paths, options.perPMT, options.perEvent,
                             IO::SidecarName(options.verdicts.output)}) {
    if (output.has_value()) outputs.push_back(*output);
  }
  IO::RequireDistinctFiles(inputs, outputs);
}

}  // namespace ZARN::App

#include "app/ExplainOptions.hpp"

#include <algorithm>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/InputColumnsOption.hpp"
#include "app/PositionOption.hpp"
#include "app/Usage.hpp"
#include "io/DistinctFiles.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kExplainFooter =
    "The light path is given in one of three ways:\n"
    "  --at, --to           from one position to another\n"
    "  --events, --event, --pmts, --pmt\n"
    "                       from an event to a PMT, by their names in the "
    "files\n"
    "                       that scan reads\n"
    "  PATHS, --row         itself: a row of a file that check reads\n\n"
    "For each component the answer says which rule applies to each part of "
    "the\n"
    "path in water, the quantity that decides beside its limit, the rope, "
    "plate\n"
    "or anchor that is meant, and whether it blocks. If there is no light "
    "path,\n"
    "it says why.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow explain --at 0,0,3000 --to 8300,0,0 \\\n"
    "      --geometry data/reference-detector";

/// An option, and whether it was given.
struct Given {
  std::string name;
  bool isGiven;
};

std::vector<std::string> NamesOf(const std::vector<Given>& way, bool areGiven) {
  std::vector<std::string> names;
  for (const Given& option : way) {
    if (option.isGiven == areGiven) names.push_back(option.name);
  }
  return names;
}

void AddWays(CLI::App& command, ExplainOptions& options) {
  AddOption(command, "PATHS", options.paths, "FILE",
            "CSV or ROOT file of light paths, as for check");
  AddOption(
      command, "--row",
      [&options](const std::string& text) {
        const int row = WholeNumberOf("--row", text);
        if (row < 1) {
          throw BadUsage("--row: " + IO::Quoted(text) +
                         " is less than 1, the first row of data");
        }
        options.row = static_cast<std::uint64_t>(row);
      },
      "N", "Row of PATHS, from 1: the one that check numbers N - 1");
  AddPositionOption(command, "--at", options.at,
                    "Where the light starts, in mm");
  AddPositionOption(command, "--to", options.to, "Where it ends, in mm");
  AddOption(command, "--events", options.events, "EVENTS",
            "CSV or ROOT file of events, as for scan");
  AddOption(command, "--event", options.event, "NAME", "Name of the event");
  AddOption(command, "--pmts", options.pmts, "PMTS",
            "CSV or ROOT file of PMTs, as for scan");
  AddOption(command, "--pmt", options.pmt, "NAME", "Name of the PMT");
  AddOption(command, "--input-columns", options.inputColumns, "LIST",
            "Names of columns in the files, as for check or scan");
}

}  // namespace

IO::ColumnNames ExplainOptions::Names() const {
  if (!inputColumns.has_value()) return {};
  return InputColumnsOf(*inputColumns,
                        paths.has_value() ? PathColumns() : PositionColumns());
}

void AddExplainOptions(CLI::App& command, ExplainOptions& options) {
  AddWays(command, options);
  AddRunOptions(command, options.run);
  AddWavelengthOption(command, options.wavelength);
  AddFlag(command, "--reflections", options.isReflected,
          "Explain the light reflected at the vessel");
  AddFlag(command, "--json", options.writesJson, "Write JSON instead of text");
  SetFooter(command, kExplainFooter);
}

void RequireConsistent(const ExplainOptions& options) {
  const std::vector<std::vector<Given>> ways = {
      {{"--at", options.at.has_value()}, {"--to", options.to.has_value()}},
      {{"--events", options.events.has_value()},
       {"--event", options.event.has_value()},
       {"--pmts", options.pmts.has_value()},
       {"--pmt", options.pmt.has_value()}},
      {{"PATHS", options.paths.has_value()},
       {"--row", options.row.has_value()}}};
  const auto isBegun = [](const auto& way) {
    return !NamesOf(way, true).empty();
  };
  if (std::count_if(ways.begin(), ways.end(), isBegun) != 1) {
    throw BadUsage(
        "explain needs one of: --at and --to; --events, --event, --pmts and "
        "--pmt; PATHS and --row");
  }
  const auto& way = *std::find_if(ways.begin(), ways.end(), isBegun);
  const std::vector<std::string> missing = NamesOf(way, false);
  if (!missing.empty()) {
    throw BadUsage(NamesOf(way, true).front() + " needs " +
                   Joined(missing, "and"));
  }
  if (options.paths.has_value() && options.isReflected) {
    throw BadUsage(
        "--reflections is for positions; a row of PATHS says itself "
        "whether its light is reflected");
  }
  if (options.inputColumns.has_value() && options.at.has_value()) {
    throw BadUsage("--input-columns is for files");
  }
  options.Names();
  if (options.events.has_value()) {
    IO::RequireDistinctFiles({*options.events, *options.pmts}, {});
  }
}

}  // namespace ZARN::App

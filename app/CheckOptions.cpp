#include "app/CheckOptions.hpp"

#include <vector>

#include "app/CommandLine.hpp"
#include "app/InputColumnsOption.hpp"
#include "io/DistinctFiles.hpp"
#include "io/Sidecar.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kCheckFooter =
    "PATHS has these columns, in any order:\n"
    "  type                 name of the path type, e.g. AV->Water, or in ROOT "
    "its\n"
    "                       number\n"
    "  start_x, _y, _z      start of the path, mm\n"
    "  end_x, _y, _z        its end at the PMT, mm\n"
    "  initial_x, _y, _z    direction of travel at the start\n"
    "  final_x, _y, _z      direction of travel at the end\n"
    "  av1_x ... av4_z      up to four points on the vessel, mm\n"
    "  event, pmt           optional: any names; copied to the output\n"
    "Other columns are ignored. --input-columns gives other names of these.\n"
    "CSV has a header row, and an empty coordinate is 0. ROOT is a TTree or "
    "an\n"
    "RNTuple; PATHS.root:TREE names one of several.\n\n"
    "The verdicts go to standard output unless -o names a file:\n"
    "  row                  number of the path, from 0\n"
    "  event, pmt           the names, if PATHS has them\n"
    "  shadowed             0 or 1\n"
    "  by                   AVHDRope, SupportRope, BellyPlate, NCDAnchor,\n"
    "                       AVPipe, NeckBoss, or empty\n"
    "Columns that --columns can add:\n"
    "  code                 number of the verdict: 0 clear, 1 to 6 the\n"
    "                       components in this order\n"
    "  critical_tolerance   smallest tolerance that blocks the path, mm; inf "
    "if\n"
    "                       none does, -inf if every one does\n"
    "  critical_by          the component that blocks it at this tolerance\n"
    "  item                 the rope, plate or anchor that blocks it\n"
    "Set-up messages, warnings and a table of counts go to standard "
    "error.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow check data/example-paths.csv \\\n"
    "      --geometry data/reference-detector -o verdicts.csv";

}  // namespace

void AddCheckOptions(CLI::App& command, CheckOptions& options) {
  AddRequiredOption(
      command, "PATHS", options.paths, "FILE",
      "CSV or ROOT file of light paths; - reads CSV from standard input");
  AddInputColumnsOption(command, options.names, PathColumns(),
                        "start_x=evt.x,type=kind");
  AddRunOptions(command, options.run);
  AddThreadsOption(command, options.run.threads);
  AddVerdictOptions(command, options.verdicts, IO::GivenPathColumns());
  AddFlag(command, "--known-types", options.knownTypes,
          "Refuse a path whose type name is unknown");
  AddFlag(command, "--debug", options.debug,
          "Show the calculator's diagnostics on standard error");
  SetFooter(command, kCheckFooter);
}

void RequireConsistent(const CheckOptions& options) {
  std::vector<std::string> inputs = FilesOf(options.run);
  inputs.push_back(options.paths);
  std::vector<std::string> outputs = {options.verdicts.output.value_or("-")};
  const auto sidecar = IO::SidecarName(options.verdicts.output);
  if (sidecar.has_value()) outputs.push_back(*sidecar);
  IO::RequireDistinctFiles(inputs, outputs);
}

}  // namespace ZARN::App

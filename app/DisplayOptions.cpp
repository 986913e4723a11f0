#include "app/DisplayOptions.hpp"

#include <vector>

#include "app/CommandLine.hpp"
#include "app/Usage.hpp"
#include "io/DistinctFiles.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kFooter =
    "The page shows the detector in three dimensions, with its hardware, the\n"
    "PMTs coloured by what blocks the light to them, and the light paths; "
    "beside\n"
    "it are a sky map, a table and all counts. It is one file, which a "
    "browser\n"
    "opens from disk without a network.\n"
    "EVENTS and PMTS have the same columns as for scan.\n\n"
    "If the page would be larger than 20 MB with light paths, it holds only "
    "the\n"
    "verdicts. It holds at most 40,000,000 pairs of event and PMT.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow display --events data/source-scan.csv --pmts data/pmts.csv "
    "\\\n"
    "      --geometry data/reference-detector -o display.html";

}  // namespace

void AddDisplayOptions(CLI::App& command, DisplayOptions& options) {
  AddInputOptions(command, options.input);
  AddRunOptions(command, options.run);
  AddThreadsOption(command, options.run.threads);
  AddWavelengthOption(command, options.wavelength);
  AddFlag(command, "--reflections", options.withReflections,
          "Also show the light reflected at the vessel");
  AddOption(command, "--title", options.title, "TEXT",
            "Title of the page (default: Shadow display)");
  AddOption(command, "-o,--output", options.output, "DISPLAY",
            "Write the page to this file (default: DISPLAY.html)");
  SetFooter(command, kFooter);
}

void RequireConsistent(const DisplayOptions& options) {
  RequireEvents(options.input, "display");
  std::vector<std::string> inputs = FilesOf(options.run);
  for (const std::string& file : FilesOf(options.input)) inputs.push_back(file);
  IO::RequireDistinctFiles(inputs, {options.output});
}

}  // namespace ZARN::App

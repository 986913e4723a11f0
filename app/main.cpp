#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "app/CheckCommand.hpp"
#include "app/ScanCommand.hpp"
#include "app/Signals.hpp"
#include "db/JsonTables.hpp"
#include "io/Errors.hpp"

namespace {

constexpr int kOutputFailed = 1;
constexpr int kBadUsageOrInput = 2;

int Complain(const std::exception& error, int status) {
  std::cerr << "zarn-shadow: " << error.what() << "\n";
  return status;
}

int Run(int argc, char** argv) {
  CLI::App app(
      "Tells which light paths from events to PMTs are blocked by hardware\n"
      "around the acrylic vessel, and by what.",
      "zarn-shadow");
  app.set_version_flag("--version", "zarn-shadow " ZARN_VERSION);
  app.set_help_all_flag("--help-all", "Print the help of all subcommands");
  app.require_subcommand(1);
  app.footer(
      "Examples:\n"
      "  zarn-shadow scan --events data/source-scan.csv --pmts data/pmts.csv "
      "\\\n"
      "      --geometry data/reference-detector -o verdicts.csv\n"
      "  zarn-shadow check data/example-paths.csv \\\n"
      "      --geometry data/reference-detector -o verdicts.csv");
  ZARN::App::AddCheckCommand(app);
  ZARN::App::AddScanCommand(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // The library has a status of its own for each kind of bad usage.
    if (app.exit(error) != 0) return kBadUsageOrInput;
    if (!std::cout.flush()) {
      throw ZARN::IO::OutputFailure("standard output cannot be written");
    }
  }
  return 0;
}

/// A file that is opened later must not take the place of a standard stream
/// that the caller closed: messages would go into it. Nothing can be written
/// here.
void FillStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) open("/dev/null", O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  FillStandardDescriptors();
  ZARN::App::HandleSignals();
  try {
    return Run(argc, argv);
  } catch (const ZARN::IO::BadInput& error) {
    return Complain(error, kBadUsageOrInput);
  } catch (const ZARN::TableFileError& error) {
    return Complain(error, kBadUsageOrInput);
  } catch (const ZARN::App::Interrupted& error) {
    return Complain(error, ZARN::App::StatusOfSignal(error.Signal()));
  } catch (const std::exception& error) {
    return Complain(error, kOutputFailed);
  }
}

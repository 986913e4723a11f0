#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "app/CheckCommand.hpp"
#include "app/DisplayCommand.hpp"
#include "app/ExitStatus.hpp"
#include "app/ExplainCommand.hpp"
#include "app/MapCommand.hpp"
#include "app/PrintText.hpp"
#include "app/ScanCommand.hpp"
#include "app/Signals.hpp"
#include "app/TablesCommand.hpp"
#include "app/Usage.hpp"
#include "db/DBErrors.hpp"
#include "io/Errors.hpp"
#include "io/OutputFile.hpp"
#include "sql/TableStore.hpp"

namespace {

constexpr int kOutputFailed = 1;
constexpr int kBadUsageOrInput = 2;

int Complain(const std::string& text, int status) {
  std::cerr << "zarn-shadow: " << text << "\n";
  return status;
}

int ComplainOfUsage(const CLI::App& app, const std::string& text) {
  return Complain(text + "\n" + ZARN::App::HintAtHelp(app), kBadUsageOrInput);
}

void AddHelp(CLI::App& app) {
  app.set_version_flag("--version", "zarn-shadow " ZARN_VERSION);
  app.set_help_all_flag("--help-all", "Print the help of all subcommands");
  app.footer(
      "Examples:\n"
      "  zarn-shadow scan --events data/source-scan.csv --pmts data/pmts.csv "
      "\\\n"
      "      --geometry data/reference-detector -o verdicts.csv\n"
      "  zarn-shadow check data/example-paths.csv \\\n"
      "      --geometry data/reference-detector -o verdicts.csv\n"
      "  zarn-shadow explain data/example-paths.csv --row 1 \\\n"
      "      --geometry data/reference-detector\n"
      "  zarn-shadow map --at 0,0,3000 --pmts data/pmts.csv \\\n"
      "      --geometry data/reference-detector -o map.svg\n"
      "  zarn-shadow display --events data/source-scan.csv --pmts "
      "data/pmts.csv "
      "\\\n"
      "      --geometry data/reference-detector -o display.html\n"
      "  zarn-shadow tables check data/reference-detector");
}

int Run(int argc, char** argv) {
  CLI::App app(
      "Reports which light paths from events to PMTs are blocked by hardware\n"
      "around the acrylic vessel, and by which component.",
      "zarn-shadow");
  app.require_subcommand(1);
  AddHelp(app);
  ZARN::App::AddCheckCommand(app);
  ZARN::App::AddDisplayCommand(app);
  ZARN::App::AddExplainCommand(app);
  ZARN::App::AddMapCommand(app);
  ZARN::App::AddScanCommand(app);
  ZARN::App::AddTablesCommand(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {  // --help or --version
    std::ostringstream text;
    app.exit(asked, text);
    ZARN::App::PrintText(text.str());
  } catch (const CLI::ParseError& error) {
    return ComplainOfUsage(
        app, ZARN::App::DescribeBadUsage(app, error, {argv + 1, argv + argc}));
  } catch (const ZARN::App::BadUsage& error) {
    return ComplainOfUsage(app, error.what());
  }
  return 0;
}

/// Keep a file that is opened later from getting the descriptor of a standard
/// stream that the caller closed: messages would be written into the file. The
/// placeholder is read-only.
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
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::TableFileError& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::SQL::WriteError& error) {
    return Complain(error.what(), kOutputFailed);
  } catch (const ZARN::SQL::StoreError& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::SQL::ImportRefused& error) {
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const std::invalid_argument& error) {  // a time in --as-of
    return Complain(error.what(), kBadUsageOrInput);
  } catch (const ZARN::App::Ended& ended) {
    return ended.Status();
  } catch (const ZARN::App::Interrupted& error) {
    return Complain(error.what(), ZARN::App::StatusOfSignal(error.Signal()));
  } catch (const ZARN::IO::ClosedPipe&) {
    return ZARN::App::StatusOfSignal(SIGPIPE);  // silent, like other tools
  } catch (const std::exception& error) {
    return Complain(error.what(), kOutputFailed);
  }
}

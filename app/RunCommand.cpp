#include "app/RunCommand.hpp"

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>

#include "app/CheckCommand.hpp"
#include "app/DisplayCommand.hpp"
#include "app/ExplainCommand.hpp"
#include "app/MapCommand.hpp"
#include "app/PrintText.hpp"
#include "app/ScanCommand.hpp"
#include "app/TablesCommand.hpp"
#include "app/Usage.hpp"

namespace ZARN::App {
namespace {

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

std::string WithHint(const CLI::App& app, const std::string& text) {
  return text + "\n" + HintAtHelp(app);
}

}  // namespace

void RunCommand(int argc, char** argv) {
  CLI::App app(
      "Reports which light paths from events to PMTs are blocked by hardware\n"
      "around the acrylic vessel, and by which component.",
      "zarn-shadow");
  app.require_subcommand(1);
  AddHelp(app);
  AddCheckCommand(app);
  AddDisplayCommand(app);
  AddExplainCommand(app);
  AddMapCommand(app);
  AddScanCommand(app);
  AddTablesCommand(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {  // --help or --version
    std::ostringstream text;
    app.exit(asked, text);
    PrintText(text.str());
  } catch (const CLI::ParseError& error) {
    throw BadUsage(
        WithHint(app, DescribeBadUsage(app, error, {argv + 1, argv + argc})));
  } catch (const BadUsage& error) {
    throw BadUsage(WithHint(app, error.what()));
  }
}

}  // namespace ZARN::App

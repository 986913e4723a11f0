#include "app/RunOptions.hpp"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "app/CommandLine.hpp"
#include "app/ReportComponents.hpp"
#include "app/Usage.hpp"
#include "db/Fingerprint.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/Errors.hpp"
#include "io/Quoted.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "sql/TableStore.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kTablesHelp =
    "JSON tables (file or directory), sqlite:FILE or postgresql:CONNECTION";

template <class Calculator>
void Begin(const RunOptions& options, Calculator& calculator,
           const TableSet& tables) {
  try {
    calculator.BeginOfRun(tables);
  } catch (const DBNotFoundError& error) {
    throw IO::BadInput(options.tables.name + ": " + error.what());
  } catch (const DBValueError& error) {
    throw IO::BadInput(options.tables.name + ": " + error.what());
  }
}

}  // namespace

void AddOverrideOption(CLI::App& command, TableSource& source) {
  AddOption(command, "--override", source.overrides, "FILE",
            "JSON tables laid over them: an entry replaces theirs for its "
            "runs");
}

void AddAsOfOption(CLI::App& command, TableSource& source,
                   const std::string& description) {
  AddOption(
      command, "--as-of",
      [&source](const std::string& text) {
        try {
          SQL::ParseTime(text);
          source.asOf = text;
        } catch (const std::invalid_argument& error) {
          throw BadUsage(std::string("--as-of: ") + error.what());
        }
      },
      "TIME", description);
}

void AddSourceArgument(CLI::App& command, const std::string& name,
                       std::string& source) {
  AddRequiredOption(command, name, source, "TABLES", kTablesHelp);
}

void AddRunOption(CLI::App& command, int& run) {
  AddOption(command, "--run", run, "N",
            "Run number for which the tables are read (default: 0)");
}

void AddRunOptions(CLI::App& command, RunOptions& options) {
  AddSourceArgument(command, "--geometry", options.tables.name);
  AddOverrideOption(command, options.tables);
  AddAsOfOption(command, options.tables);
  AddRunOption(command, options.run);
  AddOption(command, "--tolerance", options.tolerance, "MM",
            "Margin in mm around ropes, belly plates and NCD anchors "
            "(default: 150)");
}

void AddThreadsOption(CLI::App& command, std::size_t& threads) {
  threads = std::max(1U, std::thread::hardware_concurrency());
  AddOption(
      command, "--threads",
      [&threads](const std::string& text) {
        constexpr int kMost = 1024;
        const int number = WholeNumberOf("--threads", text);
        if (number < 1 || number > kMost) {
          throw BadUsage("--threads: " + IO::Quoted(text) +
                         " is out of range (1 to 1024)");
        }
        threads = static_cast<std::size_t>(number);
      },
      "N", "Number of threads (default: all cores); results are the same");
}

void AddWavelengthOption(CLI::App& command, double& wavelength) {
  AddOption(
      command, "--wavelength",
      [&wavelength](const std::string& text) {
        wavelength = NumberOf("--wavelength", text);
        if (wavelength > 0) return;
        throw BadUsage("--wavelength: " + IO::Quoted(text) +
                       " is not greater than 0");
      },
      "NM", "Wavelength of the light in nm (default: 400)");
}

std::vector<std::string> FilesOf(const RunOptions& options) {
  return ZARN::FilesOf(options.tables);
}

void LoadTables(const RunOptions& options, TableSet& tables) {
  tables.SetRun(options.run);
  ZARN::LoadTables(tables, options.tables);
}

void BeginRun(const RunOptions& options, DU::ShadowingCalculator& calculator,
              const TableSet& tables) {
  Begin(options, calculator, tables);
  ReportComponents(options, calculator, tables);
  if (options.tolerance.has_value()) {
    calculator.SetAllGeometryTolerances(*options.tolerance);
  }
}

void BeginRun(const RunOptions& options, DU::LightPathCalculator& calculator,
              const TableSet& tables) {
  Begin(options, calculator, tables);
}

void BeginRunIfThereAreMedia(const RunOptions& options,
                             DU::LightPathCalculator& calculator) {
  const auto entries = DB::Get().CurrentEntries();
  const bool areThereMedia =
      std::any_of(entries.begin(), entries.end(),
                  [](const auto& entry) { return entry->table == "OPTICS"; });
  if (areThereMedia) Begin(options, calculator, DB::Get());
}

IO::Origin OriginOf(const RunOptions& options,
                    const DU::ShadowingCalculator& calculator) {
  return {"zarn-shadow", ZARN_VERSION,
          options.run,   calculator.GetAVHDRopeTolerance(),
          std::nullopt,  Fingerprint(DB::Get())};
}

}  // namespace ZARN::App

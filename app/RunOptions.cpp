#include "app/RunOptions.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <thread>

#include "app/ReportComponents.hpp"
#include "app/Usage.hpp"
#include "db/Fingerprint.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/Errors.hpp"
#include "io/Numbers.hpp"
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
  command
      .add_option(
          "--override", source.overrides,
          "JSON tables laid over them: an entry replaces theirs for its "
          "runs")
      ->type_name("FILE");
}

void AddAsOfOption(CLI::App& command, TableSource& source,
                   const std::string& description) {
  command
      .add_option_function<std::string>(
          "--as-of",
          [&source](const std::string& text) {
            try {
              SQL::ParseTime(text);
              source.asOf = text;
            } catch (const std::invalid_argument& error) {
              throw BadUsage(std::string("--as-of: ") + error.what());
            }
          },
          description)
      ->type_name("TIME");
}

void AddSourceArgument(CLI::App& command, const std::string& name,
                       std::string& source) {
  command.add_option(name, source, kTablesHelp)
      ->required()
      ->type_name("TABLES");
}

void AddRunOption(CLI::App& command, int& run) {
  command
      .add_option_function<std::string>(
          "--run",
          [&run](const std::string& text) {
            run = WholeNumberOf("--run", text);
          },
          "Run number for which the tables are read (default: 0)")
      ->type_name("N");
}

void AddRunOptions(CLI::App& command, RunOptions& options) {
  command.add_option("--geometry", options.tables.name, kTablesHelp)
      ->required()
      ->type_name("TABLES");
  AddOverrideOption(command, options.tables);
  AddAsOfOption(command, options.tables);
  AddRunOption(command, options.run);
  command
      .add_option_function<std::string>(
          "--tolerance",
          [&options](const std::string& text) {
            options.tolerance = NumberOf("--tolerance", text);
          },
          "Margin in mm around ropes, belly plates and NCD anchors "
          "(default: 150)")
      ->type_name("MM");
}

void AddThreadsOption(CLI::App& command, std::size_t& threads) {
  threads = std::max(1U, std::thread::hardware_concurrency());
  command
      .add_option_function<std::string>(
          "--threads",
          [&threads](const std::string& text) {
            constexpr int kMost = 1024;
            const int number = WholeNumberOf("--threads", text);
            if (number < 1 || number > kMost) {
              throw BadUsage("--threads: " + IO::Quoted(text) +
                             " is out of range (1 to 1024)");
            }
            threads = static_cast<std::size_t>(number);
          },
          "Number of threads (default: all cores); results are the same")
      ->type_name("N");
}

void AddWavelengthOption(CLI::App& command, double& wavelength) {
  command
      .add_option_function<std::string>(
          "--wavelength",
          [&wavelength](const std::string& text) {
            wavelength = NumberOf("--wavelength", text);
            if (wavelength > 0) return;
            throw BadUsage("--wavelength: " + IO::Quoted(text) +
                           " is not greater than 0");
          },
          "Wavelength of the light in nm (default: 400)")
      ->type_name("NM");
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

int WholeNumberOf(const std::string& option, const std::string& text) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) {
    throw BadUsage(option + ": " + IO::Quoted(text) + " is not a whole number");
  }
  return number;
}

double NumberOf(const std::string& option, const std::string& text) {
  const IO::NumberOrReason number = IO::ParseNumber(text);
  if (number.reason != nullptr) {
    throw BadUsage(option + ": " + IO::Quoted(text) + " " + number.reason);
  }
  if (!std::isfinite(number.value)) {
    throw BadUsage(option + ": " + IO::Quoted(text) + " is not finite");
  }
  return number.value;
}

std::string WithoutBlanks(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

}  // namespace ZARN::App

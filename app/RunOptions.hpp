#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ZARN {

namespace DU {
class LightPathCalculator;
class ShadowingCalculator;
}  // namespace DU

namespace App {

/// Which tables are read, for which run, and what is changed after that.
struct RunOptions {
  std::string geometry;
  int run = 0;
  std::optional<double> tolerance;  // mm
};

/// Add --threads; @p threads must outlive the parsing and becomes the number of
/// cores where the option is not given.
void AddThreadsOption(CLI::App& command, std::size_t& threads);

/// Add --geometry, --run and --tolerance; @p options must outlive the parsing.
void AddRunOptions(CLI::App& command, RunOptions& options);

/// The files that the tables are read from.
std::vector<std::string> FilesOf(const RunOptions& options);

/// Fill the database with the tables.
///
/// @throws TableFileError
void LoadTables(const RunOptions& options);

/// Begin the run. LoadTables comes first. Standard error tells of each
/// component that is off what is missing in its tables.
///
/// @throws IO::BadInput naming the tables and what is missing or wrong in them
void BeginRun(const RunOptions& options, DU::ShadowingCalculator& calculator);
void BeginRun(const RunOptions& options, DU::LightPathCalculator& calculator);

/// Refuse a name that asks for a ROOT file where only CSV is written.
///
/// @throws BadUsage
void RequireCsvName(const std::string& option,
                    const std::optional<std::string>& file);

/// Read an option's value, or throw BadUsage naming the option. The
/// argument library's own conversions take octal, hexadecimal and blanks, and
/// round numbers twice.
int WholeNumberOf(const std::string& option, const std::string& text);
double NumberOf(const std::string& option, const std::string& text);

}  // namespace App
}  // namespace ZARN

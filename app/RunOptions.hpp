#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "db/DB.hpp"
#include "io/Origin.hpp"
#include "sql/TableSource.hpp"

namespace CLI {
class App;
}

namespace ZARN {

namespace DU {
class LightPathCalculator;
class ShadowingCalculator;
}  // namespace DU

namespace App {

/// What every command that judges light paths can choose.
struct RunOptions {
  TableSource tables;
  int run = 0;
  std::optional<double> tolerance;  // mm
  std::size_t threads = 1;
};

/// Add --geometry, --override, --as-of, --run and --tolerance; @p options must
/// outlive the parsing.
void AddRunOptions(CLI::App& command, RunOptions& options);

/// Add --override and --as-of, for commands that read what holds for a run;
/// @p source must outlive the parsing.
void AddOverrideOption(CLI::App& command, TableSource& source);
void AddAsOfOption(CLI::App& command, TableSource& source,
                   const std::string& description =
                       "Read the tables of a database as they stood at this "
                       "time");

/// Add a required argument or option that names a source of tables.
void AddSourceArgument(CLI::App& command, const std::string& name,
                       std::string& source);

/// Add --run; @p run must outlive the parsing.
void AddRunOption(CLI::App& command, int& run);

/// Add --threads, whose default is the number of cores; @p threads must outlive
/// the parsing.
void AddThreadsOption(CLI::App& command, std::size_t& threads);

/// Add --wavelength, for commands that trace light; @p wavelength, in nm, must
/// outlive the parsing and keeps its value if the option is not given.
void AddWavelengthOption(CLI::App& command, double& wavelength);

/// The files from which the tables are read.
std::vector<std::string> FilesOf(const RunOptions& options);

/// Fill the process-wide database, or @p tables, with the tables.
///
/// @throws as ZARN::LoadTables (sql/TableSource.hpp); BadUsage for --as-of
/// where
///         the source keeps no history
void LoadTables(const RunOptions& options, TableSet& tables = DB::Get());

/// Call the calculator's BeginOfRun; call LoadTables before. Print to standard
/// error which components are off or have nothing to test (ReportComponents).
///
/// @throws IO::BadInput naming the tables and what is missing or wrong in them
void BeginRun(const RunOptions& options, DU::ShadowingCalculator& calculator,
              const TableSet& tables = DB::Get());
void BeginRun(const RunOptions& options, DU::LightPathCalculator& calculator,
              const TableSet& tables = DB::Get());
/// The same for a light path that is given, unless the tables have no media:
/// the path can be judged without them, but has no lengths and no time.
void BeginRunIfThereAreMedia(const RunOptions& options,
                             DU::LightPathCalculator& calculator);

/// How results are made with these options and the tables of LoadTables;
/// without a wavelength and smearing.
///
/// @param calculator  its run has begun
IO::Origin OriginOf(const RunOptions& options,
                    const DU::ShadowingCalculator& calculator);

}  // namespace App
}  // namespace ZARN

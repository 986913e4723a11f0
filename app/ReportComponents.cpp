#include "app/ReportComponents.hpp"

#include <iostream>
#include <string>
#include <vector>

#include "app/RunOptions.hpp"
#include "app/ShellWord.hpp"
#include "du/CheckTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {
namespace {

/// The command that checks the same tables.
std::string CheckCommandOf(const RunOptions& options) {
  const TableSource& source = options.tables;
  std::string command = "zarn-shadow tables check " + ShellWord(source.name);
  if (options.run != 0) command += " --run " + std::to_string(options.run);
  if (!source.overrides.empty()) {
    command += " --override " + ShellWord(source.overrides);
  }
  if (source.asOf.has_value()) command += " --as-of " + ShellWord(*source.asOf);
  return command;
}

/// Why a component has nothing to test.
std::string WhyNothing(const TableSet& tables,
                       DU::eShadowingComponent component) {
  for (const DU::TableFinding& finding : DU::CheckTables(tables)) {
    if (finding.severity != DU::eSeverity::kError) break;
    if (finding.component != component) continue;
    return "table " + finding.table + ", index " + finding.index + ": " +
           finding.problem;
  }
  return "there are no positions";  // named where another component reads them
}

}  // namespace

void ReportComponents(const RunOptions& options,
                      const DU::ShadowingCalculator& calculator,
                      const TableSet& tables) {
  std::vector<std::string> lines;
  for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
    const std::string begin =
        options.tables.name + ": " + DU::NameOf(component);
    if (!calculator.IsInfoLoaded(component)) {
      lines.push_back(begin + " is off: " + calculator.GetLoadError(component));
    } else if (calculator.GetHardware().HasNothingToTest(component)) {
      lines.push_back(begin +
                      " has nothing to test: " + WhyNothing(tables, component));
    }
  }
  if (lines.empty()) return;
  lines.back() += "; " + CheckCommandOf(options) + " tells more";
  for (const std::string& line : lines) std::cerr << IO::Escaped(line) << "\n";
}

}  // namespace ZARN::App

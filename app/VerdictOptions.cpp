#include "app/VerdictOptions.hpp"

#include <algorithm>
#include <sstream>

#include "app/CommandLine.hpp"
#include "app/RunOptions.hpp"
#include "app/Usage.hpp"
#include "io/FileNames.hpp"
#include "io/Quoted.hpp"
#include "log/NearestName.hpp"

namespace ZARN::App {
namespace {

/// The names in a list separated by commas, each of them known and none given
/// twice; or BadUsage.
std::vector<std::string> ColumnNamesOf(const std::string& list,
                                       const std::vector<std::string>& known) {
  const auto has = [](const auto& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  };
  std::vector<std::string> columns;
  std::istringstream names(list + ",");
  for (std::string name; std::getline(names, name, ',');) {
    name = WithoutBlanks(name);
    if (!has(known, name)) {
      const std::string nearest = NearestName(name, known);
      throw BadUsage(
          "--columns: there is no column " + IO::Quoted(name) +
          (nearest.empty() ? "; see --help for all names" : Suggest(nearest)));
    }
    if (has(columns, name)) {
      throw BadUsage("--columns: the column " + IO::Quoted(name) +
                     " is given more than once");
    }
    columns.push_back(name);
  }
  return columns;
}

}  // namespace

bool VerdictOptions::WritesNTuple() const {
  return output.has_value() && IO::IsRootFileName(*output);
}

std::vector<const IO::PairColumn*> VerdictOptions::PairColumns() const {
  std::vector<const IO::PairColumn*> found;
  for (const std::string& name : columns) {
    found.push_back(IO::FindPairColumn(name));
  }
  return found;
}

void AddVerdictOptions(CLI::App& command, VerdictOptions& options,
                       const std::vector<std::string>& known) {
  AddOption(command, "-o,--output", options.output, "OUT",
            "Write the verdicts to this file: CSV, or an RNTuple for "
            "*.root");
  AddOption(
      command, "--columns",
      [&options, known](const std::string& list) {
        options.columns = ColumnNamesOf(list, known);
      },
      "LIST", "More columns for the verdicts, separated by commas; see below");
}

}  // namespace ZARN::App

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "io/PairColumns.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// Where a command writes its verdicts, and with which columns.
struct VerdictOptions {
  std::optional<std::string> output;
  std::vector<std::string> columns;  // names of those besides the usual ones

  /// Whether the verdicts are written as an RNTuple, not as CSV.
  bool WritesNTuple() const;

  /// The columns with these names.
  std::vector<const IO::PairColumn*> PairColumns() const;
};

/// Add -o and --columns; @p options must outlive the parsing.
///
/// @param known  the names of all columns that --columns can add
void AddVerdictOptions(CLI::App& command, VerdictOptions& options,
                       const std::vector<std::string>& known);

}  // namespace ZARN::App

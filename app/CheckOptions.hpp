#pragma once

#include <optional>
#include <string>

#include "app/RunOptions.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// The options of a check.
struct CheckOptions {
  std::string paths;
  RunOptions run;
  std::optional<std::string> output;
  bool hasCode = false;  // whether there is a column code
  bool knownTypes = false;
  bool debug = false;

  /// Whether the verdicts are written as an RNTuple, not as CSV.
  bool WritesNTuple() const;
};

/// Add the options and the help of check; @p options must outlive the parsing.
void AddCheckOptions(CLI::App& command, CheckOptions& options);

/// Check options against each other, and that files do not conflict.
///
/// @throws BadUsage, IO::BadInput
void RequireConsistent(const CheckOptions& options);

}  // namespace ZARN::App

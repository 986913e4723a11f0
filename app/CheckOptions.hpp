#pragma once

#include <string>

#include "app/RunOptions.hpp"
#include "app/VerdictOptions.hpp"
#include "io/ColumnNames.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// The options of a check.
struct CheckOptions {
  std::string paths;
  IO::ColumnNames names;  // of the columns of paths
  RunOptions run;
  VerdictOptions verdicts;
  bool knownTypes = false;
  bool debug = false;
};

/// Add the options and the help of check; @p options must outlive the parsing.
void AddCheckOptions(CLI::App& command, CheckOptions& options);

/// Check options against each other, and that files do not conflict.
///
/// @throws BadUsage, IO::BadInput
void RequireConsistent(const CheckOptions& options);

}  // namespace ZARN::App

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN::App {

/// How many findings CheckTables (du/CheckTables.hpp) has for some runs.
struct FindingsByRun {
  std::size_t errors = 0;
  std::size_t warnings = 0;
  int firstRun = 0;  ///< a run with the worst of them
};

/// Check tables for the runs of some of their entries: once for each range of
/// runs in which the same entries hold. A finding of several ranges counts
/// once.
FindingsByRun CheckTablesByRun(const std::vector<TableEntry>& entries,
                               const std::vector<TableEntry>& some);

/// "1 error and 2 warnings".
std::string NumberOfFindings(const FindingsByRun& findings);

}  // namespace ZARN::App

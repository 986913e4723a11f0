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
  std::size_t unread = 0;  ///< of the given entries: read by nothing
  int firstRun = 0;        ///< a run with the worst of them
};

/// Check tables for the runs of some of their entries: once for each range of
/// runs in which the same entries hold. A finding of several ranges counts
/// once.
FindingsByRun CheckTablesByRun(const std::vector<TableEntry>& entries,
                               const std::vector<TableEntry>& some);

/// "1 error, 2 warnings and 3 entries that nothing reads"; empty if there are
/// no findings.
std::string NumberOfFindings(const FindingsByRun& findings);

}  // namespace ZARN::App

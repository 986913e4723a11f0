#include "app/CheckTablesByRun.hpp"

#include <algorithm>
#include <set>
#include <tuple>

#include "db/TableSet.hpp"
#include "du/CheckTables.hpp"
#include "log/Grouped.hpp"

namespace ZARN::App {
namespace {

/// A run of each range in which the same entries hold, the default run 0 where
/// the range has it.
std::vector<int> RunsToCheck(const std::vector<TableEntry>& entries) {
  std::set<int> firstRuns = {RunRange().first};
  for (const TableEntry& entry : entries) {
    firstRuns.insert(entry.runs.first);
    if (entry.runs.last != RunRange().last) {
      firstRuns.insert(entry.runs.last + 1);
    }
  }
  std::vector<int> runs;
  for (auto first = firstRuns.begin(); first != firstRuns.end(); ++first) {
    const auto next = std::next(first);
    const bool hasZero = *first <= 0 && (next == firstRuns.end() || *next > 0);
    runs.push_back(hasZero ? 0 : *first);
  }
  return runs;
}

std::string Counted(std::size_t count, const std::string& what) {
  return Grouped(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

FindingsByRun CheckTablesByRun(const std::vector<TableEntry>& entries,
                               const std::vector<TableEntry>& some) {
  TableSet tables;
  tables.Add(entries);
  FindingsByRun result;
  using Finding = std::tuple<std::string, std::string, std::string, std::string,
                             std::string>;
  std::set<Finding> seen;
  for (const int run : RunsToCheck(entries)) {
    const auto holds = [run](const TableEntry& entry) {
      return entry.runs.Contains(run);
    };
    if (std::none_of(some.begin(), some.end(), holds)) continue;
    tables.SetRun(run);
    for (const DU::TableFinding& finding : DU::CheckTables(tables)) {
      if (finding.severity == DU::eSeverity::kNote) continue;
      const bool isError = finding.severity == DU::eSeverity::kError;
      const bool isNew =
          seen.emplace(finding.table, finding.index, finding.field,
                       finding.place, finding.problem)
              .second;
      if (!isNew) continue;
      const bool isWorst =
          isError ? result.errors == 0 : result.errors + result.warnings == 0;
      if (isWorst) result.firstRun = run;
      ++(isError ? result.errors : result.warnings);
    }
  }
  return result;
}

std::string NumberOfFindings(const FindingsByRun& findings) {
  if (findings.errors == 0) return Counted(findings.warnings, "warning");
  if (findings.warnings == 0) return Counted(findings.errors, "error");
  return Counted(findings.errors, "error") + " and " +
         Counted(findings.warnings, "warning");
}

}  // namespace ZARN::App

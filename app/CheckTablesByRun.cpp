#include "app/CheckTablesByRun.hpp"

#include <algorithm>
#include <set>
#include <tuple>

#include "app/Usage.hpp"
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

std::string Counted(std::size_t count, const std::string& one,
                    const std::string& many) {
  return Grouped(count) + " " + (count == 1 ? one : many);
}

/// Whether one of these entries is read by nothing, as after a typing error in
/// its name.
bool IsUnreadEntry(const DU::TableFinding& finding,
                   const std::vector<TableEntry>& some) {
  return finding.field.empty() &&
         std::any_of(some.begin(), some.end(), [&](const TableEntry& entry) {
           return entry.table == finding.table && entry.index == finding.index;
         });
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
      const bool isNote = finding.severity == DU::eSeverity::kNote;
      if (isNote && !IsUnreadEntry(finding, some)) continue;
      const bool isError = finding.severity == DU::eSeverity::kError;
      const bool isNew =
          seen.emplace(finding.table, finding.index, finding.field,
                       finding.place, finding.problem)
              .second;
      if (!isNew) continue;
      const std::size_t worse = result.errors +
                                (isError ? 0 : result.warnings) +
                                (isNote ? result.unread : 0);
      if (worse == 0) result.firstRun = run;
      ++(isError ? result.errors : isNote ? result.unread : result.warnings);
    }
  }
  return result;
}

std::string NumberOfFindings(const FindingsByRun& findings) {
  std::vector<std::string> parts;
  if (findings.errors > 0) {
    parts.push_back(Counted(findings.errors, "error", "errors"));
  }
  if (findings.warnings > 0) {
    parts.push_back(Counted(findings.warnings, "warning", "warnings"));
  }
  if (findings.unread > 0) {
    parts.push_back(Counted(findings.unread, "entry that nothing reads",
                            "entries that nothing reads"));
  }
  return Joined(parts, "and");
}

}  // namespace ZARN::App

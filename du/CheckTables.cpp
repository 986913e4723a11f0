#include "du/CheckTables.hpp"

#include <algorithm>

#include "du/tables/TableCheck.hpp"

namespace ZARN::DU {

const char* NameOf(eSeverity severity) {
  switch (severity) {
    case eSeverity::kError:
      return "error";
    case eSeverity::kWarning:
      return "warning";
    case eSeverity::kNote:
      break;
  }
  return "note";
}

std::vector<TableFinding> CheckTables(const TableSet& tables) {
  TableCheck check(tables);
  FindMissing(check);
  FindWrongLengths(check);
  FindWrongMedia(check);
  FindImplausibleSizes(check);
  FindImplausiblePlaces(check);
  FindImplausibleRolls(check);
  FindUnused(check);
  auto findings = check.TakeFindings();
  std::stable_sort(findings.begin(), findings.end(),
                   [](const TableFinding& a, const TableFinding& b) {
                     return std::pair(a.severity, a.component) <
                            std::pair(b.severity, b.component);
                   });
  return findings;
}

std::string TextOf(const TableFinding& finding) {
  std::string text = NameOf(finding.severity);
  text += ": ";
  if (!finding.place.empty()) text += finding.place + ": ";
  text += finding.table + "/" + finding.index;
  if (!finding.field.empty()) text += " " + finding.field;
  text += ": " + finding.problem;
  if (!finding.value.empty()) text += ": " + finding.value;
  if (!finding.remedy.empty()) text += "; " + finding.remedy;
  return text;
}

}  // namespace ZARN::DU

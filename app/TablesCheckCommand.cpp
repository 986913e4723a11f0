#include "app/TablesCheckCommand.hpp"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/ExitStatus.hpp"
#include "app/PrintText.hpp"
#include "app/RunOptions.hpp"
#include "app/TablesText.hpp"
#include "app/Usage.hpp"
#include "db/TableSet.hpp"
#include "du/CheckTables.hpp"
#include "io/PositionReader.hpp"
#include "io/Quoted.hpp"
#include "log/Grouped.hpp"
#include "sql/TableSource.hpp"

namespace ZARN::App {
namespace {

using DU::eSeverity;

constexpr const char* kTablesCheckFooter =
    "Loads every component as a run does, and tells entry by entry what is "
    "wrong:\n"
    "  error    no run can begin, or a component would be off or have nothing "
    "to test;\n"
    "           where there are media: light paths cannot be computed\n"
    "  warning  read, but hardly meant: hardware in the vessel or far from it, "
    "lengths\n"
    "           in m, rolls in rad, positions given twice\n"
    "  note     no verdict depends on it: entries and fields that nothing "
    "reads\n\n"
    "Exit status: 0 no error; 3 an error, or with --strict a warning; 1 output "
    "cannot\n"
    "be written; 2 bad usage or input that cannot be read; 130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow tables check data/reference-detector --pmts data/pmts.csv";

struct TablesCheckOptions {
  TableSource source;
  int run = 0;
  std::optional<std::string> pmts;
  bool isStrict = false;
  bool writesJson = false;
};

std::vector<DU::TableFinding> FindingsOf(const TablesCheckOptions& options,
                                         const TableSet& tables) {
  std::vector<DU::TableFinding> findings = DU::CheckTables(tables);
  if (!options.pmts.has_value()) return findings;
  const std::vector<IO::NamedPosition> pmts =
      IO::ReadPositions(*options.pmts, "pmt");
  std::vector<std::string> names;
  names.reserve(pmts.size());
  for (const IO::NamedPosition& pmt : pmts) names.push_back(pmt.name);
  std::vector<DU::TableFinding> more =
      DU::CheckPMTs(tables, names, IO::PositionsOf(pmts));
  for (DU::TableFinding& finding : more) finding.place = *options.pmts;
  // Notes come last.
  const auto notes = std::find_if(findings.begin(), findings.end(),
                                  [](const DU::TableFinding& finding) {
                                    return finding.severity == eSeverity::kNote;
                                  });
  findings.insert(notes, std::make_move_iterator(more.begin()),
                  std::make_move_iterator(more.end()));
  return findings;
}

std::size_t CountOf(const std::vector<DU::TableFinding>& findings,
                    eSeverity severity) {
  return static_cast<std::size_t>(std::count_if(
      findings.begin(), findings.end(), [&](const DU::TableFinding& finding) {
        return finding.severity == severity;
      }));
}

/// "1 error", "2 errors".
std::string Counted(std::size_t count, const std::string& word,
                    const std::string& words) {
  return Grouped(count) + " " + (count == 1 ? word : words);
}

std::string SummaryText(const std::vector<DU::TableFinding>& findings,
                        std::size_t entries) {
  std::vector<std::string> counts;
  for (const eSeverity severity :
       {eSeverity::kError, eSeverity::kWarning, eSeverity::kNote}) {
    const std::size_t count = CountOf(findings, severity);
    const std::string name = NameOf(severity);
    if (count > 0) counts.push_back(Counted(count, name, name + "s"));
  }
  return (counts.empty() ? "no problem found" : Joined(counts, "and")) +
         " in " + Counted(entries, "entry", "entries") + "\n";
}

std::string FindingJson(const DU::TableFinding& finding) {
  const std::string component = NameOf(finding.component);
  JsonObject object;
  object.AddText("severity", NameOf(finding.severity));
  if (component.empty()) {
    object.AddJson("component", "null");
  } else {
    object.AddText("component", component);
  }
  return object.AddText("table", finding.table)
      .AddText("index", finding.index)
      .AddText("field", finding.field)
      .AddText("place", finding.place)
      .AddText("problem", finding.problem)
      .AddText("value", finding.value)
      .AddText("remedy", finding.remedy)
      .Text();
}

void Check(const TablesCheckOptions& options) {
  TableSet tables;
  tables.SetRun(options.run);
  LoadTables(tables, options.source);
  const std::vector<DU::TableFinding> findings = FindingsOf(options, tables);
  std::string text;
  if (options.writesJson) {
    std::vector<std::string> objects;
    objects.reserve(findings.size());
    for (const auto& finding : findings) {
      objects.push_back(FindingJson(finding));
    }
    text = JsonLines(objects) + "\n";
  } else {
    for (const auto& finding : findings) {
      text += IO::Escaped(TextOf(finding)) + "\n";
    }
    text += SummaryText(findings, tables.CurrentEntries().size());
  }
  PrintText(text);
  if (CountOf(findings, eSeverity::kError) > 0 ||
      (options.isStrict && CountOf(findings, eSeverity::kWarning) > 0)) {
    throw Ended(kFound);
  }
}

}  // namespace

void AddTablesCheckCommand(CLI::App& tables) {
  const auto options = std::make_shared<TablesCheckOptions>();
  CLI::App& command =
      AddCommand(tables, "check", "Tell what is wrong with tables",
                 [options] { Check(*options); });
  AddSourceArgument(command, "SOURCE", options->source.name);
  AddRunOption(command, options->run);
  AddOverrideOption(command, options->source);
  AddAsOfOption(command, options->source);
  AddOption(command, "--pmts", options->pmts, "PMTS",
            "Check these PMTs beside the vessel: a CSV or ROOT file, "
            "as for scan");
  AddFlag(command, "--strict", options->isStrict,
          "Exit with status 3 for a warning, too");
  AddFlag(command, "--json", options->writesJson, "Write JSON instead of text");
  SetFooter(command, kTablesCheckFooter);
}

}  // namespace ZARN::App

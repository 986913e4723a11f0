#include "app/TablesDiffCommand.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/ExitStatus.hpp"
#include "app/PrintText.hpp"
#include "app/RunOptions.hpp"
#include "app/TablesText.hpp"
#include "db/CompareTables.hpp"
#include "db/RunText.hpp"
#include "sql/TableSource.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kTablesDiffFooter =
    "Compares what holds for each run: the entry with the highest pass of "
    "those that\n"
    "are valid. What no run reads does not count. For each entry that differs "
    "the\n"
    "answer names the runs, the fields, and both values, A's first; in arrays "
    "also\n"
    "the position, from 0. Numbers are the same if all their bits are.\n\n"
    "Exit status: 0 equal; 3 different; 1 output cannot be written; 2 bad "
    "usage "
    "or\n"
    "input; 130 interrupted.\n\n"
    "Example, what changed in a database since January:\n"
    "  zarn-shadow tables diff sqlite:detector.db sqlite:detector.db "
    "--as-of 2026-01-31";

struct DiffOptions {
  TableSource before;
  TableSource after;
  std::optional<int> run;
  bool writesJson = false;
};

std::string DescribeDifference(const EntryDifference& difference,
                               const DiffOptions& options) {
  std::string text = NameOf(EntryKey(difference.table, difference.index));
  if (!options.run.has_value()) text += ", " + TextOf(difference.runs);
  switch (difference.kind) {
    case EntryDifference::eKind::kOnlyBefore:
      return text + ": only in A\n";
    case EntryDifference::eKind::kOnlyAfter:
      return text + ": only in B\n";
    case EntryDifference::eKind::kFields:
      break;
  }
  return text + "\n" + DifferencesText(difference.fields);
}

std::string DifferenceJson(const EntryDifference& difference) {
  JsonObject object;
  object.AddKey({difference.table, difference.index}).AddRuns(difference.runs);
  switch (difference.kind) {
    case EntryDifference::eKind::kOnlyBefore:
      object.AddText("only_in", "A");
      break;
    case EntryDifference::eKind::kOnlyAfter:
      object.AddText("only_in", "B");
      break;
    case EntryDifference::eKind::kFields:
      object.AddJson("fields", DifferencesJson(difference.fields));
      break;
  }
  return object.Text();
}

void Diff(const DiffOptions& options) {
  const std::vector<EntryDifference> differences = CompareTables(
      ReadTables(options.before), ReadTables(options.after), options.run);
  std::string text;
  if (options.writesJson) {
    std::vector<std::string> objects;
    objects.reserve(differences.size());
    for (const auto& difference : differences) {
      objects.push_back(DifferenceJson(difference));
    }
    text = JsonLines(objects) + "\n";
  } else {
    for (const auto& difference : differences) {
      text += DescribeDifference(difference, options);
    }
  }
  PrintText(text);
  if (!differences.empty()) throw Ended(kFound);
}

}  // namespace

void AddTablesDiffCommand(CLI::App& tables) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App& command =
      AddCommand(tables, "diff", "Name what differs between two tables",
                 [options] { Diff(*options); });
  AddSourceArgument(command, "A", options->before.name);
  AddSourceArgument(command, "B", options->after.name);
  AddOption(command, "--run", options->run, "N",
            "Compare for this run only (default: for all runs)");
  AddAsOfOption(command, options->before,
                "Read A, a database, as it stood at this time");
  AddFlag(command, "--json", options->writesJson, "Write JSON instead of text");
  SetFooter(command, kTablesDiffFooter);
}

}  // namespace ZARN::App

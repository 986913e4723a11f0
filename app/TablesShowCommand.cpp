#include "app/TablesShowCommand.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/PrintText.hpp"
#include "app/RunOptions.hpp"
#include "app/TablesText.hpp"
#include "db/RunText.hpp"
#include "db/TableSet.hpp"
#include "io/Errors.hpp"
#include "io/Quoted.hpp"
#include "log/NearestName.hpp"
#include "sql/TableSource.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kTablesShowFooter =
    "For each entry that holds for the run: its pass, the runs for which it is "
    "valid,\n"
    "where it stands, and its fields. With ENTRY, that entry with all numbers "
    "of its\n"
    "arrays.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow tables show data/reference-detector SOLID/neck_boss --run 0";

struct ShowOptions {
  TableSource source;
  std::optional<std::string> entry;
  int run = 0;
};

using EntryPointer = std::shared_ptr<const TableEntry>;

std::string PlaceOf(const TableEntry& entry) {
  std::string place = entry.source;
  if (entry.place.line > 0) {
    place += ":" + std::to_string(entry.place.line) + ":" +
             std::to_string(entry.place.column);
  }
  return place;
}

std::string EntryText(const TableEntry& entry, eArrays arrays) {
  std::string text = NameOf(entry) + ", pass " + std::to_string(entry.pass) +
                     ", " + TextOf(entry.runs) + ", " + PlaceOf(entry) + "\n";
  for (const auto& [name, field] : entry.fields) {
    text += "  " + IO::Escaped(name) + ": " + FieldText(field, arrays) + "\n";
  }
  return text;
}

/// For which runs there is an entry of this table and index.
std::string OtherRunsOf(const ShowOptions& options, const EntryKey& key) {
  std::string runs;
  for (const TableEntry& entry : ReadTables(options.source)) {
    if (EntryKey(entry.table, entry.index) != key) continue;
    const std::string text = TextOf(entry.runs);
    runs += (runs.empty() ? "; there is one for " : ", ") + text;
  }
  return runs;
}

[[noreturn]] void RefuseUnknown(const ShowOptions& options, const EntryKey& key,
                                const std::vector<EntryPointer>& current) {
  std::vector<std::string> names;
  for (const EntryPointer& entry : current) names.push_back(NameOf(*entry));
  std::string hint = OtherRunsOf(options, key);
  if (hint.empty()) hint = Suggest(NearestName(NameOf(key), names));
  throw IO::BadInput(options.source.name + ": there is no entry " +
                     NameOf(key) + " for run " + std::to_string(options.run) +
                     hint);
}

void Show(const ShowOptions& options) {
  TableSet tables;
  tables.SetRun(options.run);
  LoadTables(tables, options.source);
  const std::vector<EntryPointer> current = tables.CurrentEntries();
  std::string text;
  if (!options.entry.has_value()) {
    for (const EntryPointer& entry : current) {
      text += EntryText(*entry, eArrays::kShort);
    }
    return PrintText(text);
  }
  const EntryKey key = EntryKeyOf(*options.entry);
  for (const EntryPointer& entry : current) {
    if (EntryKey(entry->table, entry->index) == key) {
      return PrintText(EntryText(*entry, eArrays::kWhole));
    }
  }
  RefuseUnknown(options, key, current);
}

}  // namespace

void AddTablesShowCommand(CLI::App& tables) {
  const auto options = std::make_shared<ShowOptions>();
  CLI::App& command =
      AddCommand(tables, "show", "Show the entries that hold for a run",
                 [options] { Show(*options); });
  AddSourceArgument(command, "SOURCE", options->source.name);
  AddOption(command, "ENTRY", options->entry, "NAME",
            "Only this entry: TABLE/INDEX, as SOLID/hold_down_rope");
  AddRunOption(command, options->run);
  AddOverrideOption(command, options->source);
  AddAsOfOption(command, options->source);
  SetFooter(command, kTablesShowFooter);
}

}  // namespace ZARN::App

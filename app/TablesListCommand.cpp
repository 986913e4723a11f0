#include "app/TablesListCommand.hpp"

#include <algorithm>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/PrintText.hpp"
#include "app/RunOptions.hpp"
#include "app/TablesText.hpp"
#include "db/RunText.hpp"
#include "du/TableFields.hpp"
#include "io/Quoted.hpp"
#include "sql/TableSource.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kTablesListFooter =
    "One line for each entry, with its pass, the runs for which it is valid, "
    "the\n"
    "number of its fields, and what reads it. Of the entries with the same "
    "table\n"
    "and index, a run uses the one with the highest pass that is valid for it; "
    "show\n"
    "tells which.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow tables list data/reference-detector";

/// Whether an entry can be where a field is read: its index is the fixed one,
/// or one that an entry of GEO names.
bool CanHold(const TableEntry& entry, const DU::KnownField& field,
             const std::vector<TableEntry>& entries) {
  if (entry.table != field.table) return false;
  if (field.index.IsFixed()) return entry.index == field.index.name;
  return std::any_of(
      entries.begin(), entries.end(), [&](const TableEntry& other) {
        if (other.table != "GEO" || other.index != field.index.name) {
          return false;
        }
        const auto name = other.fields.find(field.index.namedBy);
        return name != other.fields.end() &&
               name->second == TableField(entry.index);
      });
}

/// What reads an entry: components, "vessel", "light paths"; "-" for nothing.
std::string ReadersOf(const TableEntry& entry,
                      const std::vector<TableEntry>& entries) {
  std::vector<std::string> readers;
  for (const DU::KnownField& field : DU::KnownFields()) {
    if (field.use == DU::eFieldUse::kOther || !CanHold(entry, field, entries)) {
      continue;
    }
    std::string reader = DU::NameOf(field.component);
    if (field.component == DU::eShadowingComponent::kNone) {
      reader = entry.table == "OPTICS" ? "light paths" : "vessel";
    }
    if (std::find(readers.begin(), readers.end(), reader) == readers.end()) {
      readers.push_back(reader);
    }
  }
  std::string text;
  for (const std::string& reader : readers) {
    text += (text.empty() ? "" : ", ") + reader;
  }
  return text.empty() ? "-" : text;
}

void List(const TableSource& source) {
  std::vector<TableEntry> entries = ReadTables(source);
  std::stable_sort(entries.begin(), entries.end(),
                   [](const TableEntry& a, const TableEntry& b) {
                     return std::tie(a.table, a.index) <
                            std::tie(b.table, b.index);
                   });
  std::vector<std::vector<std::string>> rows = {
      {"table", "index", "pass", "runs", "fields", "read by"}};
  for (const TableEntry& entry : entries) {
    rows.push_back({IO::Escaped(entry.table), IO::Escaped(entry.index),
                    std::to_string(entry.pass), TextOf(entry.runs),
                    std::to_string(entry.fields.size()),
                    ReadersOf(entry, entries)});
  }
  constexpr std::size_t kPass = 2;
  constexpr std::size_t kFields = 4;
  PrintText(ColumnsText(rows, {kPass, kFields}));
}

}  // namespace

void AddTablesListCommand(CLI::App& tables) {
  const auto source = std::make_shared<TableSource>();
  CLI::App& command = AddCommand(tables, "list", "List the entries of tables",
                                 [source] { List(*source); });
  AddSourceArgument(command, "SOURCE", source->name);
  AddAsOfOption(command, *source);
  SetFooter(command, kTablesListFooter);
}

}  // namespace ZARN::App

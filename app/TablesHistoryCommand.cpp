#include "app/TablesHistoryCommand.hpp"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/ExitStatus.hpp"
#include "app/PrintText.hpp"
#include "app/ShellWord.hpp"
#include "app/TablesText.hpp"
#include "app/Usage.hpp"
#include "db/CompareTables.hpp"
#include "db/RunText.hpp"
#include "io/Errors.hpp"
#include "io/Quoted.hpp"
#include "log/Grouped.hpp"
#include "log/NearestName.hpp"
#include "sql/TableStore.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kTablesHistoryFooter =
    "Lists all imports, oldest first. With ENTRY, every version of that entry: "
    "the\n"
    "import that added it, and what it changed against the version before.\n\n"
    "--fingerprint finds the tables with which a result was computed: the "
    "answer is\n"
    "the import after which they stood and the runs for which they held. "
    "Reading them\n"
    "again needs --as-of with that time. Verdicts have the fingerprint in the "
    "JSON\n"
    "file beside them, or in the ROOT file itself.\n\n"
    "Exit status: 0 success; 3 no tables have this fingerprint; 1 output "
    "cannot be\n"
    "written; 2 bad usage or input; 130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow tables history sqlite:detector.db SOLID/hold_down_rope";

struct HistoryOptions {
  std::string database;
  std::optional<std::string> entry;
  std::optional<std::string> fingerprint;
  bool writesJson = false;
};

void RequireConsistent(const HistoryOptions& options) {
  if (!SQL::TableStore::IsStore(options.database)) {
    throw BadUsage("tables history: " + IO::Quoted(options.database) +
                   " keeps no history; only databases do: sqlite:FILE or "
                   "postgresql:CONNECTION");
  }
  if (!options.fingerprint.has_value()) return;
  if (options.entry.has_value()) {
    throw BadUsage("ENTRY and --fingerprint exclude each other");
  }
  const std::string& text = *options.fingerprint;
  constexpr std::size_t kDigits = 64;
  if (text.size() != kDigits ||
      text.find_first_not_of("0123456789abcdef") != std::string::npos) {
    throw BadUsage("--fingerprint: " + IO::Quoted(text) +
                   " is not a fingerprint of 64 digits 0 to 9 and a to f");
  }
}

void PrintJson(const std::vector<std::string>& objects) {
  PrintText(JsonLines(objects) + "\n");
}

void PrintImports(const HistoryOptions& options,
                  const std::vector<SQL::Import>& imports) {
  if (options.writesJson) {
    std::vector<std::string> objects;
    for (const SQL::Import& import : imports) {
      objects.push_back(
          JsonObject()
              .AddImport(import)
              .AddNumber("entries", static_cast<long long>(import.entries))
              .Text());
    }
    return PrintJson(objects);
  }
  std::vector<std::vector<std::string>> rows = {
      {"import", "time", "author", "entries", "source", "reason"}};
  for (const SQL::Import& import : imports) {
    rows.push_back({std::to_string(import.number), import.time,
                    IO::Escaped(import.author), Grouped(import.entries),
                    IO::Escaped(import.source), IO::Escaped(import.reason)});
  }
  constexpr std::size_t kNumber = 0;
  constexpr std::size_t kEntries = 3;
  PrintText(ColumnsText(rows, {kNumber, kEntries}));
}

/// The versions of one entry, in the order added.
std::vector<SQL::StoredEntry> VersionsOf(const HistoryOptions& options,
                                         std::vector<SQL::StoredEntry> all) {
  const EntryKey key = EntryKeyOf(*options.entry);
  std::vector<SQL::StoredEntry> versions;
  std::vector<std::string> names;
  for (SQL::StoredEntry& stored : all) {
    const TableEntry& entry = stored.entry;
    names.push_back(NameOf(entry));
    if (EntryKey(entry.table, entry.index) == key) {
      versions.push_back(std::move(stored));
    }
  }
  if (versions.empty()) {
    throw IO::BadInput(options.database + ": there was never an entry " +
                       NameOf(key) + Suggest(NearestName(NameOf(key), names)));
  }
  return versions;
}

std::string VersionText(const SQL::StoredEntry& version,
                        const SQL::StoredEntry* before) {
  const TableEntry& entry = version.entry;
  std::string text = NameOf(entry) + ", pass " + std::to_string(entry.pass) +
                     ", " + TextOf(entry.runs) + ": " +
                     ImportText(version.import) + "\n";
  text += "  reason: " + IO::Escaped(version.import.reason) + "\n";
  text += "  source: " + IO::Escaped(version.import.source) + "\n";
  if (before == nullptr) return text;
  return text +
         DifferencesText(CompareFields(before->entry.fields, entry.fields));
}

void PrintVersions(const HistoryOptions& options,
                   const std::vector<SQL::StoredEntry>& versions) {
  std::string text;
  std::vector<std::string> objects;
  const SQL::StoredEntry* before = nullptr;
  for (const SQL::StoredEntry& version : versions) {
    const TableEntry& entry = version.entry;
    text += VersionText(version, before);
    JsonObject object;
    object.AddKey({entry.table, entry.index})
        .AddNumber("pass", static_cast<long long>(entry.pass))
        .AddRuns(entry.runs)
        .AddImport(version.import);
    JsonObject fields;
    for (const auto& [name, field] : entry.fields) fields.AddField(name, field);
    object.AddJson("fields", fields.Text());
    objects.push_back(object.Text());
    before = &version;
  }
  options.writesJson ? PrintJson(objects) : PrintText(text);
}

void PrintStates(const HistoryOptions& options,
                 const std::vector<SQL::TableState>& states) {
  std::string text;
  std::vector<std::string> objects;
  for (const SQL::TableState& state : states) {
    text += TextOf(state.runs) + ": after " + ImportText(state.import) +
            "\n  reason: " + IO::Escaped(state.import.reason) +
            "\n  to read these tables: --geometry " +
            ShellWord(options.database) + " --as-of " + state.import.time +
            "\n";
    objects.push_back(
        JsonObject().AddRuns(state.runs).AddImport(state.import).Text());
  }
  options.writesJson ? PrintJson(objects) : PrintText(text);
  if (!states.empty()) return;
  std::cerr << options.database
            << ": no tables that stood here have this fingerprint; those with "
               "an --override never stood\n";
  throw Ended(kFound);
}

void ShowHistory(const HistoryOptions& options) {
  const SQL::TableStore store = SQL::TableStore::OpenToRead(options.database);
  if (options.fingerprint.has_value()) {
    PrintStates(options, store.FindStates(*options.fingerprint));
  } else if (options.entry.has_value()) {
    PrintVersions(options, VersionsOf(options, store.History()));
  } else {
    PrintImports(options, store.Imports());
  }
}

}  // namespace

void AddTablesHistoryCommand(CLI::App& tables) {
  const auto options = std::make_shared<HistoryOptions>();
  CLI::App& command =
      AddCommand(tables, "history",
                 "Tell who added what to a database, when and why", [options] {
                   RequireConsistent(*options);
                   ShowHistory(*options);
                 });
  AddRequiredOption(command, "DB", options->database, "DATABASE",
                    "sqlite:FILE or postgresql:CONNECTION");
  AddOption(command, "ENTRY", options->entry, "NAME",
            "Every version of this entry: TABLE/INDEX, as "
            "SOLID/hold_down_rope");
  AddOption(command, "--fingerprint", options->fingerprint, "F",
            "Find the tables that have this fingerprint");
  AddFlag(command, "--json", options->writesJson, "Write JSON instead of text");
  SetFooter(command, kTablesHistoryFooter);
}

}  // namespace ZARN::App

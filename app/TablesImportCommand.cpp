#include "app/TablesImportCommand.hpp"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/AuthorFromSystem.hpp"
#include "app/CheckTablesByRun.hpp"
#include "app/CommandLine.hpp"
#include "app/RunOptions.hpp"
#include "app/ShellWord.hpp"
#include "app/TablesText.hpp"
#include "app/Usage.hpp"
#include "db/RunText.hpp"
#include "io/Quoted.hpp"
#include "log/Grouped.hpp"
#include "sql/TableSource.hpp"
#include "sql/TableStore.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kTablesImportFooter =
    "An import is one transaction: all of its entries or none. Entries that "
    "stand\n"
    "already, with the same content, are left out. An entry that differs from "
    "one\n"
    "that stands, with the same table, index and pass and for some of the "
    "same\n"
    "runs, is refused: give it another pass, or let --new-pass give it the "
    "next\n"
    "free one. Nothing is ever overwritten; history shows what stood before.\n"
    "\n"
    "DB is made where there is none: the file of sqlite:FILE, or the tables in "
    "the\n"
    "database of a server. What was added goes to standard error.\n\n"
    "Exit status: 0 success; 1 DB cannot be written; 2 bad usage or input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow tables import data/reference-detector sqlite:detector.db "
    "\\\n"
    "      --reason 'First tables'";

struct ImportOptions {
  std::string source;
  std::string database;
  std::string author;
  std::string reason;
  bool asNewPass = false;
};

void RequireConsistent(const ImportOptions& options) {
  if (!SQL::TableStore::IsStore(options.database)) {
    throw BadUsage("tables import: " + IO::Quoted(options.database) +
                   " is no database; use sqlite:FILE or "
                   "postgresql:CONNECTION");
  }
  if (WithoutBlanks(options.reason).empty()) {
    throw BadUsage(
        "tables import needs --reason: why these tables are added or changed; "
        "history shows it");
  }
  if (WithoutBlanks(options.author).empty()) {
    throw BadUsage("tables import: --author is empty");
  }
}

void PrintAdded(const std::vector<TableEntry>& added) {
  constexpr std::size_t kMost = 20;
  for (std::size_t i = 0; i < added.size() && i < kMost; ++i) {
    std::cerr << "  " << NameOf(added[i]) << ", pass " << added[i].pass << ", "
              << TextOf(added[i].runs) << "\n";
  }
  if (added.size() > kMost) {
    std::cerr << "  and " << Grouped(added.size() - kMost) << " more\n";
  }
}

/// Say whether what holds now is fine, for the runs of the new entries.
void PrintFindings(const ImportOptions& options, const SQL::TableStore& store,
                   const std::vector<TableEntry>& added) {
  const FindingsByRun findings =
      CheckTablesByRun(store.Read(std::nullopt), added);
  const std::string number = NumberOfFindings(findings);
  if (number.empty()) return;
  std::cerr << options.database << ": " << number
            << "; see zarn-shadow tables check " << ShellWord(options.database);
  if (findings.firstRun != 0) std::cerr << " --run " << findings.firstRun;
  std::cerr << "\n";
}

void ImportTables(const ImportOptions& options) {
  std::vector<TableEntry> entries = ReadTables({options.source, "", {}});
  SQL::TableStore store = SQL::TableStore::OpenToImport(options.database);
  if (const auto version = store.MigratedFrom(); version.has_value()) {
    std::cerr << options.database << ": brought from version " << *version
              << " of its tables up to date\n";
  }
  const SQL::ImportResult result = store.Import(
      std::move(entries), {options.author, options.reason, options.source},
      options.asNewPass);
  if (!result.import.has_value()) {
    std::cerr << options.database << ": all " << Grouped(result.unchanged)
              << " entries stand already; nothing was imported\n";
    return;
  }
  std::cerr << options.database << ": " << ImportText(*result.import) << ": "
            << Grouped(result.added.size())
            << (result.added.size() == 1 ? " entry" : " entries") << " added";
  if (result.unchanged > 0) {
    std::cerr << ", " << Grouped(result.unchanged) << " stood already";
  }
  std::cerr << "\n";
  PrintAdded(result.added);
  PrintFindings(options, store, result.added);
}

}  // namespace

void AddTablesImportCommand(CLI::App& tables) {
  const auto options = std::make_shared<ImportOptions>();
  CLI::App& command = AddCommand(
      tables, "import",
      "Add tables to a database, with author, time and reason", [options] {
        RequireConsistent(*options);
        ImportTables(*options);
      });
  AddSourceArgument(command, "SOURCE", options->source);
  AddRequiredOption(command, "DB", options->database, "DATABASE",
                    "sqlite:FILE or postgresql:CONNECTION");
  options->author = AuthorFromSystem();
  AddOption(command, "--author", options->author, "NAME",
            "Who imports (default: your name, and EMAIL if it is set)");
  AddOption(command, "--reason", options->reason, "TEXT",
            "Why these tables are added or changed; it is required");
  AddFlag(command, "--new-pass", options->asNewPass,
          "Give entries that differ from those that stand the next "
          "free pass");
  SetFooter(command, kTablesImportFooter);
}

}  // namespace ZARN::App

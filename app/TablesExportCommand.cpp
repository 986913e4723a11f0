#include "app/TablesExportCommand.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/RunOptions.hpp"
#include "app/Signals.hpp"
#include "db/JsonText.hpp"
#include "db/TableSet.hpp"
#include "io/DistinctFiles.hpp"
#include "io/OutputFile.hpp"
#include "sql/TableSource.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kTablesExportFooter =
    "The JSON holds the entries in the order in which they were added, every "
    "number\n"
    "to the last bit: imported into an empty database it gives the same "
    "tables.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow tables export sqlite:detector.db --as-of 2026-01-31 \\\n"
    "      -o january.json";

struct ExportOptions {
  TableSource source;
  std::optional<int> run;
  std::optional<std::string> output;
};

std::vector<TableEntry> EntriesOf(const ExportOptions& options) {
  std::vector<TableEntry> entries = ReadTables(options.source);
  if (!options.run.has_value()) return entries;
  TableSet tables;
  tables.SetRun(*options.run);
  tables.Add(std::move(entries));
  std::vector<TableEntry> current;
  for (const auto& entry : tables.CurrentEntries()) current.push_back(*entry);
  return current;
}

void Export(const ExportOptions& options) {
  const std::string text = JsonText(EntriesOf(options));
  const DeferredSignals deferredSignals;
  IO::OutputFile output(options.output);
  output.Write(text);
  output.Finish();
  ThrowIfInterrupted();
  output.Commit();
}

}  // namespace

void AddTablesExportCommand(CLI::App& tables) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App& command =
      AddCommand(tables, "export", "Write tables as JSON", [options] {
        IO::RequireDistinctFiles(FilesOf(options->source),
                                 {options->output.value_or("-")});
        Export(*options);
      });
  AddSourceArgument(command, "DB", options->source.name);
  AddOption(command, "-o,--output", options->output, "FILE",
            "Write to this file (default: standard output)");
  AddAsOfOption(command, options->source);
  AddOption(command, "--run", options->run, "N",
            "Write only the entries that hold for this run (default: all)");
  SetFooter(command, kTablesExportFooter);
}

}  // namespace ZARN::App

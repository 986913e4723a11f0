#include "app/TablesCommand.hpp"

#include "app/CommandLine.hpp"
#include "app/TablesCheckCommand.hpp"
#include "app/TablesDiffCommand.hpp"
#include "app/TablesExportCommand.hpp"
#include "app/TablesHistoryCommand.hpp"
#include "app/TablesImportCommand.hpp"
#include "app/TablesListCommand.hpp"
#include "app/TablesShowCommand.hpp"

namespace ZARN::App {

void AddTablesCommand(CLI::App& app) {
  CLI::App& tables = AddCommandGroup(
      app, "tables",
      "Check and compare geometry tables, and keep them in a database");
  SetFooter(
      tables,
      "SOURCE is a JSON file, a directory of *.json files, sqlite:FILE or\n"
      "postgresql:CONNECTION, as for --geometry. DB is one of the last two.\n"
      "CONNECTION is \"host=db.lab dbname=detector\" or "
      "//user@db.lab/detector, without\n"
      "a password: that comes from PGPASSWORD or ~/.pgpass.\n\n"
      "Examples:\n"
      "  zarn-shadow tables import data/reference-detector "
      "sqlite:detector.db \\\n"
      "      --reason 'First tables'\n"
      "  zarn-shadow tables show sqlite:detector.db SOLID/hold_down_rope "
      "--run 1000");
  AddTablesCheckCommand(tables);
  AddTablesDiffCommand(tables);
  AddTablesExportCommand(tables);
  AddTablesHistoryCommand(tables);
  AddTablesImportCommand(tables);
  AddTablesListCommand(tables);
  AddTablesShowCommand(tables);
}

}  // namespace ZARN::App

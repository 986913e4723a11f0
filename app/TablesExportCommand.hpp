#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "export" to the group "tables".
void AddTablesExportCommand(CLI::App& tables);

}  // namespace ZARN::App

#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "import" to the group "tables".
void AddTablesImportCommand(CLI::App& tables);

}  // namespace ZARN::App

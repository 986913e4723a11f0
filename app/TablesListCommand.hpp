#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "list" to the group "tables".
void AddTablesListCommand(CLI::App& tables);

}  // namespace ZARN::App

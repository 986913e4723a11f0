#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "history" to the group "tables".
void AddTablesHistoryCommand(CLI::App& tables);

}  // namespace ZARN::App

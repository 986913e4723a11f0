#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "show" to the group "tables".
void AddTablesShowCommand(CLI::App& tables);

}  // namespace ZARN::App

#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "check" of the group "tables", which tells what is wrong
/// with geometry tables.
void AddTablesCheckCommand(CLI::App& tables);

}  // namespace ZARN::App

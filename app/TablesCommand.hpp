#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the group of subcommands "tables", which look after geometry tables.
void AddTablesCommand(CLI::App& app);

}  // namespace ZARN::App

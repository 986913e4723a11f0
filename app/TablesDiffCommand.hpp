#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "diff" to the group "tables".
void AddTablesDiffCommand(CLI::App& tables);

}  // namespace ZARN::App

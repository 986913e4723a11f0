#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "check": light paths in, verdicts out. It runs while the
/// arguments are parsed and may throw what app/Failure.hpp lists.
void AddCheckCommand(CLI::App& app);

}  // namespace ZARN::App

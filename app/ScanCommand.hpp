#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "scan": events and PMTs in, shadowed PMTs out. It runs
/// while the arguments are parsed and may throw what app/Failure.hpp lists.
void AddScanCommand(CLI::App& app);

}  // namespace ZARN::App

#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "explain", which tells how every component judges one
/// light path. It runs while the arguments are parsed; main.cpp lists what it
/// may throw.
void AddExplainCommand(CLI::App& app);

}  // namespace ZARN::App

#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "check", which reads light paths and writes verdicts. It
/// runs while the arguments are parsed; main.cpp lists what it may throw.
void AddCheckCommand(CLI::App& app);

}  // namespace ZARN::App

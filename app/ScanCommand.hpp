#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "scan", which reads events and PMTs and writes verdicts.
/// It runs while the arguments are parsed; main.cpp lists what it may throw.
void AddScanCommand(CLI::App& app);

}  // namespace ZARN::App

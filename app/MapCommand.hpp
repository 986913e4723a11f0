#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand "map", which draws what blocks the light from an event in
/// all directions. It runs while the arguments are parsed; main.cpp lists what
/// it may throw.
void AddMapCommand(CLI::App& app);

}  // namespace ZARN::App

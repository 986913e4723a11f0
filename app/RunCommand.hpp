#pragma once

namespace ZARN::App {

/// Run the subcommand that the arguments of the program name, or print the
/// help. Throws BadUsage, with a hint at the help, and what the subcommand
/// throws.
void RunCommand(int argc, char** argv);

}  // namespace ZARN::App

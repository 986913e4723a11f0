#pragma once

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add the subcommand display, which writes a page that shows the detector and
/// what blocks the light.
void AddDisplayCommand(CLI::App& app);

}  // namespace ZARN::App

#pragma once

#include <optional>
#include <string>

#include "TVector3.h"

namespace CLI {
class App;
}

namespace ZARN::App {

/// Add an option X,Y,Z for a position in mm; @p position must outlive the
/// parsing.
///
/// @param option  its name, as "--at"
void AddPositionOption(CLI::App& command, const std::string& option,
                       std::optional<TVector3>& position,
                       const std::string& description);

}  // namespace ZARN::App

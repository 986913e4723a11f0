#pragma once

#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// Log to ZARN::warn that a component's test cannot judge a path. To be called
/// only if the test did not find the path blocked. Logs nothing for computed
/// types, and nothing for unknown types if the test has no message for them.
///
/// @param name  the name of the path's type, quoted in some messages
void WarnOfUnusualPath(eShadowingComponent component, ePathKind kind,
                       const std::string& name);

}  // namespace ZARN::DU

#pragma once

#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// Write to ZARN::warn what a component's test says of a path that it did not
/// find blocked and cannot judge: nothing for a computed type, and nothing
/// where the test has no word for an unknown one.
///
/// @param name  the name of the path's type, quoted in some messages
void WarnOfUnusualPath(eShadowingComponent component, ePathKind kind,
                       const std::string& name);

}  // namespace ZARN::DU

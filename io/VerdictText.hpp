#pragma once

#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::IO {

/// The value of column "by" if an event has no light path to a PMT.
inline constexpr const char* kNoPath = "no path";

/// Append the cells shadowed (0 or 1) and by, without a line end.
void AppendVerdict(std::string& text, DU::eShadowingComponent by);

/// Append the cells type, shadowed and by, without a line end.
///
/// @param type  kUninitialised if there is no path: type and shadowed are then
///              empty, and by is kNoPath
void AppendPathVerdict(std::string& text, DU::eLightPathType type,
                       DU::eShadowingComponent by);

}  // namespace ZARN::IO

#pragma once

#include <string>

#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

/// The header of light paths in CSV as LightPathReader takes it, from "type"
/// on.
std::string LightPathHeader();

/// Append a path as its cells, without the end of the line. Numbers read back
/// as the same doubles; points that the type does not use are left empty.
///
/// @param path  of one of the named types
void AppendLightPath(std::string& text, const DU::LightPath& path);

}  // namespace ZARN::IO

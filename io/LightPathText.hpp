#pragma once

#include <string>

#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

/// The CSV header of light paths as LightPathReader reads it, from "type" on.
std::string LightPathHeader();

/// Append the cells of a path, without a line end. Numbers read back as the
/// same doubles; points that the type does not use are empty.
///
/// @param path  of one of the named types
void AppendLightPath(std::string& text, const DU::LightPath& path);

}  // namespace ZARN::IO

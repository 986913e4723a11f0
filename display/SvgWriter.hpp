#pragma once

#include <string>

#include "display/Drawing.hpp"

namespace ZARN::Display {

/// Write a drawing as SVG 1.1: words as text, shapes as paths, images embedded
/// as PNG, with a title and a description. The same drawing gives the same
/// bytes.
///
/// @throws std::runtime_error if an image cannot be encoded
std::string WriteSvg(const Drawing& drawing);

}  // namespace ZARN::Display

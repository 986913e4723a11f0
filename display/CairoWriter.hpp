#pragma once

#include <string>

#include "display/Drawing.hpp"

namespace ZARN::Display {

/// Write a drawing as PNG.
///
/// @param density  pixels of the file per pixel of the nominal size, > 0
/// @throws std::runtime_error if no font is installed, or the picture is larger
///         than 32767 pixels across
std::string WritePng(const Drawing& drawing, double density = 2.0);

/// Write a drawing as PDF, one page of its nominal size in points (1/72 inch),
/// with words as text.
///
/// @throws std::runtime_error if no font is installed
std::string WritePdf(const Drawing& drawing);

/// Encode pixels as PNG.
///
/// @throws std::runtime_error if the image is empty or too large
std::string EncodePng(const Image& image);

}  // namespace ZARN::Display

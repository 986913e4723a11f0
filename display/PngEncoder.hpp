#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ZARN::Display {

/// Encode opaque pixels as PNG, in 8 bits a colour.
///
/// Faster than general encoders for drawings, whose rows mostly repeat the one
/// above: it does not try several filters for each row.
///
/// @param pixels   0xRRGGBB (higher bits are ignored), rows from the top
/// @param stride   pixels from the start of a row to that of the next
/// @param columns  1 to 2^31 - 1, as @p rows
/// @throws std::runtime_error if the pixels cannot be compressed
///
/// Source: PNG Specification (W3C, second edition, 2003).
std::string EncodePng(const std::uint32_t* pixels, std::size_t stride,
                      std::size_t columns, std::size_t rows);

}  // namespace ZARN::Display

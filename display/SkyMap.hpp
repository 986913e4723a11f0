#pragma once

#include "display/Drawing.hpp"
#include "display/MapContent.hpp"
#include "display/Mollweide.hpp"
#include "display/Palette.hpp"

namespace ZARN::Display {

/// The size of a picture, pixels, and its colours. Words and margins grow and
/// shrink with the smaller side; room on the other side goes to the map.
struct MapStyle {
  double width = 1200.0;
  double height = 700.0;
  eTheme theme = eTheme::kLight;
};

/// The smallest and largest width or height of a sky map, pixels.
inline constexpr double kSmallestMapSide = 100.0;
inline constexpr double kLargestMapSide = 8000.0;

/// Whether a column beside the map holds a tolerance panel or, on a comparison,
/// the table of changes.
enum class eMapColumn { kNone, kShown };

/// The grid of pixels for a map of every direction in this style: half pixels
/// of the picture, but no more than 4,000 columns.
///
/// @throws std::invalid_argument if the size is out of range
MapGrid FindMapGrid(const MapStyle& style, eMapColumn column);

/// Compose a sky map.
///
/// With marks, each PMT is a mark with the shape of what blocks its light;
/// above 20,000 PMTs each pixel shows the nearest one. With pixels, every
/// direction has a colour. Several events colour each PMT by the share of
/// events from which it is shadowed. A comparison shows only what changed.
///
/// @throws std::invalid_argument if the size is out of range, a list does not
///         have the length that another says, or a comparison has several
///         events
/// @throws std::runtime_error if no font is installed
Drawing DrawSkyMap(const MapContent& content, const MapStyle& style = {});

}  // namespace ZARN::Display

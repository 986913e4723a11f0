#pragma once

#include "display/Drawing.hpp"
#include "display/SkyMap.hpp"

namespace ZARN::Display {

/// Where the legend of a map is.
enum class eLegendPlace { kBelow, kBeside };

/// Where the parts of a sky map are, in units in which words always have the
/// same size.
struct MapLayout {
  double width = 0.0;
  double height = 0.0;
  double scale = 1.0;  ///< pixels a unit
  Box header;          ///< title and subtitle
  Box map;             ///< the rectangle around the ellipse, 2 : 1
  Box legend;          ///< from its heading to its last line
  eLegendPlace legendPlace = eLegendPlace::kBelow;
  Box panel;  ///< tolerance panel or table of changes, if there is a column
  Box note;   ///< below or beside the panel
};

/// Choose the arrangement in which the map is largest: the column beside it or
/// below, the legend below it or, without a column, beside.
///
/// The places depend on the size alone, not on what is shown, so that pixels
/// can be judged for them.
///
/// @throws std::invalid_argument if the size is out of range
MapLayout LayOutMap(const MapStyle& style, eMapColumn column);

/// The grid of pixels that fits a layout: half pixels of the picture.
MapGrid GridOf(const MapLayout& layout);

}  // namespace ZARN::Display

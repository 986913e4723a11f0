#pragma once

#include <cstddef>
#include <optional>

#include "TVector3.h"

namespace ZARN::Display {

/// A place on the map: an ellipse around the origin, x from -2 to 2 and y from
/// -1 (straight down) to 1 (straight up).
struct MapPoint {
  double x = 0.0;
  double y = 0.0;
};

/// Tell whether a vector has a direction: it is finite and not zero.
bool HasDirection(const TVector3& direction);

/// Place a direction on the map.
///
/// Equal solid angles become equal areas; parallels become straight horizontal
/// lines. Azimuth 0 is in the middle and azimuth grows to the left, as seen
/// from inside.
///
/// @param direction  any length; HasDirection must hold for it
///
/// Source: J. P. Snyder, Map Projections: A Working Manual (1987), section 31,
/// scaled by the square root of 2.
MapPoint ProjectDirection(const TVector3& direction);

/// The unit vector that is drawn at a point, or none if it lies outside the
/// ellipse. The inverse of ProjectDirection.
std::optional<TVector3> FindDirection(const MapPoint& point);

/// The pixels of a map: columns and rows that fill the rectangle around the
/// ellipse, from the top left.
struct MapGrid {
  std::size_t columns = 0;
  std::size_t rows = 0;

  /// The direction at the centre of a pixel; none outside the ellipse.
  std::optional<TVector3> FindDirection(std::size_t column,
                                        std::size_t row) const;
};

}  // namespace ZARN::Display

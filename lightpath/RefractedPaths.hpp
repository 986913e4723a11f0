#pragma once

#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::DU {

/// A light path through the vessel in the plane of its two ends and the centre.
struct RefractedPath {
  eLightPathType Type = kUninitialised;

  /// Angle between the outward radius at the event and the direction of
  /// travel there: 0 straight out, pi straight through the centre.
  double LaunchAngle = 0.0;

  /// How far the path turns around the centre, rad: the angle between the ends
  /// seen from the centre; that angle taken the long way round (2 pi less it)
  /// when the path crosses the line from the event through the centre; or, in
  /// media of strong indices, once around and that angle.
  double SweptAngle = 0.0;

  double OpticalLength = 0.0;  ///< sum of index times length, mm
};

/// Every light path from an event to a PMT that Snell's law allows, reflections
/// left out, in no particular order.
///
/// A path that ends a family of paths (at grazing incidence) may come twice.
///
/// @param eventRadius  distance of the event from the centre, mm, > 0
/// @param pmtRadius    that of the PMT, mm, >= OuterRadius
/// @param angle        between the two, seen from the centre: > 0 and < pi (the
///                     ends and the centre on one line have a straight path,
///                     and LightPathCalculator gives it)
/// @return none for arguments outside these ranges
std::vector<RefractedPath> FindRefractedPaths(const ConcentricMedia& media,
                                              double eventRadius,
                                              double pmtRadius, double angle);

}  // namespace ZARN::DU

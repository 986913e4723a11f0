#pragma once

#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::DU {

/// A light path through the vessel in the plane of event, PMT and centre.
struct RefractedPath {
  eLightPathType Type = kUninitialised;

  /// Angle between the outward radius at the event and the direction of travel
  /// there: 0 is straight outwards, pi straight through the centre.
  double LaunchAngle = 0.0;

  /// Angle by which the path turns around the centre, rad: the angle between
  /// event and PMT seen from the centre; or 2 pi minus it, if the path crosses
  /// the line of event and centre; or, for large ratios of indices, 2 pi plus
  /// it.
  double SweptAngle = 0.0;

  double OpticalLength = 0.0;  ///< sum of index times length, mm
};

/// All light paths from an event to a PMT that obey Snell's law, without
/// reflections, in no particular order.
///
/// A path at the end of a family of paths (at grazing incidence) may appear
/// twice.
///
/// @param eventRadius  distance of the event from the centre, mm, > 0
/// @param pmtRadius    that of the PMT, mm, >= OuterRadius
/// @param angle        angle between the two, seen from the centre: > 0 and <
///                     pi (on one line with the centre, the path is straight:
///                     use LightPathCalculator)
/// @return none for arguments outside these ranges
std::vector<RefractedPath> FindRefractedPaths(const ConcentricMedia& media,
                                              double eventRadius,
                                              double pmtRadius, double angle);

}  // namespace ZARN::DU

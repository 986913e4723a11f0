#pragma once

#include <vector>

#include "TVector3.h"
#include "du/WaterSegments.hpp"

namespace ZARN::DU {

/// The plates around the equator of the vessel. Each is a patch of the sphere
/// through its centre, as wide in azimuth as it is high. Lengths in mm.
struct BellyPlateModel {
  std::vector<TVector3> BellyPlatePositions;  ///< plate centres
  /// A grid of points over every plate. The test does not read it; it is kept
  /// for callers that draw or fit.
  std::vector<TVector3> BellyPlateGridPoints;
  double BellyPlateHalfHeight = 0.0;

  /// Empty both lists, keeping their storage; the half height stays.
  void Clear();
};

/// Read the plates from SOLID/belly_plate_vintar and, through the name in
/// GEO/inner_av belly_plate_locations, from GEO_LOCATIONS; append the grid.
///
/// @param tolerance  the number of grid divisions per plate side: the belly
///                   plate tolerance as it stands while the run is set up,
///                   which is the previous run's. None or fewer: no grid; a
///                   fraction counts as one more.
/// @throws ZARN::DBNotFoundError for a missing entry or field; what was read
///         stays in the model
void LoadBellyPlateInfo(BellyPlateModel& model, double tolerance);

/// Tell whether a path crosses the vessel through a plate, at either of its
/// crossings: strictly within the height band and the azimuthal half-width,
/// both widened by the tolerance. Paths wholly in water never do; a path of
/// unknown type is judged at the origin.
///
/// @param tolerance      mm
/// @param outerAVRadius  where the tolerance becomes an angle, mm
bool CheckForBellyPlateShadowing(const BellyPlateModel& model, double tolerance,
                                 double outerAVRadius,
                                 const WaterSegments& path);

}  // namespace ZARN::DU

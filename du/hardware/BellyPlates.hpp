#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "du/geometry/Diagnostics.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// The plates around the equator of the vessel. Each is a patch of the sphere
/// through its centre, as wide in azimuth as it is high. Lengths in mm.
struct BellyPlateModel {
  std::vector<TVector3> BellyPlatePositions;  ///< plate centres
  /// A grid of points over every plate. The test does not read it; it is kept
  /// for callers that draw or fit.
  std::vector<TVector3> BellyPlateGridPoints;
  double BellyPlateHalfHeight = 0.0;
  std::string BellyPlateLocations;  ///< the index in GEO_LOCATIONS

  /// Clear both lists but keep their memory; the rest does not change.
  void Clear();
};

/// Read the plates from SOLID/belly_plate_vintar and, through the name in
/// GEO/inner_av belly_plate_locations, from GEO_LOCATIONS; append the grid.
///
/// @param tolerance  the number of grid divisions per plate side: the belly
///                   plate tolerance when the run is set up, which is that of
///                   the previous run. 0 or less: no grid; a fraction is
///                   rounded up.
/// @throws ZARN::DBNotFoundError for a missing entry or field; what was read
///         stays in the model
void LoadBellyPlateInfo(const TableSet& tables, BellyPlateModel& model,
                        double tolerance);

/// The limits of the test that are the same for every plate.
struct BellyPlateBand {
  BellyPlateBand(const BellyPlateModel& model, double tolerance,
                 double outerAVRadius);

  /// Whether a crossing at this height is within the band.
  bool Holds(double z) const { return z < halfHeight && z > -halfHeight; }

  double halfHeight;  ///< of the band, mm: crossings above or below are clear
  double dphi;        ///< the tolerance as an angle on the outer vessel, rad
};

/// The extent of a plate, whatever the tolerance.
struct BellyPlateFrame {
  BellyPlateFrame(const TVector3& centre, double halfHeight,
                  eDiagnostics diagnostics);

  double radius;
  TVector3 bottom;
  double width;     ///< angular height, and width in azimuth, rad
  double phiStart;  ///< azimuth of one edge, rad
};

/// The widened half-width of one plate, as the angles from its centre to its
/// two edges, rad.
struct BellyPlateEdges {
  BellyPlateEdges(const TVector3& plate, const BellyPlateFrame& frame,
                  const BellyPlateBand& band);

  /// The edge that decides on a crossing at an angle from the centre, which is
  /// blocked if it is within both edges: the first that it is not within.
  double LimitOf(double alpha) const { return left > alpha ? right : left; }

  double left;
  double right;
};

/// The angle, rad, between a crossing and the centre of a plate, both at the
/// height of the centre.
double BellyPlateAngle(TVector3 point, const TVector3& plate);

/// Walk over the crossings of a path that are tested against the plates.
///
/// @param test  called with the point and its segment; returns whether to stop
/// @return whether the walk was stopped
template <class Test>
bool WalkPlateCrossings(const WaterSegments& path, const Test& test) {
  if (path.kind == ePathKind::kWater ||
      path.kind == ePathKind::kUninitialised ||
      path.kind == ePathKind::kMisspeltUninitialised) {
    return false;
  }
  return test(path.first.point, eWaterSegment::kFirst) ||
         (path.kind == ePathKind::kTwoCrossings &&
          test(path.second.point, eWaterSegment::kSecond));
}

/// Tell whether a path crosses the vessel through a plate, at either of its
/// crossings: strictly within the height band and the half-width in azimuth,
/// both widened by the tolerance. Paths wholly in water never do; a path of
/// unknown type is judged at the origin.
///
/// @param tolerance      mm
/// @param outerAVRadius  where the tolerance becomes an angle, mm
bool CheckForBellyPlateShadowing(
    const BellyPlateModel& model, double tolerance, double outerAVRadius,
    const WaterSegments& path,
    eDiagnostics diagnostics = eDiagnostics::kWritten);

/// Visit every test of CheckForBellyPlateShadowing, without messages.
void VisitBellyPlateTests(const BellyPlateModel& model, double tolerance,
                          double outerAVRadius, const WaterSegments& path,
                          const ShadowingTestVisitor& visitor);

/// Whether ROOT's vectors warn when a path is tested against the plates: if a
/// plate, or an edge of one, is at the vessel's centre.
bool WarnsOfZeroVectors(const BellyPlateModel& model);

}  // namespace ZARN::DU

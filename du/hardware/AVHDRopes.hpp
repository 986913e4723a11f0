#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"

namespace ZARN::DU {

/// A part of a hold-down rope over the top of the vessel.
enum class eAVHDRopePart : std::uint8_t {
  kOverVessel,  ///< from P1 to P2, past the neck to P3, and to P4
  kRing         ///< arcs around the neck, which connect P2 and P3 with the rope
                ///< opposite
};

/// The hold-down ropes: copies of one template rope, each rotated about the z
/// axis by its roll angle. Over the top of the vessel they lie on its outer
/// surface; below their end points they run straight down. Lengths in mm,
/// angles in rad.
struct AVHDRopeModel {
  /// The template rope: P0 and P5 are its feet, P1 and P4 its end points, where
  /// it leaves the vessel, P2 and P3 the points where it meets the ring around
  /// the neck. Further points are kept but not used.
  std::vector<TVector3> AVHDRopePositions;
  std::vector<double> AVHDRopeRolls;
  /// P1 and P4 of every rope, in the order of the rolls.
  std::vector<TVector3> AVHDRopeEndPoints;
  /// Samples of the ropes on the outer vessel sphere, in the order of the
  /// rolls: for each rope 2000 along the rope, and those along the adjacent
  /// arcs of the ring.
  std::vector<TVector3> AVHDRopeSurfacePoints;
  /// The part of its rope that each surface point is on.
  std::vector<eAVHDRopePart> AVHDRopeSurfaceParts;
  /// Position of the first surface point of each rope.
  std::vector<std::size_t> AVHDRopeSurfaceBegins;
  /// 198 samples of each rope's two legs. The test does not read them; they are
  /// kept for callers that draw or fit.
  std::vector<TVector3> AVHDRopeLegPoints;
  double AVHDRopeRadius = 0.0;
  std::string AVHDRopeLocations;  ///< the index in GEO_LOCATIONS of the rolls

  /// Clear all lists but keep their memory; radius and name do not change.
  void Clear();
};

/// Read the ropes through the names that GEO/hold_down_ropes gives in
/// solid_definition (SOLID) and locations (GEO_LOCATIONS, rolls in degrees),
/// and append end points, surface points and leg points of every rope.
///
/// @param outerAVRadius  radius of the sphere that carries the ropes, mm
/// @param avNeckRadius   radius of the neck, around which they run, mm
/// @throws ZARN::DBNotFoundError for a missing entry or field, or, after all
///         reads, for a template of fewer than six points; what was read stays
///         in the model
void LoadAVHDRopeInfo(const TableSet& tables, AVHDRopeModel& model,
                      double outerAVRadius, double avNeckRadius);

}  // namespace ZARN::DU

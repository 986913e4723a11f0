#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "du/geometry/Diagnostics.hpp"
#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/RopeCylinderLimits.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// The ropes that carry the vessel: vertical lines around it, two from each
/// anchor location. Lengths in mm.
struct SupportRopeModel {
  /// Foot of every rope: for each location rotated forward in azimuth by the
  /// spread of the pair, then back. The first foot gives the radius of the rope
  /// cylinder and the height below which nothing is tested.
  std::vector<TVector3> SupportRopePositions;
  /// 99 samples up every rope. The test does not read them; they are kept for
  /// callers that draw or fit.
  std::vector<TVector3> SupportRopeLinePoints;
  double SupportRopeRadius = 0.0;
  double SupportRopeLength = 0.0;
  std::string SupportRopeLocations;  ///< the index in GEO_LOCATIONS

  /// Clear both lists but keep their memory; the rest does not change.
  void Clear();
};

/// Read the ropes through the names that GEO/hold_up_ropes gives in
/// solid_definition (SOLID) and locations (GEO_LOCATIONS), and append feet and
/// line points. The spread of a pair is two thirds of the belly plates' half
/// height, as an angle on the outer vessel.
///
/// @param outerAVRadius  radius of the outer vessel sphere, mm
/// @throws ZARN::DBNotFoundError for a missing entry or field; what was read
///         stays in the model
void LoadSupportRopeInfo(const TableSet& tables, SupportRopeModel& model,
                         double outerAVRadius);

/// Whether the model has the item that the test indexes unchecked: a rope.
bool HasSupportRopes(const SupportRopeModel& model);

/// The cylinder and height of the ropes. @pre HasSupportRopes(model)
RopeCylinderLimits LimitsOfSupportRopes(const SupportRopeModel& model);

/// Distance of the top of the ropes from the centre, mm: up to this height,
/// above and below z = 0, a path in water without an end inside the rope
/// cylinder is tested.
/// @pre HasSupportRopes(model)
double SupportRopeTopDistance(const SupportRopeModel& model);

/// The angle to a rope below which a crossing is blocked, rad.
/// @pre HasSupportRopes(model)
double SupportRopeAngleTolerance(const SupportRopeModel& model,
                                 double tolerance);

/// The test of a water segment. @pre HasSupportRopes(model)
bool IsAtSupportRope(const SupportRopeModel& model, double tolerance,
                     const WaterSegment& segment, eDiagnostics diagnostics);

/// Tell whether a support rope blocks a path.
///
/// A water segment that starts strictly above the first rope's foot is followed
/// to the rope cylinder. It is blocked there if the crossing is not above the
/// ropes and has the azimuth of a rope. A path wholly in water with one end
/// inside the cylinder is followed to its crossing in the same way. One with
/// both ends outside is tested against the hold-down ropes, with the tolerance
/// of the support ropes. All limits are strict.
///
/// @param holdDownRopes  may be empty; then the last case is never blocked
/// @param tolerance      added to the rope's radius, mm
/// @pre HasSupportRopes(model)
bool CheckForSupportRopeShadowing(
    const SupportRopeModel& model, const AVHDRopeModel& holdDownRopes,
    double tolerance, const WaterSegments& path,
    eDiagnostics diagnostics = eDiagnostics::kWritten);

/// Visit every test of CheckForSupportRopeShadowing, or those of the nearest
/// items, without messages.
/// @pre HasSupportRopes(model)
void VisitSupportRopeTests(const SupportRopeModel& model,
                           const AVHDRopeModel& holdDownRopes, double tolerance,
                           const WaterSegments& path,
                           const ShadowingTestVisitor& visitor,
                           const NearestItems* nearest = nullptr);

}  // namespace ZARN::DU

#pragma once

#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "du/geometry/Diagnostics.hpp"
#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/RopeCylinderLimits.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// The ropes that carry the vessel: vertical lines around it, two from each
/// anchor location. Lengths in mm.
struct SupportRopeModel {
  /// Foot of every rope: for each location it is turned forward in azimuth by
  /// the spread of the pair, then back. The first one gives the radius of the
  /// rope cylinder and the height below which nothing is tested.
  std::vector<TVector3> SupportRopePositions;
  /// 99 samples up every rope. The test does not read them; they are kept for
  /// callers that draw or fit.
  std::vector<TVector3> SupportRopeLinePoints;
  double SupportRopeRadius = 0.0;
  double SupportRopeLength = 0.0;

  /// Empty both lists, keeping their storage; the sizes stay.
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

/// Whether the model has what the test reads without looking: a rope.
bool HasSupportRopes(const SupportRopeModel& model);

/// Where the ropes stand. @pre HasSupportRopes(model)
RopeCylinderLimits LimitsOfSupportRopes(const SupportRopeModel& model);

/// How far from the centre the ropes' top is: so high, up and down, a path in
/// water that has no end inside the rope cylinder is tested, mm.
/// @pre HasSupportRopes(model)
double SupportRopeTopDistance(const SupportRopeModel& model);

/// How near in angle to a rope a crossing is blocked, rad.
/// @pre HasSupportRopes(model)
double SupportRopeAngleTolerance(const SupportRopeModel& model,
                                 double tolerance);

/// The test of a water segment. @pre HasSupportRopes(model)
bool IsAtSupportRope(const SupportRopeModel& model, double tolerance,
                     const WaterSegment& segment, eDiagnostics diagnostics);

/// Tell whether a support rope blocks a path.
///
/// A water segment that starts strictly above the first rope's foot is followed
/// to the rope cylinder; it is blocked there if the crossing is not above the
/// ropes and its azimuth is that of a rope. A path wholly in water with one end
/// inside the cylinder is followed to its crossing likewise; one with both ends
/// outside is tested against the hold-down ropes, with the tolerance of the
/// support ropes. All limits are strict.
///
/// @param holdDownRopes  may be empty: then the last case is never blocked
/// @param tolerance      added to the rope's radius, mm
/// @pre HasSupportRopes(model)
bool CheckForSupportRopeShadowing(
    const SupportRopeModel& model, const AVHDRopeModel& holdDownRopes,
    double tolerance, const WaterSegments& path,
    eDiagnostics diagnostics = eDiagnostics::kWritten);

}  // namespace ZARN::DU

#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// The anchors on the vessel, each a sphere around its position. Lengths in mm.
struct NCDAnchorModel {
  std::vector<TVector3> NCDAnchorPositions;
  double NCDAnchorHalfZ = 0.0;     ///< the radius of the spheres
  double NCDAnchorRadius = 0.0;    ///< as loaded; the test does not read it
  std::string NCDAnchorLocations;  ///< the index in GEO_LOCATIONS

  /// Clear the list but keep its memory; the rest does not change.
  void Clear();
};

/// Read the anchors through the names that GEO/inner_av gives in
/// ncd_anchor_definition (SOLID) and ncd_anchor_locations (GEO_LOCATIONS).
///
/// @throws ZARN::DBNotFoundError for a missing entry or field; what was read
///         stays in the model
void LoadNCDAnchorInfo(const TableSet& tables, NCDAnchorModel& model);

/// The distance to an anchor below which a crossing is blocked, mm.
double NCDAnchorReach(const NCDAnchorModel& model, double tolerance);

/// Tell whether a path crosses the vessel, at either of its crossings, strictly
/// nearer to an anchor than its half height plus @p tolerance (mm). Paths
/// wholly in water never do; a path of unknown type is judged at the origin.
bool CheckForNCDAnchorShadowing(const NCDAnchorModel& model, double tolerance,
                                const WaterSegments& path);

/// Visit every test of CheckForNCDAnchorShadowing, or those of the nearest
/// items.
void VisitNCDAnchorTests(const NCDAnchorModel& model, double tolerance,
                         const WaterSegments& path,
                         const ShadowingTestVisitor& visitor,
                         const NearestItems* nearest = nullptr);

}  // namespace ZARN::DU

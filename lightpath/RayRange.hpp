#pragma once

#include <vector>

#include "lightpath/LightPathType.hpp"
#include "lightpath/RayCurve.hpp"
#include "lightpath/RayFamilies.hpp"
#include "lightpath/RayKernel.hpp"

namespace ZARN::DU {

/// The family that a branch of a table holds; the outward one if it goes on as
/// the inward one.
const RayFamily& FamilyOf(eRayFamily family);

/// The rays from the one through the centre up to the last one that is used.
struct RayPiece {
  RayCurve curve;
  eRayFamily family;
  CurveSlack slack;
  double pmtRadius;
  std::vector<CurvePoint> points;  // from the centre to the end
  bool isFolded;                   // at the end

  const CurvePoint& End() const { return points.back(); }
};

/// Which path type light takes over a range of directions to the PMT, and the
/// table of its rays.
struct RayRange {
  eLightPathType type = kUninitialised;
  RayBranch branch = {};
  std::vector<RayCell> cells;  ///< those of the branch
};

/// Make the table of a piece.
///
/// @param lastG  where it ends, up to that of the piece's end
/// @param count  of its cells
RayRange MakeRayRange(const RayPiece& piece, double lastG, int count);

}  // namespace ZARN::DU

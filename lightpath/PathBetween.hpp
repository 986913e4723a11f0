#pragma once

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

// Compute the paths described in LightPathCalculator.hpp. Both set the whole
// record; without a path it equals LightPath().

void FindDirectPath(const ConcentricMedia& media, const TVector3& eventPos,
                    const TVector3& pmtPos, LightPath& path);

/// The direction of travel of a straight path, even if the square of its length
/// would underflow.
TVector3 StraightDirection(const TVector3& eventPos, const TVector3& pmtPos);

void FindReflectedPath(const ConcentricMedia& media, const TVector3& eventPos,
                       const TVector3& pmtPos, LightPath& path);

}  // namespace ZARN::DU

#pragma once

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

// Compute the paths described in LightPathCalculator.hpp. Both set the whole
// record; without a path it equals LightPath().

void FindDirectPath(const ConcentricMedia& media, const TVector3& eventPos,
                    const TVector3& pmtPos, LightPath& path);

void FindReflectedPath(const ConcentricMedia& media, const TVector3& eventPos,
                       const TVector3& pmtPos, LightPath& path);

}  // namespace ZARN::DU

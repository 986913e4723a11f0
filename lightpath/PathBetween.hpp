#pragma once

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

// Where LightPathCalculator's paths come from; it says what they are. Both fill
// the whole record, and leave it as LightPath() has it where there is no path.

void FindDirectPath(const ConcentricMedia& media, const TVector3& eventPos,
                    const TVector3& pmtPos, LightPath& path);

void FindReflectedPath(const ConcentricMedia& media, const TVector3& eventPos,
                       const TVector3& pmtPos, LightPath& path);

}  // namespace ZARN::DU

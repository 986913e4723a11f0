#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"

/// What every light path must satisfy, worked out from its points and
/// directions alone.
namespace ZARN::Testing {

/// The media of a type's stretches, in order.
std::vector<DU::eMedium> StretchesOf(DU::eLightPathType type);

/// Start, points on the surfaces as many as the type has, and end.
std::vector<TVector3> CornersOf(const DU::LightPathCalculator& path);

/// Distance of a point from the piece of a line between two ends.
double DistanceFromSegment(const TVector3& point, const TVector3& a,
                           const TVector3& b);

/// The angle between two vectors, to the last digits where it is small, too.
double AngleBetween(const TVector3& a, const TVector3& b);

/// What is wrong with a refracted or straight path: the first thing found with
/// its figures, or nothing. Uses the points and directions, never the solver.
std::string FlawOf(const DU::LightPathCalculator& path,
                   const DU::ConcentricMedia& media, const TVector3& eventPos,
                   const TVector3& pmtPos);

}  // namespace ZARN::Testing

#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"

/// Conditions for every light path, checked from its points and directions
/// only.
namespace ZARN::Testing {

/// The media of a type's segments, in order.
std::vector<DU::eMedium> SegmentsOf(DU::eLightPathType type);

/// Start, the points on the surfaces that the type uses, and end.
std::vector<TVector3> CornersOf(const DU::LightPathCalculator& path);

/// Distance of a point from a segment.
double DistanceFromSegment(const TVector3& point, const TVector3& a,
                           const TVector3& b);

/// The angle between two vectors, accurate also for small angles.
double AngleBetween(const TVector3& a, const TVector3& b);

/// The first flaw found in a refracted or straight path with its size, or "".
/// Uses the points and directions, not the solver.
std::string FlawOf(const DU::LightPathCalculator& path,
                   const DU::ConcentricMedia& media, const TVector3& eventPos,
                   const TVector3& pmtPos);

}  // namespace ZARN::Testing

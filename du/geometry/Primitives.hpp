#pragma once

#include "TVector3.h"
#include "du/geometry/Diagnostics.hpp"

namespace ZARN::DU {

/// The unit vector along +z, up the vessel's neck. Not a variable: the static
/// constructor of another translation unit may use a calculator before the
/// variable is initialised.
inline TVector3 ZHat() { return {0, 0, 1.0}; }

/// Find where a line crosses a sphere centred on the origin.
///
/// @param startPos   a point on the line, mm
/// @param direction  direction of the line. Used as a unit vector and not
///                   normalised: with any other length the result is not on the
///                   sphere.
/// @param radius     sphere radius, mm
/// @param nearSolution  false: the far crossing when it lies strictly ahead of
///                   @p startPos; in every other case the near one, which is
///                   the first along the line and may lie behind the start
/// @return the crossing; @p startPos itself if the line misses the sphere (or
///         the numbers are not finite), which is logged to ZARN::debug in four
///         lines unless @p diagnostics are silent. Never throws.
TVector3 VectorToSphereEdge(const TVector3& startPos, const TVector3& direction,
                            double radius, bool nearSolution,
                            eDiagnostics diagnostics = eDiagnostics::kWritten);

/// Find where a line leaves a cylinder whose axis is the z axis.
///
/// The crossing is found in the horizontal plane, by VectorToSphereEdge with
/// the flattened vectors, and then given a height. Since the flattened
/// direction is not renormalised, the result is exact for horizontal
/// directions only; all rope tests share this approximation.
///
/// @param startPos   a point on the line, mm
/// @param direction  direction of travel
/// @param shift      added to the result, mm
/// @param radius     cylinder radius, mm
TVector3 VectorToCylinderEdge(
    const TVector3& startPos, const TVector3& direction, const TVector3& shift,
    double radius, eDiagnostics diagnostics = eDiagnostics::kWritten);

/// Angle between the direction from a point to the origin and the tangents from
/// that point to a sphere around the origin.
///
/// @param position  the point, mm
/// @param radius    sphere radius, mm; the sign carries over to the result
/// @return asin(radius / |position|), computed as pi/2 - acos, rad, limited to
///         +-pi/2 where the point is inside the sphere. NaN for the origin with
///         radius 0.
double ClosestAngle(const TVector3& position, double radius);

/// @p v with its z set to 0.
TVector3 Flattened(TVector3 v);

/// @p v rotated about the z axis by @p angle, rad.
TVector3 Rotated(TVector3 v, double angle);

/// @p v rotated about the z axis to the azimuth @p phi, rad.
TVector3 WithPhi(TVector3 v, double phi);

/// @p v with its length set to @p length, mm. A zero vector is returned
/// unchanged, and ROOT warns "zero vector can't be stretched" unless
/// @p diagnostics are silent.
TVector3 WithMag(TVector3 v, double length,
                 eDiagnostics diagnostics = eDiagnostics::kWritten);

}  // namespace ZARN::DU

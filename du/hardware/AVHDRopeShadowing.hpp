#pragma once

#include <vector>

#include "TVector3.h"
#include "du/geometry/Diagnostics.hpp"
#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/RopeCylinderLimits.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// Whether the model has what the test reads without looking: an end point and
/// the template up to P4. (A run without a rope has no end point.)
bool HasAVHDRopes(const AVHDRopeModel& model);

/// Tell whether a point has the azimuth of a vertical rope: whether its angle,
/// seen from the centre, to an end point of some rope is strictly below
/// @p angleTolerance, rad.
///
/// @param point  where a path meets the rope cylinder, mm; flattened, since the
///               end points lie close to z = 0
/// @pre HasAVHDRopes(model)
bool IsAtAVHDRope(const AVHDRopeModel& model, const TVector3& point,
                  double angleTolerance);

/// The end points to which IsAtAVHDRope measures the angles, mm.
std::vector<TVector3> AVHDRopeEnds(const AVHDRopeModel& model);

/// Where the vertical ropes stand. @pre HasAVHDRopes(model)
RopeCylinderLimits LimitsOfAVHDRopes(const AVHDRopeModel& model);

/// How near in angle to a vertical rope a crossing is blocked, rad.
/// @pre HasAVHDRopes(model)
double AVHDRopeAngleTolerance(const AVHDRopeModel& model, double tolerance);

/// The test of a water segment that starts below the end of the ropes.
/// @pre HasAVHDRopes(model)
bool IsAtVerticalAVHDRope(const AVHDRopeModel& model, double tolerance,
                          const WaterSegment& segment,
                          eDiagnostics diagnostics);

/// Tell whether a hold-down rope blocks a path.
///
/// A water segment that starts at or above the end of the ropes is tested
/// against the surface points, by distance; one that starts below, and a path
/// wholly in water, against the vertical ropes where it meets their cylinder,
/// by azimuth. All limits are strict.
///
/// @param tolerance  added to the rope's radius, mm
/// @pre HasAVHDRopes(model)
bool CheckForAVHDRopeShadowing(
    const AVHDRopeModel& model, double tolerance, const WaterSegments& path,
    eDiagnostics diagnostics = eDiagnostics::kWritten);

}  // namespace ZARN::DU

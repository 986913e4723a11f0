#pragma once

#include "TVector3.h"
#include "du/AVHDRopes.hpp"
#include "du/WaterSegments.hpp"

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

/// Tell whether a hold-down rope blocks a path.
///
/// A water segment that starts at or above the end of the ropes is tested
/// against the surface points, by distance; one that starts below, and a path
/// wholly in water, against the vertical ropes where it meets their cylinder,
/// by azimuth. All limits are strict.
///
/// @param tolerance  added to the rope's radius, mm
/// @pre HasAVHDRopes(model)
bool CheckForAVHDRopeShadowing(const AVHDRopeModel& model, double tolerance,
                               const WaterSegments& path);

}  // namespace ZARN::DU

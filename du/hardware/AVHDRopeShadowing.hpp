#pragma once

#include <vector>

#include "TVector3.h"
#include "du/geometry/Diagnostics.hpp"
#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/RopeCylinderLimits.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// Whether the model has the items that the test indexes unchecked: an end
/// point, and the template up to P4. (A run without ropes has no end point.)
bool HasAVHDRopes(const AVHDRopeModel& model);

/// The leg tops to which the tests of legs measure angles, in the order of
/// these tests, mm.
std::vector<TVector3> AVHDRopeEnds(const AVHDRopeModel& model);

/// The cylinder and height of the vertical ropes. @pre HasAVHDRopes(model)
RopeCylinderLimits LimitsOfAVHDRopes(const AVHDRopeModel& model);

/// The distance to a surface point below which a crossing is blocked, mm.
double AVHDRopeReach(const AVHDRopeModel& model, double tolerance);

/// The angle to a vertical rope below which a crossing is blocked, rad.
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
/// against the surface points, by distance. A segment that starts below, and a
/// path wholly in water, is tested against the vertical ropes at the point
/// where it meets their cylinder, by azimuth. All limits are strict.
///
/// @param tolerance  added to the rope's radius, mm
/// @pre HasAVHDRopes(model)
bool CheckForAVHDRopeShadowing(
    const AVHDRopeModel& model, double tolerance, const WaterSegments& path,
    eDiagnostics diagnostics = eDiagnostics::kWritten);

/// Visit every test of CheckForAVHDRopeShadowing, or those of the nearest
/// items, without messages.
/// @pre HasAVHDRopes(model)
void VisitAVHDRopeTests(const AVHDRopeModel& model, double tolerance,
                        const WaterSegments& path,
                        const ShadowingTestVisitor& visitor,
                        const NearestItems* nearest = nullptr);

}  // namespace ZARN::DU

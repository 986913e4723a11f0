#pragma once

#include <cmath>

#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/SupportRopes.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/UsualVessel.hpp"

namespace ZARN::Testing {

/// Radius of the cylinder on which the ropes of TwoRopes stand: a power of two,
/// so that lengths become angles without rounding.
constexpr double kCylinderRadius = 4096.0;

inline TVector3 AtAzimuth(double phi, double perp = kCylinderRadius) {
  return {perp * std::cos(phi), perp * std::sin(phi), 0};
}

/// Away from both ropes, forwards and backwards.
inline TVector3 ToNoRope() { return AtAzimuth(-DU::kPi / 4, 1.0); }

/// Support ropes at azimuth 0 and 90 degrees, whose feet are at z = 0.
inline DU::SupportRopeModel TwoRopes() {
  DU::SupportRopeModel model;
  model.SupportRopePositions = {{kCylinderRadius, 0, 0},
                                {0, kCylinderRadius, 0}};
  return model;
}

/// Where a line meets the cylinder of TwoRopes.
inline TVector3 CrossingOf(const TVector3& start, const TVector3& direction) {
  return DU::VectorToCylinderEdge(start, direction, {0, 0, 0}, kCylinderRadius);
}

inline TVector3 TopOfTheFirstRope() {
  return DU::VectorToSphereEdge({kCylinderRadius, 0, 0}, {0, 0, 1.0}, 8500.0,
                                false);
}

/// What the formula of support ropes says, without hold-down ropes.
inline bool IsShadowed(const DU::SupportRopeModel& model,
                       const DU::LightPath& path,
                       double tolerance = kTolerance) {
  return DU::CheckForSupportRopeShadowing(model, DU::AVHDRopeModel(), tolerance,
                                          SegmentsOf(path));
}

}  // namespace ZARN::Testing

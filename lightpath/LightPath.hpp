#pragma once

#include <array>

#include "TVector3.h"
#include "lightpath/LightPathType.hpp"

namespace ZARN::DU {

/// A computed light path from an event to a PMT, as a plain record.
///
/// Positions in mm, in detector coordinates: the centre of the acrylic vessel
/// (AV) at the origin, its neck along +z. Directions are directions of travel
/// of any length. Points that a type does not use may have any value
/// (LightPathType.hpp lists the points of each type).
struct LightPath {
  TVector3 FinalDirection;    ///< of the last segment, towards the PMT
  TVector3 InitialDirection;  ///< as the light leaves the start
  TVector3 StartPos;          ///< the event
  TVector3 EndPos;            ///< the point at the PMT
  TVector3 AVPoint1;          ///< first point on an AV surface, or reflection
  TVector3 AVPoint2;          ///< second point on an AV surface
  TVector3 AVPoint3;          ///< third point on an AV surface
  TVector3 AVPoint4;          ///< fourth point on an AV surface
  eLightPathType LightPathType = kUninitialised;
};

/// The points on the vessel, in order along the path.
inline constexpr std::array<TVector3 LightPath::*, 4> kAVPoints = {
    &LightPath::AVPoint1, &LightPath::AVPoint2, &LightPath::AVPoint3,
    &LightPath::AVPoint4};

}  // namespace ZARN::DU

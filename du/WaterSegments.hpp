#pragma once

#include <string>

#include "TVector3.h"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

/// What the component tests distinguish about a path.
enum class ePathKind {
  kOneCrossing,   ///< leaves the vessel once: one water segment
  kTwoCrossings,  ///< from the water over the vessel, through or off it: two
  kWater,         ///< wholly in water, between its two ends
  kUninitialised,
  /// Named "LightPath Uninitialised", without the space of the real name. Only
  /// the rope and plate tests know this name.
  kMisspeltUninitialised,
  kUnknown  ///< any other name; its segments are zero vectors
};

/// A stretch of a path in water: a point on it and a direction, unset ones
/// zero.
struct WaterSegment {
  TVector3 point;
  TVector3 direction;
};

/// The part of a light path that hardware can block.
///
/// | kind          | first                       | second                    |
/// |---------------|-----------------------------|---------------------------|
/// | kOneCrossing  | last AV point, onward       | zero                      |
/// | kTwoCrossings | first AV point, back        | last AV point, onward     |
/// | kWater        | start, along the path       | end, back along the path  |
/// | other kinds   | zero                        | zero                      |
///
/// "Onward" is FinalDirection, "back" is -InitialDirection. The one AV point
/// of a reflected path is both its first and its last.
struct WaterSegments {
  ePathKind kind = ePathKind::kUnknown;
  WaterSegment first;
  WaterSegment second;
};

/// Which points of a path bound its water segments.
struct PathShape {
  ePathKind kind;
  TVector3 LightPath::*firstPoint;
  TVector3 LightPath::*secondPoint;
};

/// The shape that the tests give to a type of this name; names are compared
/// exactly.
const PathShape& ShapeOfName(const std::string& name);

/// The shape of a type under its own name (kLightPathTypeNames); kUnknown for a
/// type that has none.
const PathShape& ShapeOfType(eLightPathType type);

/// The water segments of a path of the given shape.
WaterSegments SegmentsOf(const LightPath& path, const PathShape& shape);

}  // namespace ZARN::DU

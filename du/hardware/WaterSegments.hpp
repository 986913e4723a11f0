#pragma once

#include <array>
#include <string>

#include "TVector3.h"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"

namespace ZARN::DU {

/// What the component tests distinguish about a path.
enum class ePathKind {
  kOneCrossing,   ///< leaves the vessel once: one water segment
  kTwoCrossings,  ///< from water through the vessel, or reflected by it: two
  kWater,         ///< wholly in water, between its two ends
  kUninitialised,
  /// Named "LightPath Uninitialised", without the space of the real name. Only
  /// the rope and plate tests know this name.
  kMisspeltUninitialised,
  kUnknown  ///< any other name; its segments are zero vectors
};

/// A part of a path in water: a point on it and a direction; zero vectors if
/// unset.
struct WaterSegment {
  TVector3 point;
  TVector3 direction;
};

/// A part of a path in water, without copies: a point and a direction of the
/// path, which is taken as it is (sense 1) or reversed (-1). With sense 0 there
/// is no such part, whatever point and direction are; its copy has zero
/// vectors.
struct SegmentView {
  const TVector3& point;
  const TVector3& direction;
  double sense;

  WaterSegment Copy() const {
    if (sense == 0.0) return {};
    return {point, sense < 0 ? -direction : direction};
  }
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

/// The same without copies.
struct WaterSegmentViews {
  ePathKind kind;
  SegmentView first;
  SegmentView second;

  WaterSegments Copy() const { return {kind, first.Copy(), second.Copy()}; }
};

/// Which members of a path bound its water segments. @p Path is LightPath or
/// LightPathArrays, @p Vector the type of its vectors.
template <class Path, class Vector>
struct ShapeIn {
  ePathKind kind;
  Vector Path::*firstPoint;
  Vector Path::*secondPoint;
};

/// The shapes, indexed by eLightPathType.
template <class Path, class Vector>
inline constexpr std::array<ShapeIn<Path, Vector>, kNumberOfLightPathTypes>
    kShapesIn = {{
        {ePathKind::kUninitialised, nullptr, nullptr},
        {ePathKind::kOneCrossing, &Path::AVPoint2, nullptr},
        {ePathKind::kOneCrossing, &Path::AVPoint3, nullptr},
        {ePathKind::kOneCrossing, &Path::AVPoint1, nullptr},
        {ePathKind::kTwoCrossings, &Path::AVPoint1, &Path::AVPoint4},
        {ePathKind::kTwoCrossings, &Path::AVPoint1, &Path::AVPoint2},
        {ePathKind::kWater, &Path::StartPos, &Path::EndPos},
        {ePathKind::kTwoCrossings, &Path::AVPoint1, &Path::AVPoint1},
    }};

using PathShape = ShapeIn<LightPath, TVector3>;
inline constexpr PathShape kUnknownShape = {ePathKind::kUnknown, nullptr,
                                            nullptr};

/// The shape that the tests use for a type with this name; names are compared
/// exactly.
const PathShape& ShapeOfName(const std::string& name);

/// The shape of a type with its default name (kLightPathTypeNames); kUnknown
/// for a type without one.
inline const PathShape& ShapeOfType(eLightPathType type) {
  return IsKnownType(type)
             ? kShapesIn<LightPath, TVector3>[static_cast<std::size_t>(type)]
             : kUnknownShape;
}

/// The shape of a type with a given name: that of ShapeOfName, but found with
/// one comparison if it is the default name of the type.
inline const PathShape& ShapeOfTypeNamed(eLightPathType type,
                                         const std::string& name) {
  return IsKnownType(type) &&
                 name == kLightPathTypeNames[static_cast<std::size_t>(type)]
             ? ShapeOfType(type)
             : ShapeOfName(name);
}

/// The water segments of a path of the given shape.
inline WaterSegmentViews ViewsOf(const LightPath& path,
                                 const PathShape& shape) {
  switch (shape.kind) {
    case ePathKind::kOneCrossing:
      return {shape.kind,
              {path.*shape.firstPoint, path.FinalDirection, 1.0},
              {path.EndPos, path.FinalDirection, 0.0}};
    case ePathKind::kTwoCrossings:
      return {shape.kind,
              {path.*shape.firstPoint, path.InitialDirection, -1.0},
              {path.*shape.secondPoint, path.FinalDirection, 1.0}};
    case ePathKind::kWater:
      return {shape.kind,
              {path.*shape.firstPoint, path.InitialDirection, 1.0},
              {path.*shape.secondPoint, path.InitialDirection, -1.0}};
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
    case ePathKind::kUnknown:
      break;
  }
  return {shape.kind,
          {path.StartPos, path.InitialDirection, 0.0},
          {path.EndPos, path.FinalDirection, 0.0}};
}
WaterSegments SegmentsOf(const LightPath& path, const PathShape& shape);

/// The water segments of path @p i in columns; only those that its type uses
/// are read.
WaterSegments SegmentsOf(const LightPathArrays& paths, std::size_t i);

/// Views of water segments.
inline WaterSegmentViews ViewsOf(const WaterSegments& segments) {
  return {segments.kind,
          {segments.first.point, segments.first.direction, 1.0},
          {segments.second.point, segments.second.direction, 1.0}};
}

}  // namespace ZARN::DU

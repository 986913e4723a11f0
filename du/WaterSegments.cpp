#include "du/WaterSegments.hpp"

#include <array>

namespace ZARN::DU {
namespace {

/// By eLightPathType.
const std::array<PathShape, kNumberOfLightPathTypes> kShapes = {{
    {ePathKind::kUninitialised, nullptr, nullptr},
    {ePathKind::kOneCrossing, &LightPath::AVPoint2, nullptr},
    {ePathKind::kOneCrossing, &LightPath::AVPoint3, nullptr},
    {ePathKind::kOneCrossing, &LightPath::AVPoint1, nullptr},
    {ePathKind::kTwoCrossings, &LightPath::AVPoint1, &LightPath::AVPoint4},
    {ePathKind::kTwoCrossings, &LightPath::AVPoint1, &LightPath::AVPoint2},
    {ePathKind::kWater, &LightPath::StartPos, &LightPath::EndPos},
    {ePathKind::kTwoCrossings, &LightPath::AVPoint1, &LightPath::AVPoint1},
}};
const PathShape kMisspeltShape = {ePathKind::kMisspeltUninitialised, nullptr,
                                  nullptr};
const PathShape kUnknownShape = {ePathKind::kUnknown, nullptr, nullptr};

}  // namespace

const PathShape& ShapeOfName(const std::string& name) {
  for (std::size_t type = 0; type < kShapes.size(); ++type) {
    if (name == kLightPathTypeNames[type]) return kShapes[type];
  }
  return name == "LightPath Uninitialised" ? kMisspeltShape : kUnknownShape;
}

const PathShape& ShapeOfType(eLightPathType type) {
  return type >= 0 && type < kNumberOfLightPathTypes
             ? kShapes[static_cast<std::size_t>(type)]
             : kUnknownShape;
}

WaterSegments SegmentsOf(const LightPath& path, const PathShape& shape) {
  WaterSegments segments;
  segments.kind = shape.kind;
  switch (shape.kind) {
    case ePathKind::kOneCrossing:
      segments.first = {path.*shape.firstPoint, path.FinalDirection};
      break;
    case ePathKind::kTwoCrossings:
      segments.first = {path.*shape.firstPoint, -path.InitialDirection};
      segments.second = {path.*shape.secondPoint, path.FinalDirection};
      break;
    case ePathKind::kWater:
      segments.first = {path.*shape.firstPoint, path.InitialDirection};
      segments.second = {path.*shape.secondPoint, -path.InitialDirection};
      break;
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
    case ePathKind::kUnknown:
      break;
  }
  return segments;
}

}  // namespace ZARN::DU

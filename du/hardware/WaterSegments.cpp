#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {
namespace {

constexpr PathShape kMisspeltShape = {ePathKind::kMisspeltUninitialised,
                                      nullptr, nullptr};

}  // namespace

const PathShape& ShapeOfName(const std::string& name) {
  for (int type = 0; type < kNumberOfLightPathTypes; ++type) {
    if (name == kLightPathTypeNames[static_cast<std::size_t>(type)]) {
      return ShapeOfType(static_cast<eLightPathType>(type));
    }
  }
  return name == "LightPath Uninitialised" ? kMisspeltShape : kUnknownShape;
}

WaterSegments SegmentsOf(const LightPath& path, const PathShape& shape) {
  return ViewsOf(path, shape).Copy();
}

WaterSegments SegmentsOf(const LightPathArrays& paths, std::size_t i) {
  const int type = paths.LightPathType[i];
  if (!IsKnownType(type)) return {};
  const auto& shape =
      kShapesIn<LightPathArrays, VectorArrays>[static_cast<std::size_t>(type)];
  const auto point = [&](VectorArrays LightPathArrays::*vector) {
    return (paths.*vector).At(i);
  };
  switch (shape.kind) {
    case ePathKind::kOneCrossing:
      return {shape.kind,
              {point(shape.firstPoint), paths.FinalDirection.At(i)},
              {}};
    case ePathKind::kTwoCrossings:
      return {shape.kind,
              {point(shape.firstPoint), -paths.InitialDirection.At(i)},
              {point(shape.secondPoint), paths.FinalDirection.At(i)}};
    case ePathKind::kWater:
      return {shape.kind,
              {point(shape.firstPoint), paths.InitialDirection.At(i)},
              {point(shape.secondPoint), -paths.InitialDirection.At(i)}};
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
    case ePathKind::kUnknown:
      break;
  }
  return {shape.kind, {}, {}};
}

}  // namespace ZARN::DU

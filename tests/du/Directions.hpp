#pragma once

#include <map>
#include <string>

#include "tests/du/Paths.hpp"

namespace ZARN::Testing {

/// For every type of path: which of its directions block it if all its AV
/// points are at @p point. "F": the final direction, "B": the initial one
/// reversed, "I": the initial one. Each is tried alone with @p blocked while
/// the other is @p free. A path in water runs from @p point to @p end.
template <class IsBlocked>
std::map<DU::eLightPathType, std::string> DecidingDirections(
    const TVector3& point, const TVector3& end, const TVector3& blocked,
    const TVector3& free, const IsBlocked& isBlocked) {
  std::map<DU::eLightPathType, std::string> deciding;
  for (int type = 0; type < DU::kNumberOfLightPathTypes; ++type) {
    const auto pathType = static_cast<DU::eLightPathType>(type);
    std::string& letters = deciding[pathType];
    const auto append = [&](const char* letter, const TVector3& initial,
                            const TVector3& final) {
      DU::LightPath path = AllAt(pathType, point);
      path.EndPos = end;
      path.InitialDirection = initial;
      path.FinalDirection = final;
      if (isBlocked(SegmentsOf(path))) letters += letter;
    };
    append("F", free, blocked);
    append("B", -blocked, free);
    append("I", blocked, free);
  }
  return deciding;
}

/// The result of DecidingDirections for a test that follows every water
/// segment.
inline std::map<DU::eLightPathType, std::string> EverySegment() {
  return {{DU::kUninitialised, ""},
          {DU::kInnerAVToWater, "F"},
          {DU::kAVThroughInnerAVToWater, "F"},
          {DU::kAVToWater, "F"},
          {DU::kWaterThroughInnerAV, "FB"},
          {DU::kWaterThroughAV, "FB"},
          {DU::kWater, "I"},
          {DU::kWaterReflection, "FB"}};
}

}  // namespace ZARN::Testing

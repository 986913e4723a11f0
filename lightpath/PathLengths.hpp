#pragma once

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

/// Whether the segments of a path of this type are known.
constexpr bool HasStretches(eLightPathType type) {
  return type > kUninitialised && type < kNumberOfLightPathTypes;
}

/// Length of a light path in each medium, mm, from the points that its type
/// uses; all 0 for types whose segments are not known.
PerMedium LengthsOf(const LightPath& path);

}  // namespace ZARN::DU

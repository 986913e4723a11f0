#pragma once

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

/// Whether a type says where the light of a path goes.
constexpr bool HasStretches(eLightPathType type) {
  return type > kUninitialised && type < kNumberOfLightPathTypes;
}

/// How far the light of a path travels in each medium, mm, from the points that
/// its type uses; 0 everywhere for types that say nothing of it.
PerMedium LengthsOf(const LightPath& path);

}  // namespace ZARN::DU

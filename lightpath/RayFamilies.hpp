#pragma once

#include "lightpath/SweptAngle.hpp"

namespace ZARN::DU {

/// The families of rays that can join an event to a PMT, by where they start.
namespace Families {

inline constexpr RayFamily kOutwardFromInside = {kInnerAVToWater,
                                                 eSense::kOutward};
inline constexpr RayFamily kInwardFromInside = {kInnerAVToWater,
                                                eSense::kInward};
inline constexpr RayFamily kOutwardFromWall = {kAVToWater, eSense::kOutward};
inline constexpr RayFamily kAlongWallFromWall = {kAVToWater, eSense::kInward};
inline constexpr RayFamily kInwardFromWall = {kAVThroughInnerAVToWater,
                                              eSense::kInward};
inline constexpr RayFamily kAlongWallFromWater = {kWaterThroughAV,
                                                  eSense::kInward};
inline constexpr RayFamily kInwardFromWater = {kWaterThroughInnerAV,
                                               eSense::kInward};
inline constexpr RayFamily kReflected = {kWaterReflection, eSense::kInward};

}  // namespace Families

/// Rays that go inwards through the wall and leave it without reaching the
/// inner surface.
constexpr bool StaysInWall(const RayFamily& family) {
  return family.Launch == eSense::kInward &&
         (family.Type == kAVToWater || family.Type == kWaterThroughAV);
}

}  // namespace ZARN::DU

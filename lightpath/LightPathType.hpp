#pragma once

#include <array>

namespace ZARN::DU {

/// The type of a light path: the media that it crosses, from event to PMT.
///
/// Values >= kNumberOfLightPathTypes are unknown types; they can be given a
/// name (LightPathCalculator).
enum eLightPathType : int {
  kUninitialised,            ///< not computed yet
  kInnerAVToWater,           ///< inner surface, outer surface
  kAVThroughInnerAVToWater,  ///< inner surface twice, outer surface
  kAVToWater,                ///< outer surface
  kWaterThroughInnerAV,      ///< outer, inner, inner, outer surface
  kWaterThroughAV,           ///< outer surface twice
  kWater,                    ///< no surface
  kWaterReflection,          ///< reflected at the outer surface
  kNumberOfLightPathTypes
};

/// Which light from an event to a PMT: that of CalcByPosition or of
/// CalcReflectionByPosition.
enum class eLight { kDirect, kReflected };

/// Whether a value is one of the types, and not an unknown one.
constexpr bool IsKnownType(int type) {
  return type >= 0 && type < kNumberOfLightPathTypes;
}

/// The names of the types, by their values. "Scint/InnerAV" is the inside of
/// the vessel, "AV" its acrylic wall, "Water" the water outside.
inline constexpr std::array<const char*, kNumberOfLightPathTypes>
    kLightPathTypeNames = {"Light Path Uninitialised",
                           "Scint/InnerAV->AV->Water",
                           "AV->Scint/InnerAV->AV->Water",
                           "AV->Water",
                           "Water->AV->Scint/InnerAV->AV->Water",
                           "Water->AV->Water",
                           "Water",
                           "Water->Reflection->Water"};

}  // namespace ZARN::DU

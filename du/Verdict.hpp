#pragma once

#include <cstddef>
#include <cstdint>

#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::DU {

/// The result for the light from an event to a PMT: clear, the component that
/// blocks it, or why there is no light path. The numbers are stored in files
/// and must never change.
enum class eVerdict : std::uint8_t {
  kClear = 0,
  kAVHDRope = 1,
  kSupportRope = 2,
  kBellyPlate = 3,
  kNCDAnchor = 4,
  kAVPipe = 5,
  kNeckBoss = 6,
  kTotalReflection = 7,     ///< no path: the light is totally reflected
  kPMTNotInWater = 8,       ///< no path: the PMT does not lie in the water
  kEventAtPMT = 9,          ///< no path: event and PMT are at the same place
  kPositionNotFinite = 10,  ///< no path: a coordinate is not finite
  kNoReflectedPath = 11     ///< only in rows of reflected light
};

/// The verdict for a result of FindShadowing.
constexpr eVerdict VerdictOf(eShadowingComponent component) {
  return static_cast<eVerdict>(component);
}

/// Whether there is a light path at all.
constexpr bool HasPath(eVerdict verdict) {
  return verdict < eVerdict::kTotalReflection;
}

/// Whether hardware blocks the path.
constexpr bool IsShadowed(eVerdict verdict) {
  return HasPath(verdict) && verdict != eVerdict::kClear;
}

/// The component that blocks the path; kNone if none does or there is no path.
constexpr eShadowingComponent ComponentOf(eVerdict verdict) {
  return IsShadowed(verdict) ? static_cast<eShadowingComponent>(verdict)
                             : eShadowingComponent::kNone;
}

/// "clear", the component's name, or the reason why there is no path, for
/// messages and tables.
constexpr const char* NameOf(eVerdict verdict) {
  switch (verdict) {
    case eVerdict::kClear:
      return "clear";
    case eVerdict::kTotalReflection:
      return "total reflection";
    case eVerdict::kPMTNotInWater:
      return "PMT not in the water";
    case eVerdict::kEventAtPMT:
      return "event at the PMT";
    case eVerdict::kPositionNotFinite:
      return "position not finite";
    case eVerdict::kNoReflectedPath:
      return "no reflected path";
    default:
      return NameOf(ComponentOf(verdict));
  }
}

// A component has the same number as its verdict, so no reason may use it.
static_assert(VerdictOf(eShadowingComponent::kNone) == eVerdict::kClear);
static_assert(VerdictOf(eShadowingComponent::kAVHDRope) == eVerdict::kAVHDRope);
static_assert(VerdictOf(eShadowingComponent::kSupportRope) ==
              eVerdict::kSupportRope);
static_assert(VerdictOf(eShadowingComponent::kBellyPlate) ==
              eVerdict::kBellyPlate);
static_assert(VerdictOf(eShadowingComponent::kNCDAnchor) ==
              eVerdict::kNCDAnchor);
static_assert(VerdictOf(eShadowingComponent::kAVPipe) == eVerdict::kAVPipe);
static_assert(VerdictOf(eShadowingComponent::kNeckBoss) == eVerdict::kNeckBoss);
static_assert(kNumberOfComponents <
              static_cast<std::size_t>(eVerdict::kTotalReflection));

}  // namespace ZARN::DU

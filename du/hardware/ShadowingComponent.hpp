#pragma once

#include <array>
#include <cstdint>

namespace ZARN::DU {

/// The hardware that can block a light path, in the order of testing.
enum class eShadowingComponent : std::uint8_t {
  kAVHDRope,
  kSupportRope,
  kBellyPlate,
  kNCDAnchor,
  kAVPipe,
  kNeckBoss,
  kNone  ///< the path is not blocked
};

/// All components in the order of testing: of several that block a path, the
/// first one counts.
inline constexpr std::array kShadowingComponents = {
    eShadowingComponent::kAVHDRope,   eShadowingComponent::kSupportRope,
    eShadowingComponent::kBellyPlate, eShadowingComponent::kNCDAnchor,
    eShadowingComponent::kAVPipe,     eShadowingComponent::kNeckBoss};

/// "AVHDRope", "SupportRope", ...; empty for kNone.
constexpr const char* NameOf(eShadowingComponent component) {
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return "AVHDRope";
    case eShadowingComponent::kSupportRope:
      return "SupportRope";
    case eShadowingComponent::kBellyPlate:
      return "BellyPlate";
    case eShadowingComponent::kNCDAnchor:
      return "NCDAnchor";
    case eShadowingComponent::kAVPipe:
      return "AVPipe";
    case eShadowingComponent::kNeckBoss:
      return "NeckBoss";
    case eShadowingComponent::kNone:
      break;
  }
  return "";
}

}  // namespace ZARN::DU

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace ZARN::DU {

/// The hardware that can block a light path, in the order of testing: if
/// several components block a path, the first one is reported. The numbers are
/// stored in files of verdicts (eVerdict).
enum class eShadowingComponent : std::uint8_t {
  kNone,  ///< the path is not blocked
  kAVHDRope,
  kSupportRope,
  kBellyPlate,
  kNCDAnchor,
  kAVPipe,
  kNeckBoss
};

/// The number of components.
inline constexpr std::size_t kNumberOfComponents =
    static_cast<std::size_t>(eShadowingComponent::kNeckBoss);

constexpr auto MakeShadowingComponents() {
  std::array<eShadowingComponent, kNumberOfComponents> components = {};
  for (std::size_t i = 0; i < components.size(); ++i) {
    components[i] = static_cast<eShadowingComponent>(i + 1);
  }
  return components;
}
/// All components in the order of testing.
inline constexpr auto kShadowingComponents = MakeShadowingComponents();

/// A component as a type, for code that is compiled for each component.
template <eShadowingComponent kComponent>
using ComponentConstant =
    std::integral_constant<eShadowingComponent, kComponent>;

template <class Test, std::size_t... kIndices>
[[gnu::always_inline]] inline eShadowingComponent FirstComponentOf(
    const Test& test, std::index_sequence<kIndices...> /*indices*/) {
  auto first = eShadowingComponent::kNone;
  static_cast<void>(((test(ComponentConstant<kShadowingComponents[kIndices]>())
                          ? (first = kShadowingComponents[kIndices], true)
                          : false) ||
                     ...));
  return first;
}

/// The first component, in the order of testing, that a test finds blocking;
/// kNone if it finds none. Later components are not tested.
///
/// @param test  called with the ComponentConstant of one component after the
///              other; returns a bool
template <class Test>
[[gnu::always_inline]] inline eShadowingComponent FirstComponentThat(
    const Test& test) {
  return FirstComponentOf(test,
                          std::make_index_sequence<kNumberOfComponents>());
}

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

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "du/hardware/HardwareItem.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/WaterSegments.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

/// The test of a formula that decided on one water segment, or on both
/// together, and the item that it is about.
struct ShadowingFinding {
  ShadowingTest test;
  std::optional<HardwareItem> item;
};

/// How the formula of one component judges a path.
struct ComponentExplanation {
  enum class eState : std::uint8_t {
    kOff,            ///< its tables are missing
    kNothingToTest,  ///< loaded, but without any rope, plate or anchor
    kOn
  };

  bool IsBlocking() const {
    for (const ShadowingFinding& finding : findings) {
      if (finding.test.IsBlocking()) return true;
    }
    return false;
  }

  eShadowingComponent component = eShadowingComponent::kNone;
  eState state = eState::kOff;
  /// In the order of the formula. Empty if the component is not on, and if its
  /// formula does not test paths of this kind.
  ///
  /// Of several tests on a segment the one with the smallest quantity decided:
  /// the nearest item. One that blocks goes before one that does not; of equal
  /// ones, the first.
  std::vector<ShadowingFinding> findings;
};

/// How all components judge a path.
struct ShadowingExplanation {
  LightPath path;
  /// The parts in water that the formulas use: none, one or two.
  std::vector<WaterSegment> segments;
  /// In the order of testing.
  std::array<ComponentExplanation, kNumberOfComponents> components;
  /// The first component that blocks the path: the verdict.
  eShadowingComponent by = eShadowingComponent::kNone;
};

}  // namespace ZARN::DU

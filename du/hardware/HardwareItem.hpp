#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "du/hardware/Hardware.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/ShadowingTest.hpp"

namespace ZARN::DU {

/// A piece of hardware, as its table names it.
struct HardwareItem {
  enum class ePart : std::uint8_t {
    kWhole,       ///< of a plate or an anchor
    kOverVessel,  ///< a hold-down rope over the top of the vessel
    kRingArc,     ///< an arc of the ring around the neck, listed with this rope
    kLegP1,       ///< the leg below P1 of a hold-down rope
    kLegP4,       ///< the leg below P4
    kForward,     ///< of a pair of support ropes, the one at the larger azimuth
    kBack         ///< the other one
  };

  eShadowingComponent component = eShadowingComponent::kNone;
  std::string table;         ///< "GEO_LOCATIONS"
  std::string index;         ///< of the entry in the table
  std::size_t position = 0;  ///< in the entry's list, from 0
  ePart part = ePart::kWhole;
  /// The formula tests a leg at P1 half a turn from each rope. It is named as
  /// the leg of the rope that stands there. This is true if there is none; the
  /// position is then that of the rope half a turn away.
  bool isOpposite = false;
};

/// The item of a test of the formulas; nothing if it is not about one.
///
/// @param position  ShadowingTest::position
/// @pre the test is of this hardware
std::optional<HardwareItem> ItemOf(const Hardware& hardware,
                                   eShadowingRule rule, std::size_t position);

/// "whole", "over the vessel", "arc of the ring", "leg P1", "leg P4", "forward"
/// or "back".
const char* NameOf(HardwareItem::ePart part);

/// "rope 7, leg P1", "plate 3", "anchor 41", "support ropes 2, forward", ...
std::string NameOf(const HardwareItem& item);

}  // namespace ZARN::DU

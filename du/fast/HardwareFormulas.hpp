#pragma once

#include "du/hardware/AVHDRopeShadowing.hpp"
#include "du/hardware/Hardware.hpp"

namespace ZARN::DU {

/// The formulas for one path, without messages: they decide what a filter
/// leaves open.
struct HardwareFormulas {
  /// Whether a component blocks the path.
  [[gnu::always_inline]] bool operator()(eShadowingComponent component) const {
    return hardware.IsBlockedBy(component, path.Copy(), eDiagnostics::kSilent);
  }
  /// Whether the vertical ropes of one of the two rope components block a
  /// segment.
  [[gnu::always_inline]] bool operator()(eShadowingComponent component,
                                         const SegmentView& segment) const {
    return component == eShadowingComponent::kAVHDRope
               ? IsAtVerticalAVHDRope(hardware.AVHDRopes,
                                      hardware.AVHDRopeTolerance,
                                      segment.Copy(), eDiagnostics::kSilent)
               : IsAtSupportRope(hardware.SupportRopes,
                                 hardware.SupportRopeTolerance, segment.Copy(),
                                 eDiagnostics::kSilent);
  }

  const Hardware& hardware;
  const WaterSegmentViews& path;
};

}  // namespace ZARN::DU

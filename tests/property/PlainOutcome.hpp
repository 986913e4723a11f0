#pragma once

#include <algorithm>
#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// The component that the plain calculator found to block the last path.
inline DU::eShadowingComponent BlockingOf(
    const Reference::PlainShadowingCalculator& plain) {
  using Component = DU::eShadowingComponent;
  if (plain.ShadowedByAVHDRope) return Component::kAVHDRope;
  if (plain.ShadowedBySupportRope) return Component::kSupportRope;
  if (plain.ShadowedByBellyPlate) return Component::kBellyPlate;
  if (plain.ShadowedByNCDAnchor) return Component::kNCDAnchor;
  if (plain.ShadowedByAVPipe) return Component::kAVPipe;
  if (plain.ShadowedByNeckBoss) return Component::kNeckBoss;
  return Component::kNone;
}

/// The outcome of the plain calculator as a number that depends on the
/// component and on the number of debug lines.
inline int OutcomeOf(const Reference::PlainShadowingCalculator& plain,
                     const std::string& diagnostics) {
  constexpr int kComponents = 8;
  return static_cast<int>(BlockingOf(plain)) +
         kComponents * static_cast<int>(std::count(diagnostics.begin(),
                                                   diagnostics.end(), '\n'));
}

}  // namespace ZARN::Testing

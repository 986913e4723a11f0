#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "du/hardware/Hardware.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// Tolerances, mm, both ends included.
struct ToleranceRange {
  double lowest;
  double highest;

  bool Holds(double tolerance) const {
    return lowest <= tolerance && tolerance <= highest;
  }
};

/// For each component, the smallest tolerance at which it blocks a path, mm.
///
/// At a tolerance in the component's range (MonotonicTolerances) it blocks the
/// path if and only if this number is not above the tolerance. Minus infinity:
/// at every tolerance; plus infinity: at none.
struct CriticalTolerances {
  /// In the order of testing.
  std::array<double, kNumberOfComponents> of{};

  /// @pre not kNone
  double Of(eShadowingComponent component) const {
    return of[static_cast<std::size_t>(component) - 1];
  }
  /// The component with the smallest number, so the first that blocks the path
  /// as the tolerance grows; of equal ones the first in the order of testing.
  /// kNone if none ever blocks it.
  eShadowingComponent By() const;
  /// Its number, plus infinity if there is none.
  double Smallest() const;
  /// The verdict at a tolerance that is in the range of every component.
  eShadowingComponent VerdictAt(double tolerance) const;
};

/// The range in which a component blocks more as the tolerance grows: all
/// finite tolerances; for the belly plates those at which the widened plates
/// are neither narrower than nothing nor wider than all azimuths, where angles
/// begin to shrink or to grow again. Lowest above highest: no tolerance.
ToleranceRange MonotonicTolerances(const Hardware& hardware,
                                   eShadowingComponent component);

/// What the belly plates' critical tolerances need, whatever the path.
struct BellyPlateOutlines {
  explicit BellyPlateOutlines(const Hardware& hardware);

  std::vector<BellyPlateFrame> frames;  ///< of each plate
  ToleranceRange range;                 ///< MonotonicTolerances
};

/// The smallest tolerance at which the limit of a rule is above a quantity:
/// that of a rule of the ropes or anchors, as a component tests it.
double ToleranceOfQuantity(const Hardware& hardware,
                           eShadowingComponent component, eShadowingRule rule,
                           double quantity);

/// The smallest tolerance, within its range, at which a component blocks a
/// path, mm: exactly that of its formula. Minus infinity where it blocks at the
/// lowest tolerance of the range; plus infinity where it does not at the
/// highest, for components that are off and for kNone.
///
/// Pipes and neck boss use no tolerance. For belly plates several changes may
/// be near each other, because rounding makes the angle of an edge ragged; the
/// result is one of them.
double CriticalTolerance(const Hardware& hardware,
                         eShadowingComponent component,
                         const WaterSegments& path);

/// The same from the tests of the nearest items.
double CriticalTolerance(const Hardware& hardware,
                         eShadowingComponent component,
                         const WaterSegments& path, const NearestItems& nearest,
                         const BellyPlateOutlines& outlines);

}  // namespace ZARN::DU

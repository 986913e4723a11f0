#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>

#include "TVector3.h"

namespace ZARN::DU {

/// What a formula compares with a limit.
enum class eShadowingRule : std::uint8_t {
  // These block a path. Distances in mm, angles in rad.
  kSurfacePoint,  ///< distance from a crossing to a point of a hold-down rope
  kLeg,           ///< angle to a leg of a hold-down rope, at its rope cylinder
  kSupportRope,   ///< angle to a support rope, at its rope cylinder
  kBellyPlate,    ///< angle to the centre of a plate, at the plate's height
  kNCDAnchor,     ///< distance from a crossing to an anchor
  kAVPipeBand,    ///< azimuth of a crossing, degrees
  kNeckBossCap,   ///< polar angle of a crossing
  // These leave it clear, whatever the tolerance.
  kBelowRopes,          ///< height of a crossing not above the support ropes'
                        ///< feet, mm
  kBeyondRopes,         ///< height above or below 0 at the rope cylinder, mm
  kInsideRopeCylinder,  ///< distance of the farther end from the axis, mm
  kInsideLegCylinder,   ///< of the nearer end, with the legs' cylinder, mm
  kEndsApart,           ///< angle between the azimuths of the ends, rad
  kNoLegs,              ///< no hold-down ropes; no quantity
  // And this one at this tolerance.
  kOffPlateBand,  ///< height of a crossing above or below the plates, mm
};

/// Whether a rule can only leave a path clear.
constexpr bool IsGate(eShadowingRule rule) {
  return rule >= eShadowingRule::kBelowRopes;
}

/// "surface_point", "leg", ...
constexpr const char* NameOf(eShadowingRule rule) {
  switch (rule) {
    case eShadowingRule::kSurfacePoint:
      return "surface_point";
    case eShadowingRule::kLeg:
      return "leg";
    case eShadowingRule::kSupportRope:
      return "support_rope";
    case eShadowingRule::kBellyPlate:
      return "belly_plate";
    case eShadowingRule::kNCDAnchor:
      return "ncd_anchor";
    case eShadowingRule::kAVPipeBand:
      return "av_pipe_band";
    case eShadowingRule::kNeckBossCap:
      return "neck_boss_cap";
    case eShadowingRule::kBelowRopes:
      return "below_ropes";
    case eShadowingRule::kBeyondRopes:
      return "beyond_ropes";
    case eShadowingRule::kInsideRopeCylinder:
      return "inside_rope_cylinder";
    case eShadowingRule::kInsideLegCylinder:
      return "inside_leg_cylinder";
    case eShadowingRule::kEndsApart:
      return "ends_apart";
    case eShadowingRule::kNoLegs:
      return "no_legs";
    case eShadowingRule::kOffPlateBand:
      return "off_plate_band";
  }
  return "";
}

/// The unit of a rule's quantity and limit: "mm", "rad" or "degrees"; empty if
/// it has none.
constexpr const char* UnitOf(eShadowingRule rule) {
  switch (rule) {
    case eShadowingRule::kLeg:
    case eShadowingRule::kSupportRope:
    case eShadowingRule::kBellyPlate:
    case eShadowingRule::kNeckBossCap:
    case eShadowingRule::kEndsApart:
      return "rad";
    case eShadowingRule::kAVPipeBand:
      return "degrees";
    case eShadowingRule::kNoLegs:
      return "";
    default:
      return "mm";
  }
}

/// The water segment that a rule looks at.
enum class eWaterSegment : std::uint8_t { kFirst, kSecond, kBoth };

/// One comparison of a formula. A formula is a walk over its tests in their
/// order; the verdict is the first that blocks.
struct ShadowingTest {
  eShadowingRule rule = eShadowingRule::kNoLegs;
  eWaterSegment segment = eWaterSegment::kFirst;
  double quantity = std::numeric_limits<double>::quiet_NaN();
  double limit = std::numeric_limits<double>::quiet_NaN();
  /// Position in the list that the rule tests: surface points; legs
  /// (AVHDRopeEnds); support ropes; plates; anchors.
  std::size_t position = 0;
  /// Only for kAVPipeBand, whose limits belong to the band.
  double lowerLimit = std::numeric_limits<double>::quiet_NaN();

  constexpr bool IsBlocking() const {
    if (IsGate(rule)) return false;
    if (rule == eShadowingRule::kAVPipeBand) {
      return !(lowerLimit > quantity || quantity > limit);
    }
    return limit > quantity;
  }
};

/// Walk over a list from its first item.
///
/// @param test  called with the position of each item; returns whether to stop
/// @return whether the walk was stopped
template <class Test>
[[gnu::always_inline]] inline bool WalkList(std::size_t size,
                                            const Test& test) {
  // Intentional: all lists are counted in single precision.
  for (float k = 0; static_cast<float>(size) > k; k += 1.0F) {
    if (test(static_cast<std::size_t>(k))) return true;
  }
  return false;
}

/// Stops a walk at the first test that blocks: the verdict.
struct StopAtBlocking {
  [[gnu::always_inline]] bool operator()(const ShadowingTest& test) const {
    return test.IsBlocking();
  }
  /// Walk over the items that a rule tests.
  template <class Test>
  [[gnu::always_inline]] bool WalkItems(eShadowingRule /*rule*/,
                                        const TVector3& /*point*/,
                                        std::size_t size,
                                        const Test& test) const {
    return WalkList(size, test);
  }
};

/// Is given every test of a walk.
using ShadowingTestVisitor = std::function<void(const ShadowingTest&)>;

/// Finds the items of which one decides at which tolerance a rule blocks.
class NearestItems {
 public:
  NearestItems() = default;
  NearestItems(const NearestItems&) = delete;
  NearestItems& operator=(const NearestItems&) = delete;
  virtual ~NearestItems() = default;

  /// Call @p work with the positions of items, among them one with the smallest
  /// quantity, unless none has a finite one. For kBellyPlate: all plates that
  /// may block at the smallest tolerance at which one does.
  ///
  /// @param point  from which the rule measures distances or angles; any
  virtual void ForEach(eShadowingRule rule, const TVector3& point,
                       const std::function<void(std::size_t)>& work) const = 0;
};

/// Never stops a walk.
struct VisitAll {
  bool operator()(const ShadowingTest& test) const {
    visitor(test);
    return false;
  }
  template <class Test>
  bool WalkItems(eShadowingRule rule, const TVector3& point, std::size_t size,
                 const Test& test) const {
    if (nearest == nullptr) return WalkList(size, test);
    nearest->ForEach(rule, point, [&test](std::size_t i) { test(i); });
    return false;
  }
  const ShadowingTestVisitor& visitor;
  const NearestItems* nearest;  ///< null: all items of each list
};

}  // namespace ZARN::DU

#pragma once

#include <algorithm>
#include <optional>

#include "du/fast/PreparedBellyPlates.hpp"
#include "du/fast/ShadowMap.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "du/fast/VerticalRopeFilter.hpp"
#include "du/geometry/PointTree.hpp"
#include "du/hardware/AVPipes.hpp"
#include "du/hardware/Hardware.hpp"
#include "du/hardware/NeckBoss.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/WaterSegments.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

/// Everything precomputed for one geometry and one set of tolerances, and the
/// verdict on a path from it.
///
/// For each component, the cheapest test comes first:
///
/// - the shadow map decides for most crossing points on the vessel sphere;
/// - if the map is unsure, only the few surface points, anchors or plates that
///   can block in its cell are tested; for crossing points outside the map all
///   of them, by trees and one by one; pipes and neck boss are tested by their
///   formula;
/// - algebra and azimuth tables decide for the vertical ropes; the few paths
///   that they leave open go to the formula of the component.
///
/// Holds no reference to what it was built from. Once built it never allocates,
/// locks or writes, so it is thread-safe.
class ShadowingFilter {
 public:
  /// What is known about a segment that no vertical hold-down rope blocks.
  struct KnownRopes {
    bool isAboveEnds;      ///< and so may meet the ropes on the sphere
    bool isAtSupportRope;  ///< one of them blocks it
    bool isFirst;          ///< of its path: tested against the pipes
  };

  /// @param hardware  its current models, flags, tolerances and radii are used
  ShadowingFilter(const Hardware& hardware, const ShadowingLayers& layers);

  /// The first component that blocks a path.
  ///
  /// @param path  crosses the vessel or is wholly in water
  /// @param isBlockedBy  the formulas of the components: called with an
  ///        eShadowingComponent for the whole path, and with a SegmentView
  ///        after it for one segment; both return a bool
  template <class Formula>
  [[gnu::always_inline]] eShadowingComponent Find(
      const WaterSegmentViews& path, const Formula& isBlockedBy) const {
    switch (path.kind) {
      case ePathKind::kWater:
        return FindInWaterBy(path.first, path.second, isBlockedBy);
      case ePathKind::kTwoCrossings:
        return FindAmong(isBlockedBy, AtVessel(path.first),
                         AtVessel(path.second));
      default:
        return FindAmong(isBlockedBy, AtVessel(path.first));
    }
  }

  /// The component that blocks a segment for which the answers of the vertical
  /// ropes are known, so that only its crossing point is tested.
  ///
  /// @param cell  of the map, not OffMap(); found in single or double precision
  /// @param ropes  what is known besides the point
  eShadowingComponent FindAtCrossing(const TVector3& point, std::size_t cell,
                                     const KnownRopes& ropes) const;

  /// The same for a crossing point that is only known within a bound; nothing
  /// if that is not enough.
  ///
  /// @param error  of the point, mm
  std::optional<eShadowingComponent> FindAtCrossing(
      const TVector3& point, double error, std::size_t cell,
      const KnownRopes& ropes) const;

  /// The component that blocks a path through the vessel that is only known
  /// within BoundedBands; nothing if that is not enough.
  ///
  /// @param error  of its crossing points, mm
  std::optional<eShadowingComponent> FindBounded(const WaterSegmentViews& path,
                                                 double error) const;

  /// The component that blocks a path wholly in water; nothing if a formula has
  /// to decide.
  std::optional<eShadowingComponent> FindInWater(
      const SegmentView& first, const SegmentView& second) const;

  // The layers, for batches and tests.
  const ShadowMap& Map() const { return map_; }
  const VerticalRopeFilter& HoldDownRopes() const { return holdDown_; }
  const VerticalRopeFilter& SupportRopes() const { return support_; }
  /// The hold-down ropes as the support ropes' test uses them, with its own
  /// height and tolerance: where a path enters their cylinder, and, in space,
  /// where it leaves.
  const VerticalRopeFilter& EnteredHoldDownRopes() const { return entered_; }
  const VerticalRopeFilter& LeftHoldDownRopes() const { return left_; }
  const PointTree& SurfacePoints() const { return surface_; }
  const PointTree& Anchors() const { return anchors_; }
  const PreparedBellyPlates& BellyPlates() const { return plates_; }

  bool HasHoldDownRopes() const { return hasHoldDown_; }
  bool HasSupportRopes() const { return hasSupport_; }
  /// Whether the support ropes' test has hold-down ropes to test.
  bool HasRopesToEnter() const { return hasEntered_; }
  /// Crossings below this height are tested against vertical hold-down ropes,
  /// others against the surface points, mm.
  double HoldDownEndHeight() const { return holdDownEndHeight_; }
  /// Crossings above this height are tested against support ropes, mm.
  double SupportFootHeight() const { return supportFootHeight_; }

  // The answers of the water tests; unsure if a formula has to decide.
  eAnswer JudgeHoldDownInWater(const SegmentView& first,
                               const SegmentView& second) const;
  eAnswer JudgeSupportInWater(const SegmentView& first,
                              const SegmentView& second) const;

 private:
  using eComponent = eShadowingComponent;

  template <class Formula>
  eComponent FindInWaterBy(const SegmentView& first, const SegmentView& second,
                           const Formula& isBlockedBy) const {
    if (hasHoldDown_ && IsBlocking(JudgeHoldDownInWater(first, second), [&] {
          return isBlockedBy(eComponent::kAVHDRope);
        })) {
      return eComponent::kAVHDRope;
    }
    if (hasSupport_ && IsBlocking(JudgeSupportInWater(first, second), [&] {
          return isBlockedBy(eComponent::kSupportRope);
        })) {
      return eComponent::kSupportRope;
    }
    return eComponent::kNone;
  }

  /// Where a path crosses the vessel.
  struct Crossing {
    const TVector3& point;
    std::size_t cell;  // of the map
    ShadowMap::Code code;
  };
  struct CrossingSegment {
    const SegmentView& segment;
    Crossing at;
  };

  [[gnu::always_inline]] CrossingSegment AtVessel(
      const SegmentView& segment) const {
    const std::size_t cell = map_.CellAt(segment.point);
    return {segment, {segment.point, cell, map_.At(cell)}};
  }

  // Inlined, so that the segments' views stay in registers.
  template <class Formula, class... Segments>
  [[gnu::always_inline]] eComponent FindAmong(const Formula& isBlockedBy,
                                              const CrossingSegment& first,
                                              const Segments&... later) const {
    return FirstComponentThat([&](
        auto component) __attribute__((always_inline)) {
      if (IsBlocked(component, first, isBlockedBy)) return true;
      // The pipes are tested only at the first crossing of a path.
      return component != eComponent::kAVPipe &&
             (IsBlocked(component, later, isBlockedBy) || ...);
    });
  }

  // Whether a component blocks a segment. The tests of the ropes use its
  // direction, the others only its crossing point.
  template <class Formula>
  [[gnu::always_inline]] bool IsBlocked(
      ComponentConstant<eComponent::kAVHDRope> /*component*/,
      const CrossingSegment& tested, const Formula& isBlockedBy) const {
    if (!hasHoldDown_) return false;
    const SegmentView& segment = tested.segment;
    if (!(holdDownEndHeight_ > segment.point.Z())) {
      return IsOnSurfaceRope(tested.at);
    }
    return IsBlocking(holdDown_.JudgeFlattened(segment), [&] {
      return isBlockedBy(eComponent::kAVHDRope, segment);
    });
  }
  template <class Formula>
  [[gnu::always_inline]] bool IsBlocked(
      ComponentConstant<eComponent::kSupportRope> /*component*/,
      const CrossingSegment& tested, const Formula& isBlockedBy) const {
    const SegmentView& segment = tested.segment;
    return hasSupport_ && segment.point.Z() > supportFootHeight_ &&
           IsBlocking(support_.JudgeFlattened(segment), [&] {
             return isBlockedBy(eComponent::kSupportRope, segment);
           });
  }
  template <class Component, class Formula>
  [[gnu::always_inline]] bool IsBlocked(Component component,
                                        const CrossingSegment& tested,
                                        const Formula& /*isBlockedBy*/) const {
    return IsBlockedAt(component, tested.at);
  }

  // The tests of a crossing point: the map; if it is unsure, the items of the
  // cell; outside the map, all items.
  template <class BySome, class ByAll>
  bool AskItems(const Crossing& at, eMappedTest test, const BySome& bySome,
                const ByAll& byAll) const {
    if (at.cell == map_.OffMap()) return byAll();
    const CellItems::View some = map_.Open(test).Of(at.cell);
    return some.IsEmpty() ? byAll()
                          : std::any_of(some.begin(), some.end(), bySome);
  }
  [[gnu::always_inline]] bool IsOnSurfaceRope(const Crossing& at) const {
    return IsNear(surface_, eMappedTest::kHoldDownSurface, at);
  }
  [[gnu::always_inline]] bool IsNear(const PointTree& points, eMappedTest test,
                                     const Crossing& at) const {
    return IsBlocking(ShadowMap::AnswerOf(at.code, test),
                      [&] { return IsNearByItems(points, test, at); });
  }
  bool IsNearByItems(const PointTree& points, eMappedTest test,
                     const Crossing& at) const {
    return AskItems(
        at, test,
        [&](Stretch some) { return points.HasPointNear(at.point, some); },
        [&] { return points.HasPointNear(at.point); });
  }
  [[gnu::always_inline]] bool IsBlockedAt(
      ComponentConstant<eComponent::kBellyPlate> /*component*/,
      const Crossing& at) const {
    return IsBlocking(ShadowMap::AnswerOf(at.code, eMappedTest::kBellyPlate),
                      [&] { return IsOnPlateByItems(at); });
  }
  bool IsOnPlateByItems(const Crossing& at) const {
    return AskItems(
        at, eMappedTest::kBellyPlate,
        [&](Stretch some) { return plates_.HasPlateAt(at.point, some); },
        [&] { return plates_.HasPlateAt(at.point); });
  }
  [[gnu::always_inline]] bool IsBlockedAt(
      ComponentConstant<eComponent::kNCDAnchor> /*component*/,
      const Crossing& at) const {
    return IsNear(anchors_, eMappedTest::kNCDAnchor, at);
  }
  [[gnu::always_inline]] bool IsBlockedAt(
      ComponentConstant<eComponent::kAVPipe> /*component*/,
      const Crossing& at) const {
    return IsBlocking(ShadowMap::AnswerOf(at.code, eMappedTest::kAVPipe), [&] {
      return hasPipes_ && IsWithinAVPipeBands(at.point);
    });
  }
  [[gnu::always_inline]] bool IsBlockedAt(
      ComponentConstant<eComponent::kNeckBoss> /*component*/,
      const Crossing& at) const {
    return IsBlocking(
        ShadowMap::AnswerOf(at.code, eMappedTest::kNeckBoss),
        [&] { return hasNeckBoss_ && IsUnderNeckBoss(neckBoss_, at.point); });
  }

  // The answers for a segment, or its crossing point, that is known within a
  // bound.
  struct BoundedPoint {
    const TVector3& point;
    double error;  // mm
    std::size_t cell;
  };
  struct BoundedSegment {
    const SegmentView& segment;
    BoundedPoint at;
    bool isFirst;
  };
  eAnswer JudgeBounded(eComponent component,
                       const BoundedSegment& tested) const;
  eAnswer JudgeAtPoint(eComponent component, const BoundedPoint& at,
                       bool isFirst) const;
  eAnswer JudgeItems(eMappedTest test, const BoundedPoint& at) const;

  bool hasHoldDown_ = false;
  bool hasSupport_ = false;
  bool hasEntered_ = false;
  bool hasPipes_ = false;
  bool hasNeckBoss_ = false;
  double holdDownEndHeight_ = 0.0;
  double supportFootHeight_ = 0.0;
  VerticalRopeFilter holdDown_;
  VerticalRopeFilter support_;
  VerticalRopeFilter entered_;
  VerticalRopeFilter left_;
  PointTree surface_;
  PointTree anchors_;
  PreparedBellyPlates plates_;
  NeckBossModel neckBoss_;
  ShadowMap map_;
};

}  // namespace ZARN::DU

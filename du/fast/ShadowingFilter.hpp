#pragma once

#include "du/hardware/AVPipes.hpp"
#include "du/fast/PreparedBellyPlates.hpp"
#include "du/hardware/NeckBoss.hpp"
#include "du/fast/ShadowMap.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "du/fast/VerticalRopeFilter.hpp"
#include "du/hardware/WaterSegments.hpp"
#include "du/geometry/PointGrid.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

class ShadowingCalculator;

/// All that is prepared for one geometry and one set of tolerances, and the
/// verdict on a path from it.
///
/// Per component, from the cheapest to the dearest:
///
/// - the shadow map answers for crossing points on the vessel sphere;
/// - where the map is unsure, the few surface points, anchors or plates are
///   asked that can block in the cell; for other crossing points grids and all
///   plates; pipes and neck boss by their formula;
/// - algebra and azimuth tables answer for the vertical ropes; the few paths
///   that they leave open go to the formula of the whole component.
///
/// Holds no reference to what it was made from. Nothing here allocates, locks
/// or writes once it is made; several threads may ask.
class ShadowingFilter {
 public:
  /// What is known of a segment that no vertical hold-down rope blocks.
  struct KnownRopes {
    bool isAboveEnds;      ///< and so may meet the ropes' stretch on the sphere
    bool isAtSupportRope;  ///< one of them blocks it
    bool isFirst;          ///< of its path: the pipes count
  };

  /// @param calculator  whose models, flags, tolerances and radii are taken as
  ///                    they stand
  ShadowingFilter(const ShadowingCalculator& calculator,
                  const ShadowingLayers& layers);

  /// The first component that blocks a path.
  ///
  /// @param path  that crosses the vessel or is wholly in water
  /// @param isBlockedBy  the components' formulas: of the whole path, called
  ///        with an eShadowingComponent, and of a segment, called with a
  ///        SegmentView beside it; both give a bool
  template <class Formula>
  [[gnu::always_inline]] eShadowingComponent Find(
      const WaterSegmentViews& path, const Formula& isBlockedBy) const {
    switch (path.kind) {
      case ePathKind::kWater:
        return FindInWater(path.first, path.second, isBlockedBy);
      case ePathKind::kTwoCrossings:
        return FindAmong<2>({&path.first, &path.second}, isBlockedBy);
      default:
        return FindAmong<1>({&path.first}, isBlockedBy);
    }
  }

  /// The component that blocks a segment of which it is known what the vertical
  /// ropes do, so that only its crossing point counts.
  ///
  /// @param cell  of the map, not off it; found in single precision or double
  /// @param ropes  what else than the point counts
  eShadowingComponent FindAtCrossing(const TVector3& point, std::size_t cell,
                                     const KnownRopes& ropes) const;

  // The layers, for batches and tests.
  const ShadowMap& Map() const { return map_; }
  const VerticalRopeFilter& HoldDownRopes() const { return holdDown_; }
  const VerticalRopeFilter& SupportRopes() const { return support_; }
  /// The hold-down ropes as the support ropes' test sees them: with its own
  /// height and tolerance, where a path enters and, in space, where it leaves.
  const VerticalRopeFilter& EnteredHoldDownRopes() const { return entered_; }
  const VerticalRopeFilter& LeftHoldDownRopes() const { return left_; }
  const PointGrid& SurfacePoints() const { return surface_; }
  const PointGrid& Anchors() const { return anchors_; }
  const PreparedBellyPlates& BellyPlates() const { return plates_; }

  bool HasHoldDownRopes() const { return hasHoldDown_; }
  bool HasSupportRopes() const { return hasSupport_; }
  /// Whether the vector library warns of the belly plates' formula.
  bool HasWarningPlates() const { return hasWarningPlates_; }
  /// Whether the support ropes' test has hold-down ropes to look at.
  bool HasRopesToEnter() const { return hasEntered_; }
  /// Crossings below it meet vertical hold-down ropes, others the surface, mm.
  double HoldDownEndHeight() const { return holdDownEndHeight_; }
  /// Crossings above it meet support ropes, mm.
  double SupportFootHeight() const { return supportFootHeight_; }

  // What the water tests find; unsure where a formula has to be asked.
  eAnswer JudgeHoldDownInWater(const SegmentView& first,
                               const SegmentView& second) const;
  eAnswer JudgeSupportInWater(const SegmentView& first,
                              const SegmentView& second) const;

 private:
  using eComponent = eShadowingComponent;

  template <class Formula>
  eComponent FindInWater(const SegmentView& first, const SegmentView& second,
                         const Formula& isBlockedBy) const {
    if (hasHoldDown_ && Blocks(JudgeHoldDownInWater(first, second), [&] {
          return isBlockedBy(eComponent::kAVHDRope);
        })) {
      return eComponent::kAVHDRope;
    }
    if (hasSupport_ && Blocks(JudgeSupportInWater(first, second), [&] {
          return isBlockedBy(eComponent::kSupportRope);
        })) {
      return eComponent::kSupportRope;
    }
    return eComponent::kNone;
  }

  // Inlined, so that the segments' views stay in registers.
  template <std::size_t N, class Formula>
  [[gnu::always_inline]] eComponent FindAmong(
      const std::array<const SegmentView*, N>& segments,
      const Formula& isBlockedBy) const {
    std::array<Crossing, N> crossings;
    for (std::size_t i = 0; i < N; ++i) {
      const std::size_t cell = map_.CellAt(segments[i]->point);
      crossings[i] = {&segments[i]->point, cell, map_.At(cell)};
    }
    const auto any = [&](const auto& blocks) {
      for (std::size_t i = 0; i < N; ++i) {
        if (blocks(*segments[i], crossings[i])) return true;
      }
      return false;
    };

    if (hasHoldDown_ && any([&](const SegmentView& s, const Crossing& at) {
          if (holdDownEndHeight_ > s.point.Z()) {
            return Blocks(holdDown_.JudgeFlattened(s), [&] {
              return isBlockedBy(eComponent::kAVHDRope, s);
            });
          }
          return IsOnSurfaceRope(at);
        })) {
      return eComponent::kAVHDRope;
    }
    if (hasSupport_ && any([&](const SegmentView& s, const Crossing&) {
          return s.point.Z() > supportFootHeight_ &&
                 Blocks(support_.JudgeFlattened(s), [&] {
                   return isBlockedBy(eComponent::kSupportRope, s);
                 });
        })) {
      return eComponent::kSupportRope;
    }
    if (any([&](const SegmentView&, const Crossing& at) {
          return IsOnPlate(at);
        })) {
      return eComponent::kBellyPlate;
    }
    if (any([&](const SegmentView&, const Crossing& at) {
          return IsNearAnchor(at);
        })) {
      return eComponent::kNCDAnchor;
    }
    if (IsAtPipes(crossings[0])) return eComponent::kAVPipe;
    if (any([&](const SegmentView&, const Crossing& at) {
          return IsUnderBoss(at);
        })) {
      return eComponent::kNeckBoss;
    }
    return eComponent::kNone;
  }

  // The tests of a crossing point: the map, where it is unsure the items of the
  // cell, and off the map all.
  struct Crossing {
    const TVector3* point;
    std::size_t cell;  // of the map
    ShadowMap::Code code;
  };
  template <class ByItems, class ByAll>
  [[gnu::always_inline]] bool IsBlockedAt(const Crossing& at, eMappedTest test,
                                          const ByItems& byItems,
                                          const ByAll& byAll) const {
    return Blocks(ShadowMap::AnswerOf(at.code, test), [&] {
      if (at.cell == map_.OffMap()) return byAll();
      const CellItems::Range range = map_.Open(test).Of(at.cell);
      return range.begin == range.end ? byAll() : byItems(range);
    });
  }
  bool IsOnSurfaceRope(const Crossing& at) const {
    return IsBlockedAt(
        at, eMappedTest::kHoldDownSurface,
        [&](CellItems::Range range) {
          return surfaceOfCells_.HasNear(*at.point, range.begin, range.end);
        },
        [&] { return surface_.HasPointNear(*at.point); });
  }
  bool IsOnPlate(const Crossing& at) const {
    constexpr auto kTest = eMappedTest::kBellyPlate;
    return IsBlockedAt(
        at, kTest,
        [&](CellItems::Range range) {
          return plates_.Block(*at.point, map_.Open(kTest), range);
        },
        [&] { return plates_.Block(*at.point); });
  }
  bool IsNearAnchor(const Crossing& at) const {
    return IsBlockedAt(
        at, eMappedTest::kNCDAnchor,
        [&](CellItems::Range range) {
          return anchorsOfCells_.HasNear(*at.point, range.begin, range.end);
        },
        [&] { return anchors_.HasPointNear(*at.point); });
  }
  bool IsAtPipes(const Crossing& at) const {
    return Blocks(ShadowMap::AnswerOf(at.code, eMappedTest::kAVPipe),
                  [&] { return hasPipes_ && IsWithinAVPipeBands(*at.point); });
  }
  bool IsUnderBoss(const Crossing& at) const {
    return Blocks(ShadowMap::AnswerOf(at.code, eMappedTest::kNeckBoss), [&] {
      return hasNeckBoss_ && IsUnderNeckBoss(neckBoss_, *at.point);
    });
  }

  bool hasHoldDown_ = false;
  bool hasSupport_ = false;
  bool hasEntered_ = false;
  bool hasWarningPlates_ = false;
  bool hasPipes_ = false;
  bool hasNeckBoss_ = false;
  double holdDownEndHeight_ = 0.0;
  double supportFootHeight_ = 0.0;
  VerticalRopeFilter holdDown_;
  VerticalRopeFilter support_;
  VerticalRopeFilter entered_;
  VerticalRopeFilter left_;
  PointGrid surface_;
  PointList surfaceOfCells_;  // of the map, as it lists them
  PointGrid anchors_;
  PointList anchorsOfCells_;
  PreparedBellyPlates plates_;
  NeckBossModel neckBoss_;
  ShadowMap map_;
};

}  // namespace ZARN::DU

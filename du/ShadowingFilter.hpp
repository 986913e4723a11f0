#pragma once

#include "du/AVPipes.hpp"
#include "du/BellyPlates.hpp"
#include "du/NeckBoss.hpp"
#include "du/ShadowMap.hpp"
#include "du/ShadowingComponent.hpp"
#include "du/ShadowingLayers.hpp"
#include "du/VerticalRopeFilter.hpp"
#include "du/WaterSegments.hpp"
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
/// - grids and prepared plates answer exactly for other crossing points and
///   where the map is unsure; pipes and neck boss by their formula;
/// - algebra and azimuth tables answer for the vertical ropes; the few paths
///   that they leave open go to the formula of the whole component.
///
/// Holds no reference to what it was made from. Nothing here allocates, locks
/// or writes once it is made; several threads may ask.
class ShadowingFilter {
 public:
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
    std::array<ShadowMap::Code, N> codes;
    for (std::size_t i = 0; i < N; ++i) codes[i] = map_.At(segments[i]->point);
    const auto any = [&](const auto& blocks) {
      for (std::size_t i = 0; i < N; ++i) {
        if (blocks(*segments[i], codes[i])) return true;
      }
      return false;
    };
    const auto answer = [](ShadowMap::Code code, eMappedTest test) {
      return ShadowMap::AnswerOf(code, test);
    };

    if (hasHoldDown_ && any([&](const SegmentView& s, ShadowMap::Code code) {
          if (holdDownEndHeight_ > s.point.Z()) {
            return Blocks(holdDown_.JudgeFlattened(s), [&] {
              return isBlockedBy(eComponent::kAVHDRope, s);
            });
          }
          return Blocks(answer(code, eMappedTest::kHoldDownSurface),
                        [&] { return surface_.HasPointNear(s.point); });
        })) {
      return eComponent::kAVHDRope;
    }
    if (hasSupport_ && any([&](const SegmentView& s, ShadowMap::Code) {
          return s.point.Z() > supportFootHeight_ &&
                 Blocks(support_.JudgeFlattened(s), [&] {
                   return isBlockedBy(eComponent::kSupportRope, s);
                 });
        })) {
      return eComponent::kSupportRope;
    }
    if (any([&](const SegmentView& s, ShadowMap::Code code) {
          return Blocks(answer(code, eMappedTest::kBellyPlate),
                        [&] { return plates_.Block(s.point); });
        })) {
      return eComponent::kBellyPlate;
    }
    if (any([&](const SegmentView& s, ShadowMap::Code code) {
          return Blocks(answer(code, eMappedTest::kNCDAnchor),
                        [&] { return anchors_.HasPointNear(s.point); });
        })) {
      return eComponent::kNCDAnchor;
    }
    if (Blocks(answer(codes[0], eMappedTest::kAVPipe), [&] {
          return hasPipes_ && IsWithinAVPipeBands(segments[0]->point);
        })) {
      return eComponent::kAVPipe;
    }
    if (any([&](const SegmentView& s, ShadowMap::Code code) {
          return Blocks(answer(code, eMappedTest::kNeckBoss), [&] {
            return hasNeckBoss_ && IsUnderNeckBoss(neckBoss_, s.point);
          });
        })) {
      return eComponent::kNeckBoss;
    }
    return eComponent::kNone;
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
  PointGrid anchors_;
  PreparedBellyPlates plates_;
  NeckBossModel neckBoss_;
  ShadowMap map_;
};

}  // namespace ZARN::DU

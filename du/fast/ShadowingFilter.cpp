#include "du/fast/ShadowingFilter.hpp"

#include <cmath>
#include <optional>

#include "du/fast/AVPipeBands.hpp"
#include "du/fast/NeckBossCap.hpp"
#include "du/geometry/CylinderSide.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {
namespace {

using eCrossings = RopeDirections::eCrossings;
using eComponent = eShadowingComponent;

/// The number of azimuth cells: large enough that few contain an edge of a
/// rope's shadow, small enough that all tables fit into the level 2 cache.
constexpr int kAzimuthCells = 16384;

enum class eSide { kInside, kUnsure, kOutside };

eSide SideOf(double distance2, double radius2) {
  if (IsInside(distance2, radius2)) return eSide::kInside;
  return IsOutside(distance2, radius2) ? eSide::kOutside : eSide::kUnsure;
}

/// The ends of a path in water, seen from above.
class EndsFromAbove {
 public:
  EndsFromAbove(const TVector3& start, const TVector3& end)
      : start2_(start.X() * start.X() + start.Y() * start.Y()),
        end2_(end.X() * end.X() + end.Y() * end.Y()),
        product_(start.X() * end.X() + start.Y() * end.Y()) {}

  eSide Start(double radius2) const { return SideOf(start2_, radius2); }
  eSide End(double radius2) const { return SideOf(end2_, radius2); }
  eAnswer Pass(double radius2) const {
    const auto passage = PassageOf(start2_, end2_, product_, radius2);
    return AnswerOf(IsMeeting(passage), IsPassingBeside(passage));
  }

 private:
  double start2_;
  double end2_;
  double product_;
};

/// The first component for which @p judge(component) gives kBlocks; nothing if
/// the answer of an earlier one is unsure.
template <class Judge>
std::optional<eComponent> FirstUnlessUnsure(const Judge& judge) {
  for (const eComponent component : kShadowingComponents) {
    const eAnswer answer = judge(component);
    if (answer == eAnswer::kUnsure) return std::nullopt;
    if (answer == eAnswer::kBlocks) return component;
  }
  return eComponent::kNone;
}

/// The answer of ropes on a cylinder for a path in water that starts or ends
/// inside it, or possibly does; none for one that surely does neither.
std::optional<eAnswer> JudgeFromInside(const VerticalRopeFilter& ropes,
                                       const EndsFromAbove& ends,
                                       const SegmentView& first,
                                       const SegmentView& second) {
  const eSide start = ends.Start(ropes.Radius2());
  const eSide end = ends.End(ropes.Radius2());
  if (start == eSide::kUnsure || end == eSide::kUnsure) return eAnswer::kUnsure;
  if (start == eSide::kInside) {
    return end == eSide::kInside ? eAnswer::kClear
                                 : ropes.JudgeFlattened(first);
  }
  if (end == eSide::kInside) return ropes.JudgeFlattened(second);
  return std::nullopt;
}

/// The answer of ropes for a path in water that starts and ends outside their
/// cylinder: where it enters, and by @p judgeLeaving() where it leaves.
template <class JudgeLeaving>
eAnswer JudgeThrough(const VerticalRopeFilter& ropes, const EndsFromAbove& ends,
                     const SegmentView& first,
                     const JudgeLeaving& judgeLeaving) {
  const eAnswer passing = ends.Pass(ropes.Radius2());
  if (passing != eAnswer::kBlocks) return passing;
  const eAnswer entering = ropes.JudgeFlattened(first);
  if (entering == eAnswer::kBlocks) return entering;
  return Either(entering, judgeLeaving());
}

}  // namespace

ShadowingFilter::ShadowingFilter(const Hardware& hardware,
                                 const ShadowingLayers& layers) {
  const auto isOn = [&](eComponent component) {
    return hardware.IsReady(component);
  };
  const int cells = layers.tables ? kAzimuthCells : 1;
  const auto filter = [&](RopeCylinderLimits limits,
                          const std::vector<TVector3>& ropes, double tolerance,
                          eCrossings crossings) {
    if (!layers.algebra) limits.radius = 0.0;
    return VerticalRopeFilter(
        limits, RopeDirections(ropes, tolerance, crossings, cells));
  };
  ShadowMap::Tests tests = {};
  const auto test = [&](eMappedTest mapped) -> const BoxTest*& {
    return tests[static_cast<std::size_t>(mapped)];
  };

  const AVHDRopeModel& holdDown = hardware.AVHDRopes;
  hasHoldDown_ = isOn(eComponent::kAVHDRope);
  if (hasHoldDown_) {
    const double tolerance = hardware.AVHDRopeTolerance;
    holdDownEndHeight_ = holdDown.AVHDRopeEndPoints.front().Z();
    holdDown_ = filter(LimitsOfAVHDRopes(holdDown), AVHDRopeEnds(holdDown),
                       AVHDRopeAngleTolerance(holdDown, tolerance),
                       eCrossings::kFlattened);
    surface_ = PointTree(holdDown.AVHDRopeSurfacePoints,
                         holdDown.AVHDRopeRadius + tolerance);
    test(eMappedTest::kHoldDownSurface) = &surface_;
  }

  const SupportRopeModel& support = hardware.SupportRopes;
  hasSupport_ = isOn(eComponent::kSupportRope);
  if (hasSupport_) {
    const double tolerance =
        SupportRopeAngleTolerance(support, hardware.SupportRopeTolerance);
    supportFootHeight_ = support.SupportRopePositions.front().Z();
    support_ =
        filter(LimitsOfSupportRopes(support), support.SupportRopePositions,
               tolerance, eCrossings::kFlattened);
    hasEntered_ = HasAVHDRopes(holdDown);
    if (hasEntered_) {
      const RopeCylinderLimits limits = {LimitsOfAVHDRopes(holdDown).radius,
                                         SupportRopeTopDistance(support)};
      const auto ends = AVHDRopeEnds(holdDown);
      entered_ = filter(limits, ends, tolerance, eCrossings::kFlattened);
      left_ = filter(limits, ends, tolerance, eCrossings::kInSpace);
    }
  }

  if (isOn(eComponent::kBellyPlate)) {
    plates_ =
        PreparedBellyPlates(hardware.BellyPlates, hardware.BellyPlateTolerance,
                            hardware.OuterAVRadius);
    test(eMappedTest::kBellyPlate) = &plates_;
  }
  if (isOn(eComponent::kNCDAnchor)) {
    const NCDAnchorModel& anchors = hardware.NCDAnchors;
    anchors_ = PointTree(anchors.NCDAnchorPositions,
                         anchors.NCDAnchorHalfZ + hardware.NCDAnchorTolerance);
    test(eMappedTest::kNCDAnchor) = &anchors_;
  }
  const AVPipeBands pipes;
  hasPipes_ = isOn(eComponent::kAVPipe);
  if (hasPipes_) test(eMappedTest::kAVPipe) = &pipes;
  neckBoss_ = hardware.NeckBoss;
  const NeckBossCap neckBoss(neckBoss_);
  hasNeckBoss_ = isOn(eComponent::kNeckBoss);
  if (hasNeckBoss_) test(eMappedTest::kNeckBoss) = &neckBoss;

  if (!layers.map) return;
  const double radius = hardware.OuterAVRadius;
  map_ = ShadowMap(radius, tests);
}

eComponent ShadowingFilter::FindAtCrossing(const TVector3& point,
                                           std::size_t cell,
                                           const KnownRopes& ropes) const {
  ZARN_ASSERT(cell < map_.OffMap(), cell, map_.OffMap());
  const Crossing at = {point, cell, map_.At(cell)};
  return FirstComponentThat([&](auto component) {
    if constexpr (component == eComponent::kAVHDRope) {
      return ropes.isAboveEnds && IsOnSurfaceRope(at);
    } else if constexpr (component == eComponent::kSupportRope) {
      return ropes.isAtSupportRope;
    } else if constexpr (component == eComponent::kAVPipe) {
      return ropes.isFirst && IsBlockedAt(component, at);
    } else {
      return IsBlockedAt(component, at);
    }
  });
}

std::optional<eComponent> ShadowingFilter::FindAtCrossing(
    const TVector3& point, double error, std::size_t cell,
    const KnownRopes& ropes) const {
  const BoundedPoint at = {point, error, cell};
  return FirstUnlessUnsure([&](eComponent component) {
    switch (component) {
      case eComponent::kAVHDRope:
        return ropes.isAboveEnds ? JudgeItems(eMappedTest::kHoldDownSurface, at)
                                 : eAnswer::kClear;
      case eComponent::kSupportRope:
        return ropes.isAtSupportRope ? eAnswer::kBlocks : eAnswer::kClear;
      default:
        return JudgeAtPoint(component, at, ropes.isFirst);
    }
  });
}

std::optional<eComponent> ShadowingFilter::FindBounded(
    const WaterSegmentViews& path, double error) const {
  const auto segment = [&](const SegmentView& view, bool isFirst) {
    return BoundedSegment{
        view, {view.point, error, map_.CellAt(view.point)}, isFirst};
  };
  const BoundedSegment first = segment(path.first, true);
  const BoundedSegment second = segment(path.second, false);
  const bool areTwo = path.kind == ePathKind::kTwoCrossings;
  return FirstUnlessUnsure([&](eComponent component) {
    const eAnswer answer = JudgeBounded(component, first);
    return areTwo ? Either(answer, JudgeBounded(component, second)) : answer;
  });
}

eAnswer ShadowingFilter::JudgeBounded(eComponent component,
                                      const BoundedSegment& tested) const {
  const double z = tested.segment.point.Z();
  const auto isUnsureAbove = [&](double height) {
    return std::abs(z - height) <= tested.at.error;
  };
  switch (component) {
    case eComponent::kAVHDRope:
      if (!hasHoldDown_) return eAnswer::kClear;
      if (isUnsureAbove(holdDownEndHeight_)) return eAnswer::kUnsure;
      return holdDownEndHeight_ > z
                 ? holdDown_.JudgeBounded(tested.segment)
                 : JudgeItems(eMappedTest::kHoldDownSurface, tested.at);
    case eComponent::kSupportRope:
      if (!hasSupport_) return eAnswer::kClear;
      if (isUnsureAbove(supportFootHeight_)) return eAnswer::kUnsure;
      return z > supportFootHeight_ ? support_.JudgeBounded(tested.segment)
                                    : eAnswer::kClear;
    default:
      return JudgeAtPoint(component, tested.at, tested.isFirst);
  }
}

/// The answer of a component that looks only at the crossing point.
eAnswer ShadowingFilter::JudgeAtPoint(eComponent component,
                                      const BoundedPoint& at,
                                      bool isFirst) const {
  switch (component) {
    case eComponent::kBellyPlate:
      return JudgeItems(eMappedTest::kBellyPlate, at);
    case eComponent::kNCDAnchor:
      return JudgeItems(eMappedTest::kNCDAnchor, at);
    case eComponent::kAVPipe:
      return isFirst ? JudgeItems(eMappedTest::kAVPipe, at) : eAnswer::kClear;
    case eComponent::kNeckBoss:
      return JudgeItems(eMappedTest::kNeckBoss, at);
    default:
      return eAnswer::kClear;
  }
}

/// The answer of a test that looks only at the crossing point: of the map, and
/// if it is unsure that of the cell's items. Both hold for the exact point too:
/// an answer of the map is one for a ball that is larger by kShell.
eAnswer ShadowingFilter::JudgeItems(eMappedTest test,
                                    const BoundedPoint& at) const {
  if (at.cell == map_.OffMap()) return eAnswer::kUnsure;
  const eAnswer inCell = ShadowMap::AnswerOf(map_.At(at.cell), test);
  if (inCell != eAnswer::kUnsure) return inCell;
  const Ball ball = {{at.point.X(), at.point.Y(), at.point.Z()}, at.error};
  BallTest::Items open;  // stays empty: nothing is allocated
  if (test == eMappedTest::kAVPipe) return AVPipeBands().Judge(ball, {}, open);
  if (test == eMappedTest::kNeckBoss) {
    return NeckBossCap(neckBoss_).Judge(ball, {}, open);
  }
  const CellItems::View some = map_.Open(test).Of(at.cell);
  if (some.IsEmpty()) return eAnswer::kUnsure;
  eAnswer answer = eAnswer::kClear;
  for (const Stretch items : some) {
    const auto judge = [&] {
      switch (test) {
        case eMappedTest::kBellyPlate:
          return plates_.JudgePlates(ball, items);
        case eMappedTest::kNCDAnchor:
          return anchors_.JudgePointNear(ball, items);
        default:
          return surface_.JudgePointNear(ball, items);
      }
    };
    answer = Either(answer, judge());
    if (answer == eAnswer::kBlocks) break;
  }
  return answer;
}

std::optional<eComponent> ShadowingFilter::FindInWater(
    const SegmentView& first, const SegmentView& second) const {
  bool isUnsure = false;
  const eComponent found =
      FindInWaterBy(first, second, [&](eComponent /*component*/) {
        isUnsure = true;
        return true;
      });
  if (isUnsure) return std::nullopt;
  return found;
}

eAnswer ShadowingFilter::JudgeHoldDownInWater(const SegmentView& first,
                                              const SegmentView& second) const {
  if (!(holdDown_.Radius2() > 0.0)) return eAnswer::kUnsure;
  const EndsFromAbove ends(first.point, second.point);
  const std::optional<eAnswer> fromInside =
      JudgeFromInside(holdDown_, ends, first, second);
  if (fromInside.has_value()) return *fromInside;
  return JudgeThrough(holdDown_, ends, first,
                      [&] { return holdDown_.JudgeFlattened(second); });
}

eAnswer ShadowingFilter::JudgeSupportInWater(const SegmentView& first,
                                             const SegmentView& second) const {
  if (!(support_.Radius2() > 0.0)) return eAnswer::kUnsure;
  const EndsFromAbove ends(first.point, second.point);
  const std::optional<eAnswer> fromInside =
      JudgeFromInside(support_, ends, first, second);
  if (fromInside.has_value()) return *fromInside;

  // Both ends are outside the support ropes: the hold-down ropes are tested.
  if (!hasEntered_) return eAnswer::kClear;
  const double entered2 = entered_.Radius2();
  if (!(entered2 > 0.0)) return eAnswer::kUnsure;
  const eSide start = ends.Start(entered2);
  const eSide end = ends.End(entered2);
  if (start == eSide::kInside || end == eSide::kInside) return eAnswer::kClear;
  if (start == eSide::kUnsure || end == eSide::kUnsure) return eAnswer::kUnsure;
  return JudgeThrough(entered_, ends, first,
                      [&] { return left_.JudgeInSpace(second); });
}

}  // namespace ZARN::DU

#include "du/fast/VerticalRopeFilter.hpp"

#include <cmath>
#include <utility>

#include "du/geometry/CylinderCrossing.hpp"

namespace ZARN::DU {
namespace {

template <class Bands = CrossingBands<double>>
CylinderCrossing<double, Bands> Cross(const SegmentView& segment,
                                      double radius2) {
  return CrossCylinderWithin<Bands>(segment.point.X(), segment.point.Y(),
                                    segment.sense * segment.direction.X(),
                                    segment.sense * segment.direction.Y(),
                                    segment.sense * segment.direction.Z(),
                                    radius2);
}

}  // namespace

VerticalRopeFilter::VerticalRopeFilter(const RopeCylinderLimits& limits,
                                       RopeDirections ropes)
    : ropes_(std::move(ropes)) {
  constexpr double kLeastRadius = 1.0;
  constexpr double kMostRadius = 1e5;
  constexpr double kMostHeight = 1e6;
  if (limits.radius >= kLeastRadius && limits.radius <= kMostRadius &&
      limits.height > 0.0 && limits.height <= kMostHeight) {
    radius2_ = limits.radius * limits.radius;
    height2_ = limits.height * limits.height;
  }
}

eAnswer VerticalRopeFilter::JudgeFlattened(const SegmentView& segment) const {
  if (!(radius2_ > 0.0)) return eAnswer::kUnsure;
  const auto crossing = Cross(segment, radius2_);
  const eAnswer answer = AnswerOf(IsWithinHeight(crossing, height2_),
                                  IsAboveHeight(crossing, height2_));
  if (answer != eAnswer::kBlocks) return answer;
  return ropes_.Judge(crossing.x, crossing.y, 0.0);
}

eAnswer VerticalRopeFilter::JudgeBounded(const SegmentView& segment) const {
  if (!(radius2_ > 0.0)) return eAnswer::kUnsure;
  const auto crossing = Cross<BoundedBands>(segment, radius2_);
  const eAnswer answer = AnswerOf(IsWithinHeight(crossing, height2_),
                                  IsAboveHeight(crossing, height2_));
  if (answer != eAnswer::kBlocks) return answer;
  return ropes_.JudgeBounded(crossing.x, crossing.y);
}

eAnswer VerticalRopeFilter::JudgeInSpace(const SegmentView& segment) const {
  if (!(radius2_ > 0.0)) return eAnswer::kUnsure;
  const auto crossing = Cross(segment, radius2_);
  const eAnswer answer = AnswerOf(IsWithinHeight(crossing, height2_),
                                  IsAboveHeight(crossing, height2_));
  if (answer != eAnswer::kBlocks) return answer;
  // If the way is longer, the error of the height may exceed kSpaceError.
  constexpr double kLongestWay = CrossingBands<double>::kLongestWay;
  const double distance2 = crossing.x * crossing.x + crossing.y * crossing.y;
  if (!(crossing.way2 < kLongestWay * kLongestWay * distance2)) {
    return eAnswer::kUnsure;
  }
  return ropes_.Judge(crossing.x, crossing.y, crossing.Height());
}

}  // namespace ZARN::DU

#pragma once

#include "du/fast/RopeDirections.hpp"
#include "du/geometry/Answer.hpp"
#include "du/hardware/RopeCylinderLimits.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// Judges by algebra whether paths meet ropes that stand on a cylinder: by the
/// crossing (CylinderCrossing.hpp), its height, and the directions of the
/// ropes. The answer is unsure if any of them is.
class VerticalRopeFilter {
 public:
  /// Judges nothing.
  VerticalRopeFilter() = default;
  /// Judges nothing unless the radius is from 1 mm to 100 m and the height
  /// above 0 and up to 1 km.
  VerticalRopeFilter(const RopeCylinderLimits& limits, RopeDirections ropes);

  eAnswer JudgeFlattened(const SegmentView& segment) const;
  /// As JudgeFlattened, for a path that is known within BoundedBands.
  eAnswer JudgeBounded(const SegmentView& segment) const;
  /// As JudgeFlattened, but the crossing keeps its height in the angle to the
  /// ropes.
  eAnswer JudgeInSpace(const SegmentView& segment) const;

  double Radius2() const { return radius2_; }  ///< mm^2; 0: judges nothing
  double Height2() const { return height2_; }  ///< mm^2
  const RopeDirections& Ropes() const { return ropes_; }

 private:
  double radius2_ = 0.0;
  double height2_ = 0.0;
  RopeDirections ropes_;
};

}  // namespace ZARN::DU

#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "TVector3.h"
#include "du/geometry/Point.hpp"
#include "du/geometry/SquaredReach.hpp"

namespace ZARN::DU {

/// Points, and whether one of some that stand side by side lies within reach of
/// a place, exactly as a loop does that computes every distance:
///
///     reach > (place - listed).Mag()
///
/// The squared distances are computed in the loop's order of operations and
/// compared by SquaredReach, so nothing is left to a guard band.
class PointList {
 public:
  PointList() = default;
  /// @param reach  mm, any
  PointList(std::vector<Point> points, double reach)
      : points_(std::move(points)), squaredReach_(SquaredReach(reach)) {}

  std::uint32_t Size() const {
    return static_cast<std::uint32_t>(points_.size());
  }
  const Point& operator[](std::uint32_t i) const { return points_[i]; }

  /// Whether one of the points from @p begin to before @p end lies strictly
  /// within the reach of @p place; false for a place that is not finite.
  bool HasNear(const TVector3& place, std::uint32_t begin,
               std::uint32_t end) const {
    const Point from = {place.X(), place.Y(), place.Z()};
    for (std::uint32_t i = begin; i < end; ++i) {
      if (SquaredDistance(from, points_[i]) < squaredReach_) return true;
    }
    return false;
  }

 private:
  std::vector<Point> points_;
  double squaredReach_ = 0.0;
};

}  // namespace ZARN::DU

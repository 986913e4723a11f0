#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "TVector3.h"
#include "du/geometry/Point.hpp"
#include "du/geometry/SquaredReach.hpp"
#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Points in blocks of four neighbours. Tells whether a point of some blocks
/// lies within reach of a place, exactly as a loop that computes every
/// distance:
///
///     reach > (place - listed).Mag()
///
/// The squared distances are computed in the loop's order of operations and
/// compared by SquaredReach, so that no guard band is needed. The coordinates
/// of a block are side by side, so that the compiler computes several distances
/// at once.
class PointBlocks {
 public:
  /// Points of a block; in the last one the last point may be repeated.
  static constexpr std::uint32_t kPoints = 4;

  PointBlocks() = default;
  /// @param points  finite ones
  /// @param reach   mm, any
  PointBlocks(const std::vector<Point>& points, double reach)
      : blocks_((points.size() + kPoints - 1) / kPoints),
        squaredReach_(SquaredReach(reach)) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      blocks_[i / kPoints].Set(i % kPoints, points[i]);
    }
    for (std::size_t i = points.size(); i % kPoints != 0; ++i) {
      blocks_.back().Set(i % kPoints, points.back());
    }
  }

  /// The number of blocks.
  std::uint32_t Size() const {
    return static_cast<std::uint32_t>(blocks_.size());
  }

  /// The squared distance from a finite place to the nearest point of a block.
  double LeastSquaredDistance(const Point& from, std::uint32_t block) const {
    return blocks_[block].LeastSquaredDistance(from);
  }

  /// The squared distance from a place to the nearest point of some blocks;
  /// infinite without one.
  double LeastSquaredDistance(const Point& from, Stretch blocks) const {
    double least = std::numeric_limits<double>::infinity();
    for (std::uint32_t i = blocks.Begin(); i < blocks.End(); ++i) {
      least = std::min(least, LeastSquaredDistance(from, i));
    }
    return least;
  }

  /// One number of each point of a block, for vector instructions.
  using FourInSingle [[gnu::vector_size(kPoints * sizeof(float))]] = float;
  /// A place as seen from each point of a block.
  struct Offsets {
    FourInSingle x;
    FourInSingle y;
    FourInSingle z;
  };
  /// Computed in double precision and then rounded.
  [[gnu::always_inline]] Offsets OffsetsTo(const Point& place,
                                           std::uint32_t block) const {
    return blocks_[block].OffsetsTo(place);
  }

  /// Whether a point of some blocks lies strictly within the reach of @p place;
  /// false for a place that is not finite.
  bool HasNear(const TVector3& place, Stretch blocks) const {
    return HasNear(place, blocks.Begin(), blocks.End());
  }
  bool HasNear(const TVector3& place) const {
    return HasNear(place, 0, Size());
  }
  bool HasNear(const TVector3& place, std::uint32_t begin,
               std::uint32_t end) const {
    const Point from = {place.X(), place.Y(), place.Z()};
    for (std::uint32_t i = begin; i < end; ++i) {
      if (LeastSquaredDistance(from, i) < squaredReach_) return true;
    }
    return false;
  }

 private:
  class Block {
   public:
    void Set(std::size_t i, const Point& point) {
      x_[i] = point.x;
      y_[i] = point.y;
      z_[i] = point.z;
    }
    [[gnu::always_inline]] double LeastSquaredDistance(
        const Point& from) const {
      const Four x = from.x - x_;
      const Four y = from.y - y_;
      const Four z = from.z - z_;
      const Four d2 = x * x + y * y + z * z;
      return std::min(std::min(d2[0], d2[2]), std::min(d2[1], d2[3]));
    }

    [[gnu::always_inline]] Offsets OffsetsTo(const Point& place) const {
      return {__builtin_convertvector(place.x - x_, FourInSingle),
              __builtin_convertvector(place.y - y_, FourInSingle),
              __builtin_convertvector(place.z - z_, FourInSingle)};
    }

   private:
    /// One coordinate of each point, for vector instructions.
    using Four [[gnu::vector_size(kPoints * sizeof(double))]] = double;

    Four x_;
    Four y_;
    Four z_;
  };

  std::vector<Block> blocks_;
  double squaredReach_ = 0.0;
};

}  // namespace ZARN::DU

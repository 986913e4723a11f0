#pragma once

#include <cstddef>
#include <cstdint>

#include "TVector3.h"
#include "du/hardware/WaterSegments.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"

namespace ZARN::DU {

// Paths in records and paths in columns, with the same members, so that
// templates accept either. Neither owns the paths.

class PathsInRecords {
 public:
  using Path = LightPath;
  using Vector = TVector3;

  explicit PathsInRecords(const LightPath* paths) : paths_(paths) {}

  /// The paths from index @p i on.
  PathsInRecords From(std::size_t i) const {
    return PathsInRecords(paths_ + i);
  }

  int Type(std::size_t i) const { return paths_[i].LightPathType; }
  const TVector3& At(Vector Path::*member, std::size_t i) const {
    return paths_[i].*member;
  }
  /// Call @p take(k, x, y, z) with a vector of each of @p count paths, whose
  /// indexes are @p numbers[k], ascending.
  template <class Take>
  void ForEach(Vector Path::*member, const std::uint16_t* numbers,
               std::size_t count, const Take& take) const {
    for (std::size_t k = 0; k < count; ++k) {
      const TVector3& vector = paths_[numbers[k]].*member;
      take(k, vector.X(), vector.Y(), vector.Z());
    }
  }
  /// The result of @p work for the water segments of a path.
  template <class Work>
  auto OnSegments(std::size_t i, const Work& work) const {
    return work(ViewsOf(paths_[i], ShapeOfType(paths_[i].LightPathType)));
  }

 private:
  const LightPath* paths_;
};

class PathsInColumns {
 public:
  using Path = LightPathArrays;
  using Vector = VectorArrays;

  /// @param paths  must outlive this
  /// @param first  the path that has index 0 here
  explicit PathsInColumns(const LightPathArrays& paths, std::size_t first = 0)
      : paths_(paths), first_(first) {}

  PathsInColumns From(std::size_t i) const {
    return PathsInColumns(paths_, first_ + i);
  }

  int Type(std::size_t i) const { return paths_.LightPathType[first_ + i]; }
  TVector3 At(Vector Path::*member, std::size_t i) const {
    return (paths_.*member).At(first_ + i);
  }
  template <class Take>
  void ForEach(Vector Path::*member, const std::uint16_t* numbers,
               std::size_t count, const Take& take) const {
    const VectorArrays& vectors = paths_.*member;
    if (!vectors.IsDense()) {
      for (std::size_t k = 0; k < count; ++k) {
        const std::size_t i = first_ + numbers[k];
        take(k, vectors.x[i], vectors.y[i], vectors.z[i]);
      }
      return;
    }
    const auto x = vectors.x.DenseFrom(first_);
    const auto y = vectors.y.DenseFrom(first_);
    const auto z = vectors.z.DenseFrom(first_);
    // Contiguous, for example if all paths have the same type.
    if (numbers[count - 1] - numbers[0] + 1U == count) {
      const std::size_t at = numbers[0];
      for (std::size_t k = 0; k < count; ++k) {
        take(k, x[at + k], y[at + k], z[at + k]);
      }
      return;
    }
    for (std::size_t k = 0; k < count; ++k) {
      take(k, x[numbers[k]], y[numbers[k]], z[numbers[k]]);
    }
  }
  template <class Work>
  auto OnSegments(std::size_t i, const Work& work) const {
    const WaterSegments segments = SegmentsOf(paths_, first_ + i);
    return work(ViewsOf(segments));
  }

 private:
  const LightPathArrays& paths_;
  std::size_t first_;
};

}  // namespace ZARN::DU

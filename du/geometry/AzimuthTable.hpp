#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "du/geometry/Answer.hpp"
#include "du/geometry/AzimuthCell.hpp"

namespace ZARN::DU {

/// A range of azimuths that an item around the z axis, such as a rope, blocks.
struct AzimuthRange {
  double phi;        ///< middle, rad
  double halfWidth;  ///< rad; < 0: nothing, > pi: everything
  /// Whether all of the range is blocked, or only may be.
  bool isSure;
};

/// Tells whether an azimuth is blocked by one of several ranges.
///
/// A cell is kBlocks if one range blocks all of it, kClear if no range overlaps
/// it, and otherwise kUnsure, with a list of the ranges that may block part of
/// it. Ranges are widened and narrowed by kMargin, so an azimuth with an error
/// below kMargin gets no wrong answer.
class AzimuthTable {
 public:
  /// Covers the errors of a crossing's azimuth in single precision, of its cell
  /// and of the ranges, rad (asserted in RopeDirections.cpp).
  static constexpr double kMargin = 3e-4;

  AzimuthTable() : AzimuthTable({}, 1) {}
  /// @param cells  number of cells: a multiple of 4, or 1
  AzimuthTable(const std::vector<AzimuthRange>& ranges, int cells);

  int Cells() const { return static_cast<int>(answers_.size()); }
  const std::vector<eAnswer>& Answers() const { return answers_; }

  /// The cell of an azimuth; x and y finite and not both zero.
  template <class Real>
  int CellOf(Real x, Real y) const {
    const int n = Cells();
    return AzimuthCell(x, y, static_cast<Real>(n) / Real(4), n);
  }

  eAnswer At(int cell) const {
    return answers_[static_cast<std::size_t>(cell)];
  }

  /// Indexes of the ranges that may block part of an unsure cell.
  const std::uint32_t* BeginCandidates(int cell) const {
    return candidates_.data() + begins_[static_cast<std::size_t>(cell)];
  }
  const std::uint32_t* EndCandidates(int cell) const {
    return candidates_.data() + begins_[static_cast<std::size_t>(cell) + 1];
  }

 private:
  std::vector<eAnswer> answers_;
  std::vector<std::uint32_t> begins_;  // of each cell in candidates_, and end
  std::vector<std::uint32_t> candidates_;
};

}  // namespace ZARN::DU

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "du/geometry/Answer.hpp"
#include "du/geometry/AzimuthCell.hpp"

namespace ZARN::DU {

/// What stands around the z axis: each item blocks a range of azimuths.
struct AzimuthRange {
  double phi;        ///< middle, rad
  double halfWidth;  ///< rad; below 0: nothing, above pi: all
  /// Whether all in the range is blocked, or it only may be.
  bool isSure;
};

/// Tells for azimuths whether some range blocks them.
///
/// A cell says kBlocks where one range blocks all of it, kClear where none
/// reaches into it, and else kUnsure, with the ranges that may block some of
/// it. Ranges are widened and narrowed by kMargin, so an azimuth that was
/// computed with an error below it gets no wrong answer.
class AzimuthTable {
 public:
  /// Covers the errors of a crossing's azimuth in single precision, of its cell
  /// and of the ranges, rad (asserted in RopeDirections.cpp).
  static constexpr double kMargin = 3e-4;

  AzimuthTable() : AzimuthTable({}, 1) {}
  /// @param cells  their number: a multiple of 4, or 1
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

  /// The ranges, by their index, that may block some of an unsure cell.
  const std::uint32_t* BeginCandidates(int cell) const {
    return candidates_.data() + begins_[static_cast<std::size_t>(cell)];
  }
  const std::uint32_t* EndCandidates(int cell) const {
    return candidates_.data() + begins_[static_cast<std::size_t>(cell) + 1];
  }

 private:
  std::vector<eAnswer> answers_;
  std::vector<std::uint32_t> begins_;  // of every cell in candidates_, and end
  std::vector<std::uint32_t> candidates_;
};

}  // namespace ZARN::DU

#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "TVector3.h"
#include "du/geometry/BallTest.hpp"
#include "du/geometry/PointList.hpp"

namespace ZARN::DU {

/// How an index over points is laid out.
enum class eGrid {
  kUniform,  ///< a grid of cubic cells
  kOneCell   ///< no index: every question goes over all points
};

/// Tells whether any point of a list lies within reach, exactly as a loop over
/// the list does that computes every distance:
///
///     reach > (point - listed).Mag()
///
/// Only cells that the reach touches are looked into, by PointList.
class PointGrid final : public BallTest {
 public:
  PointGrid() = default;
  /// @param points  any, also none; one that is not finite is never near
  /// @param reach   mm, any
  PointGrid(const std::vector<TVector3>& points, double reach,
            eGrid layout = eGrid::kUniform);

  /// Whether a listed point lies strictly within the reach of @p point; false
  /// for a point that is not finite. Never throws, never allocates.
  bool HasPointNear(const TVector3& point) const;
  /// The points that stand behind some items of a BallTest, in their order.
  PointList ListOf(const Items& items) const;

  /// One for each point that can be near at all.
  std::uint32_t CountItems() const override;
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;

 private:
  /// The cells along one axis that a question touches.
  struct Range {
    std::uint32_t first;
    std::uint32_t last;
  };
  struct Axis {
    double origin = 0.0;
    std::uint32_t cells = 1;
  };

  void LayOut(const std::vector<TVector3>& points, double reach);
  std::uint32_t CellOf(const TVector3& point) const;
  bool FindRange(const Axis& axis, double coordinate, Range& range) const;

  double reach_ = 0.0;
  double touch_ = 0.0;  // how far off a cell may lie and still be touched
  double cellsPerLength_ = 0.0;
  std::array<Axis, 3> axes_;
  std::vector<std::uint32_t>
      begins_;        // of every cell in the lists, and the end
  PointList points_;  // cell by cell
};

}  // namespace ZARN::DU

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "TVector3.h"
#include "du/geometry/Point.hpp"

namespace ZARN::DU {

/// Finds the point of a list that is nearest to a place, exactly as a loop does
/// that compares (place - listed).Mag().
///
/// The points are in a tree of boxes. The squared distance to a box is computed
/// in the order of operations of that to a point, and rounding is monotonic, so
/// it is never above the squared distance to a point inside: no margin is
/// needed.
class NearestPoint {
 public:
  NearestPoint() = default;
  /// @param points  any, or none; fewer than 2^32
  explicit NearestPoint(const std::vector<TVector3>& points);

  /// The position of the nearest point, of several at the same distance the
  /// first; nothing if no distance is finite.
  std::optional<std::size_t> To(const TVector3& place) const;

 private:
  struct Box {
    Point low;
    Point high;
  };
  struct Listed {
    Point point;
    std::uint32_t position;
  };
  struct Nearest {
    double distance = std::numeric_limits<double>::infinity();
    /// No point with a larger squared distance is at this distance or nearer.
    double most = std::numeric_limits<double>::infinity();
    std::uint32_t position = 0;

    void Take(double squared, std::uint32_t listed);
  };

  void MakeNode(std::size_t number, std::size_t begin, std::size_t end);
  void Search(const Point& place, std::size_t number, std::size_t begin,
              std::size_t end, Nearest& nearest) const;

  /// In the order of the leaves.
  std::vector<Listed> points_;
  /// Around the points of each node, from the root, number 1; the children of
  /// node n are 2 n and 2 n + 1, with half of its points each.
  std::vector<Box> boxes_;
};

}  // namespace ZARN::DU

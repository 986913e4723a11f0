#pragma once

#include <cstdint>
#include <vector>

#include "TVector3.h"
#include "du/geometry/BallTest.hpp"
#include "du/geometry/PointList.hpp"
#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Tells whether any point of a list lies within reach, exactly as a loop over
/// the list does that computes every distance:
///
///     reach > (point - listed).Mag()
///
/// The points are put into an order in which neighbours in space mostly stand
/// side by side. A few of them make a block, two blocks a pair, and so on up to
/// all: a complete binary tree, each of whose nodes knows a ball around its
/// points. What a ball cannot decide is left to PointList.
class PointTree final : public BallTest {
 public:
  PointTree() = default;
  /// @param points  any, also none; one that is not finite is never near
  /// @param reach   mm, any
  PointTree(const std::vector<TVector3>& points, double reach);

  /// Whether a point lies strictly within the reach of @p place; false for a
  /// place that is not finite. Never throws, never allocates.
  bool HasPointNear(const TVector3& place) const;
  /// Whether one of a few points does, which are entries of the BallTest.
  bool HasPointNear(const TVector3& place, Stretch entries) const {
    return points_.HasNear(place, entries.Begin(), entries.End());
  }
  /// How many points can be near at all.
  std::uint32_t CountPoints() const { return points_.Size(); }

  /// Items are nodes of the tree by their number and points, numbered on from
  /// there, from front to back. Before them stands the nearest one once more:
  /// in a smaller ball it mostly decides.
  Items AllItems() const override;
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;
  void AppendEntries(const Items& items, StretchLists& list) const override;

 private:
  /// A ball that holds the points of a node; one without points is nowhere.
  class Node {
   public:
    Node() = default;
    Node(float x, float y, float z, float radius)
        : x_(x), y_(y), z_(z), radius_(radius) {}
    Point Middle() const { return {x_, y_, z_}; }
    double Radius() const { return radius_; }

   private:
    float x_ = 0.0F;
    float y_ = 0.0F;
    float z_ = 0.0F;
    float radius_ = 0.0F;
  };
  struct Box {
    Point low;
    Point high;
  };
  class Judging;

  /// The points of an item: from begin to before end.
  struct Entries {
    std::uint32_t begin;
    std::uint32_t end;
  };
  Entries EntriesOf(std::uint32_t item) const;
  void MakeNodes();
  Box MakeNode(std::uint32_t number);
  static Node BallAround(const Box& box);

  double reach_ = 0.0;
  PointList points_;
  /// From the root, number 1, down to the blocks; those below node n are 2 n
  /// and 2 n + 1. None if there are too few points, or some lie too far out.
  std::vector<Node> nodes_;
  std::uint32_t firstBlock_ = 0;
};

}  // namespace ZARN::DU

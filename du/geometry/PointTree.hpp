#pragma once

#include <cstdint>
#include <vector>

#include "TVector3.h"
#include "du/geometry/BoxTest.hpp"
#include "du/geometry/Point.hpp"
#include "du/geometry/PointBlocks.hpp"
#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Tells whether any point of a list lies within reach, exactly as a loop over
/// the list does that computes every distance:
///
///     reach > (point - listed).Mag()
///
/// The points are sorted so that neighbours in the list are mostly neighbours
/// in space. A few blocks of them are a leaf of a complete binary tree. Every
/// node has a ball around its points. If the ball cannot decide, PointBlocks
/// does.
class PointTree final : public BoxTest {
 public:
  PointTree() = default;
  /// @param points  any, or none; a point that is not finite is never near
  /// @param reach   mm, any
  PointTree(const std::vector<TVector3>& points, double reach);

  /// Whether a point lies strictly within the reach of @p place; false for a
  /// place that is not finite. Never throws, never allocates.
  bool HasPointNear(const TVector3& place) const;
  /// The same for the points of some blocks, which are entries of the BoxTest.
  bool HasPointNear(const TVector3& place, Stretch entries) const {
    return blocks_.HasNear(place, entries);
  }
  /// The same for every place in a ball.
  eAnswer JudgePointNear(const Ball& places, Stretch entries) const;
  /// The number of points that can be near.
  std::uint32_t CountPoints() const { return count_; }

  /// An item is the number of a node, or the number of a block plus the number
  /// of nodes, in increasing order of their points.
  Items AllItems() const override;
  OfQuarters<eAnswer> JudgeQuarters(const QuarteredBox& box, const Items& items,
                                    OfQuarters<Items>& open) const override;
  void AppendEntries(const Items& items, StretchLists& list) const override;

 private:
  /// A ball around the points of a node; without points it is at infinity.
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
  /// For a place with a margin: a point nearer to it than `inner` blocks, one
  /// farther away than `outer` does not.
  struct Limits {
    double inner;
    double outer;
  };
  struct Box {
    Point low;
    Point high;
  };
  class JudgingQuarters;

  /// The blocks of an item: from begin to before end.
  struct Entries {
    std::uint32_t begin;
    std::uint32_t end;
  };
  Entries EntriesOf(std::uint32_t item) const;
  Limits LimitsWith(double margin) const;
  void MakeNodes(const std::vector<Point>& points);
  Box MakeNode(std::uint32_t number, const std::vector<Point>& points);
  static Node BallAround(const Box& box);

  double reach_ = 0.0;
  std::uint32_t count_ = 0;
  PointBlocks blocks_;
  /// From the root, number 1, to the leaves; the children of node n are 2 n and
  /// 2 n + 1. Empty if there are no points, or some are too far out.
  std::vector<Node> nodes_;
  std::uint32_t firstLeaf_ = 0;
};

}  // namespace ZARN::DU

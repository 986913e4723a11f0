#pragma once

#include <cstdint>
#include <vector>

#include "TVector3.h"
#include "du/geometry/BallTest.hpp"
#include "du/geometry/Point.hpp"
#include "du/geometry/PointBlocks.hpp"
#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Tells whether any point of a list lies within reach, exactly as a loop over
/// the list does that computes every distance:
///
///     reach > (point - listed).Mag()
///
/// The points are put into an order in which neighbours in space mostly stand
/// side by side. A few blocks of them make a leaf, two leaves a node, and so on
/// up to all: a complete binary tree, each of whose nodes knows a ball around
/// its points. What a ball cannot decide is left to PointBlocks.
class PointTree final : public BallTest {
 public:
  PointTree() = default;
  /// @param points  any, also none; one that is not finite is never near
  /// @param reach   mm, any
  PointTree(const std::vector<TVector3>& points, double reach);

  /// Whether a point lies strictly within the reach of @p place; false for a
  /// place that is not finite. Never throws, never allocates.
  bool HasPointNear(const TVector3& place) const;
  /// Whether a point of a few blocks does, which are entries of the BallTest.
  bool HasPointNear(const TVector3& place, Stretch entries) const {
    return blocks_.HasNear(place, entries);
  }
  /// How many points can be near at all.
  std::uint32_t CountPoints() const { return count_; }

  /// Items are nodes of the tree by their number and blocks, numbered on from
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

  /// The blocks of an item: from begin to before end.
  struct Entries {
    std::uint32_t begin;
    std::uint32_t end;
  };
  Entries EntriesOf(std::uint32_t item) const;
  void MakeNodes(const std::vector<Point>& points);
  Box MakeNode(std::uint32_t number, const std::vector<Point>& points);
  static Node BallAround(const Box& box);

  double reach_ = 0.0;
  std::uint32_t count_ = 0;
  PointBlocks blocks_;
  /// From the root, number 1, down to the leaves; those below node n are 2 n
  /// and 2 n + 1. None if there are no points, or some lie too far out.
  std::vector<Node> nodes_;
  std::uint32_t firstLeaf_ = 0;
};

}  // namespace ZARN::DU

#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "TVector3.h"
#include "du/geometry/PointTree.hpp"
#include "du/geometry/StretchLists.hpp"

// What tests of a tree of points hold its answers against.

namespace ZARN::Testing {

/// The loop that the tree spares.
inline bool IsAnyNear(const std::vector<TVector3>& points, double reach,
                      const TVector3& place) {
  return std::any_of(points.begin(), points.end(), [&](const TVector3& listed) {
    return reach > (place - listed).Mag();
  });
}

/// Whether one of the points behind some open items is near.
inline bool IsAnyOpenNear(const DU::PointTree& tree,
                          const DU::BoxTest::Items& open,
                          const TVector3& place) {
  DU::StretchLists list(1000000);
  tree.AppendEntries(open, list);
  const DU::Stretch some = list.EndList();
  EXPECT_EQ(some.Count(), list.All().size());
  return std::any_of(
      list.All().begin(), list.All().end(),
      [&](DU::Stretch entries) { return tree.HasPointNear(place, entries); });
}

}  // namespace ZARN::Testing

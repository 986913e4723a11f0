#pragma once

#include <cstdint>
#include <vector>

#include "du/geometry/Answer.hpp"
#include "du/geometry/Point.hpp"
#include "du/geometry/StretchLists.hpp"

namespace ZARN::DU {

/// All points within a distance of a centre, mm.
struct Ball {
  Point centre;
  double radius;
};

/// A test of single points that can be put to all points of a ball at once.
///
/// What is tested against are entries in a list, of which one suffices to
/// block. An item stands for one of them, or for several that stand side by
/// side; for points that are also in a larger ball only those items count that
/// the answer for that one left open.
class BallTest {
 public:
  using Items = std::vector<std::uint32_t>;

  BallTest() = default;
  BallTest(const BallTest&) = default;
  BallTest& operator=(const BallTest&) = default;
  virtual ~BallTest() = default;

  /// Items that stand for all entries; none if the test has no entries.
  virtual Items AllItems() const = 0;

  /// What the test says of every point in @p ball, and in a larger one that
  /// left the items @p items open: kBlocks or kClear if surely the same of all.
  ///
  /// @param open  where the answer is unsure, items that suffice to decide for
  ///              these points; else anything
  virtual eAnswer Judge(const Ball& ball, const Items& items,
                        Items& open) const = 0;

  /// Append the entries behind items that were left open to a list.
  virtual void AppendEntries(const Items& items, StretchLists& list) const = 0;
};

}  // namespace ZARN::DU

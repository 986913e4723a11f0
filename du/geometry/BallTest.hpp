#pragma once

#include <cstdint>
#include <vector>

#include "du/geometry/Answer.hpp"
#include "du/geometry/Point.hpp"

namespace ZARN::DU {

/// All points within a distance of a centre, mm.
struct Ball {
  Point centre;
  double radius;
};

/// A test of single points that can be put to all points of a ball at once.
///
/// What is tested against may be several items, of which one suffices to block;
/// for points that are also in a larger ball only those count that the answer
/// for that one left open.
class BallTest {
 public:
  using Items = std::vector<std::uint32_t>;

  BallTest() = default;
  BallTest(const BallTest&) = default;
  BallTest& operator=(const BallTest&) = default;
  virtual ~BallTest() = default;

  virtual std::uint32_t CountItems() const = 0;

  /// What the test says of every point in @p ball, and in a larger one that
  /// left the items @p items open: kBlocks or kClear if surely the same of all.
  ///
  /// @param open  filled, where the answer is unsure, with items that suffice
  /// to
  ///              decide for these points; empty if that takes all items
  virtual eAnswer Judge(const Ball& ball, const Items& items,
                        Items& open) const = 0;
};

}  // namespace ZARN::DU

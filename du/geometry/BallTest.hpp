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
/// a ball within another needs only those of them that the larger one's answer
/// left open.
class BallTest {
 public:
  using Items = std::vector<std::uint32_t>;

  BallTest() = default;
  BallTest(const BallTest&) = default;
  BallTest& operator=(const BallTest&) = default;
  virtual ~BallTest() = default;

  virtual std::uint32_t CountItems() const = 0;

  /// What the test says of every point in @p ball that an enclosing ball with
  /// the items @p items left open: kBlocks or kClear if surely the same of all.
  ///
  /// @param open  filled, where the answer is unsure, with the items that can
  ///              block a point in the ball
  virtual eAnswer Judge(const Ball& ball, const Items& items,
                        Items& open) const = 0;
};

}  // namespace ZARN::DU

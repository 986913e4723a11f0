#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "du/geometry/Answer.hpp"
#include "du/geometry/QuarteredBox.hpp"
#include "du/geometry/StretchLists.hpp"

namespace ZARN::DU {

/// A test of single points that can be applied to all points of a ball at once.
///
/// The test compares with the entries of a list; one entry is enough to block.
/// An item is one entry or several adjacent ones. For points that also lie in a
/// larger ball, only the items that the answer for the larger ball left open
/// matter.
class BallTest {
 public:
  using Items = std::vector<std::uint32_t>;
  template <class T>
  using OfQuarters = std::array<T, QuarteredBox::kQuarters>;

  BallTest() = default;
  BallTest(const BallTest&) = default;
  BallTest& operator=(const BallTest&) = default;
  virtual ~BallTest() = default;

  /// Items that cover all entries; empty if the test has no entries.
  virtual Items AllItems() const = 0;

  /// The answer for every point that lies both in @p ball and in a larger ball
  /// whose answer left @p items open: kBlocks or kClear if it surely is the
  /// same for all of them.
  ///
  /// @param open  if the answer is kUnsure, items that are enough to decide for
  ///              these points; otherwise unspecified
  virtual eAnswer Judge(const Ball& ball, const Items& items,
                        Items& open) const = 0;

  /// The same for the points of each quarter of a box: one answer, and one list
  /// of open items, for each. By default a ball around the quarter is judged.
  virtual OfQuarters<eAnswer> JudgeQuarters(const QuarteredBox& box,
                                            const Items& items,
                                            OfQuarters<Items>& open) const {
    OfQuarters<eAnswer> answers;
    for (std::size_t i = 0; i < answers.size(); ++i) {
      answers[i] = Judge(box.BallAround(i), items, open[i]);
    }
    return answers;
  }

  /// Append the entries of @p items to @p list.
  virtual void AppendEntries(const Items& items, StretchLists& list) const = 0;
};

}  // namespace ZARN::DU

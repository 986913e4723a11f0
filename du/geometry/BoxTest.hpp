#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "du/geometry/Answer.hpp"
#include "du/geometry/QuarteredBox.hpp"
#include "du/geometry/StretchLists.hpp"

namespace ZARN::DU {

/// A test of single points that can be applied to all points of a box at once.
///
/// The test compares with the entries of a list; one entry is enough to block.
/// An item is one entry or several adjacent ones. For points that also lie in a
/// larger box, only the items that the answer for the larger box left open
/// matter.
class BoxTest {
 public:
  using Items = std::vector<std::uint32_t>;
  template <class T>
  using OfQuarters = std::array<T, QuarteredBox::kQuarters>;

  BoxTest() = default;
  BoxTest(const BoxTest&) = default;
  BoxTest& operator=(const BoxTest&) = default;
  virtual ~BoxTest() = default;

  /// Items that cover all entries; empty if the test has no entries.
  virtual Items AllItems() const = 0;

  /// For each quarter of a box, the answer for every point that lies both in
  /// the quarter and in a larger box whose answer left @p items open: kBlocks
  /// or kClear if it surely is the same for all of them.
  ///
  /// @param open  for each quarter whose answer is kUnsure, items that are
  ///              enough to decide for its points; otherwise unspecified
  virtual OfQuarters<eAnswer> JudgeQuarters(const QuarteredBox& box,
                                            const Items& items,
                                            OfQuarters<Items>& open) const = 0;

  /// Append the entries of @p items to @p list.
  virtual void AppendEntries(const Items& items, StretchLists& list) const = 0;
};

}  // namespace ZARN::DU

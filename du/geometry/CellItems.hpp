#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "du/geometry/BallTest.hpp"

namespace ZARN::DU {

/// Lists of items for a few of many cells: a bit for every cell, and the lists
/// end to end in the order of the cells.
class CellItems {
 public:
  /// The list of one cell, by its place among those of all.
  struct Range {
    std::uint32_t begin;
    std::uint32_t end;
  };
  using Lists = std::vector<std::pair<std::uint32_t, Range>>;  ///< by cell

  CellItems() = default;
  /// @param cells  their number
  /// @param lists  in any order, one for a cell at most
  /// @param items  in which the lists are ranges
  CellItems(std::size_t cells, const Lists& lists,
            const BallTest::Items& items);

  /// The list of a cell that has one.
  Range Of(std::size_t cell) const {
    const std::size_t place = PlaceOf(cell);
    return {begins_[place], begins_[place + 1]};
  }
  const BallTest::Items& Items() const { return items_; }

 private:
  static constexpr std::size_t kBits = 64;
  struct Word {
    std::uint64_t bits = 0;
    std::uint32_t before = 0;  // how many are set in the words before
  };

  std::size_t PlaceOf(std::size_t cell) const;

  std::vector<Word> words_;
  std::vector<std::uint32_t> begins_;  // of every list, and the end
  BallTest::Items items_;
};

}  // namespace ZARN::DU

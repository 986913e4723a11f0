#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Which entries of a list belong to a cell, for a few of many cells: a bit for
/// every cell, and for those that are set some stretches of the list.
class CellItems {
 public:
  /// The stretches of a cell, for a loop over them.
  struct View {
    const Stretch* first;
    const Stretch* last;
    const Stretch* begin() const { return first; }
    const Stretch* end() const { return last; }
    bool IsEmpty() const { return first == last; }
  };

  CellItems() = default;
  /// @param cells  their number
  /// @param ofCells  for some cells, each at most once and in any order, which
  ///                 stretches belong to it
  /// @param stretches  of the list
  CellItems(std::size_t cells,
            const std::vector<std::pair<std::uint32_t, Stretch>>& ofCells,
            std::vector<Stretch> stretches);

  /// What belongs to a cell that is one of those; nothing for a default one.
  View Of(std::size_t cell) const {
    const Stretch mine = ofCells_[PlaceOf(cell)];
    const Stretch* const all = stretches_.data();
    return {all + mine.Begin(), all + mine.End()};
  }
  const std::vector<Stretch>& All() const { return stretches_; }

 private:
  static constexpr std::size_t kBits = 64;
  struct Word {
    std::uint64_t bits = 0;
    std::uint32_t before = 0;  // how many are set in the words before
  };

  /// The place of a cell among those that are set.
  std::size_t PlaceOf(std::size_t cell) const;

  std::vector<Word> words_;
  std::vector<Stretch> ofCells_;  // of stretches_, in the order of the cells
  std::vector<Stretch> stretches_;
};

}  // namespace ZARN::DU

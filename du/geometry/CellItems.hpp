#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Which entries of a list belong to a cell, if only a few of many cells have
/// entries: one bit per cell, and for each cell whose bit is set some stretches
/// of the list.
class CellItems {
 public:
  /// The stretches of a cell, for range-based for.
  struct View {
    const Stretch* first;
    const Stretch* last;
    const Stretch* begin() const { return first; }
    const Stretch* end() const { return last; }
    bool IsEmpty() const { return first == last; }
  };

  CellItems() = default;
  /// @param cells  number of cells
  /// @param ofCells  the stretches of some cells, each cell at most once, in
  ///                 any order
  /// @param stretches  all stretches, to which @p ofCells refers
  CellItems(std::size_t cells,
            const std::vector<std::pair<std::uint32_t, Stretch>>& ofCells,
            std::vector<Stretch> stretches);

  /// The stretches of a cell that the constructor was given; empty if its
  /// Stretch was a default one.
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
    std::uint32_t before = 0;  // number of bits set in all words before
  };

  /// The index of a cell among those whose bit is set.
  std::size_t PlaceOf(std::size_t cell) const;

  std::vector<Word> words_;
  std::vector<Stretch> ofCells_;  // ranges of stretches_, in cell order
  std::vector<Stretch> stretches_;
};

}  // namespace ZARN::DU

#include "du/geometry/CellItems.hpp"

#include <bitset>

namespace ZARN::DU {

CellItems::CellItems(
    std::size_t cells,
    const std::vector<std::pair<std::uint32_t, Stretch>>& ofCells,
    std::vector<Stretch> stretches)
    : words_(cells / kBits + 1),
      ofCells_(ofCells.size()),
      stretches_(std::move(stretches)) {
  for (const auto& [cell, mine] : ofCells) {
    words_[cell / kBits].bits |= std::uint64_t{1} << cell % kBits;
  }
  std::uint32_t before = 0;
  for (Word& word : words_) {
    word.before = before;
    before += static_cast<std::uint32_t>(std::bitset<kBits>(word.bits).count());
  }
  for (const auto& [cell, mine] : ofCells) ofCells_[PlaceOf(cell)] = mine;
}

std::size_t CellItems::PlaceOf(std::size_t cell) const {
  const Word& word = words_[cell / kBits];
  const std::uint64_t below = (std::uint64_t{1} << cell % kBits) - 1;
  return word.before + std::bitset<kBits>(word.bits & below).count();
}

}  // namespace ZARN::DU

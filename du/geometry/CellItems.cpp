#include "du/geometry/CellItems.hpp"

#include <bitset>

namespace ZARN::DU {

CellItems::CellItems(std::size_t cells, const Lists& lists,
                     BallTest::Items items)
    : words_(cells / kBits + 1),
      ranges_(lists.size()),
      items_(std::move(items)) {
  for (const auto& [cell, range] : lists) {
    words_[cell / kBits].bits |= std::uint64_t{1} << cell % kBits;
  }
  std::uint32_t before = 0;
  for (Word& word : words_) {
    word.before = before;
    before += static_cast<std::uint32_t>(std::bitset<kBits>(word.bits).count());
  }
  for (const auto& [cell, range] : lists) ranges_[PlaceOf(cell)] = range;
}

std::size_t CellItems::PlaceOf(std::size_t cell) const {
  const Word& word = words_[cell / kBits];
  const std::uint64_t below = (std::uint64_t{1} << cell % kBits) - 1;
  return word.before + std::bitset<kBits>(word.bits & below).count();
}

}  // namespace ZARN::DU

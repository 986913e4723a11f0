#include "du/geometry/CellItems.hpp"

#include <algorithm>
#include <bitset>
#include <numeric>

namespace ZARN::DU {

CellItems::CellItems(std::size_t cells, const Lists& lists,
                     const BallTest::Items& items)
    : words_(cells / kBits + 1), begins_(lists.size() + 1, 0) {
  for (const auto& [cell, range] : lists) {
    words_[cell / kBits].bits |= std::uint64_t{1} << cell % kBits;
  }
  std::uint32_t before = 0;
  for (Word& word : words_) {
    word.before = before;
    before += static_cast<std::uint32_t>(std::bitset<kBits>(word.bits).count());
  }
  for (const auto& [cell, range] : lists) {
    begins_[PlaceOf(cell) + 1] = range.end - range.begin;
  }
  std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
  items_.resize(begins_.back());
  for (const auto& [cell, range] : lists) {
    std::copy(items.begin() + range.begin, items.begin() + range.end,
              items_.begin() + begins_[PlaceOf(cell)]);
  }
}

std::size_t CellItems::PlaceOf(std::size_t cell) const {
  const Word& word = words_[cell / kBits];
  const std::uint64_t below = (std::uint64_t{1} << cell % kBits) - 1;
  return word.before + std::bitset<kBits>(word.bits & below).count();
}

}  // namespace ZARN::DU

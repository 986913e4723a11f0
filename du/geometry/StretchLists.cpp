#include "du/geometry/StretchLists.hpp"

#include <algorithm>

namespace ZARN::DU {

Stretch StretchLists::EndList() {
  Keep();
  begin_ = end_ = 0;
  if (isTooLong_) all_.resize(list_);
  const Stretch list(static_cast<std::uint32_t>(isTooLong_ ? 0 : list_),
                     static_cast<std::uint32_t>(all_.size() - list_));
  isTooLong_ = false;
  list_ = all_.size();
  return list;
}

void StretchLists::Keep() {
  while (begin_ < end_ && !isTooLong_) {
    const std::uint32_t count = std::min(end_ - begin_, Stretch::kMostEntries);
    isTooLong_ = begin_ >= Stretch::kEnd || all_.size() >= Stretch::kEnd ||
                 all_.size() >= most_ ||
                 all_.size() - list_ >= Stretch::kMostEntries;
    if (isTooLong_) return;
    all_.emplace_back(begin_, count);
    begin_ += count;
  }
}

}  // namespace ZARN::DU

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Lists of entries, end to end, each as the fewest stretches that hold them.
class StretchLists {
 public:
  /// @param most  how many stretches there may be in all
  explicit StretchLists(std::size_t most = 0) : most_(most) {}

  /// Append entries, which are not before those appended last, to the list
  /// that is not yet ended.
  void Append(std::uint32_t begin, std::uint32_t end) {
    if (begin > end_ + kMostBetween || begin_ == end_) {
      Keep();
      begin_ = begin;
    }
    end_ = end;
  }

  /// End the list.
  ///
  /// @return which of the stretches it is; none if there was no room for them
  Stretch EndList();

  /// Of all lists.
  const std::vector<Stretch>& All() const { return all_; }

 private:
  /// To go over an entry more costs less than another stretch.
  static constexpr std::uint32_t kMostBetween = 1;

  void Keep();

  std::size_t most_;
  std::vector<Stretch> all_;
  std::size_t list_ = 0;  // where the one that is not ended begins
  bool isTooLong_ = false;
  std::uint32_t begin_ = 0;  // of the last stretch, which may yet grow
  std::uint32_t end_ = 0;
};

}  // namespace ZARN::DU

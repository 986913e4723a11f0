#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "du/geometry/Stretch.hpp"

namespace ZARN::DU {

/// Lists of entries, one after another, each stored as few stretches.
class StretchLists {
 public:
  /// @param most  maximum number of stretches in all lists
  explicit StretchLists(std::size_t most = 0) : most_(most) {}

  /// Append entries to the current list. They must not come before those
  /// appended last.
  void Append(std::uint32_t begin, std::uint32_t end) {
    if (begin > end_ + kMostBetween || begin_ == end_) {
      Keep();
      begin_ = begin;
    }
    end_ = end;
  }

  /// End the current list.
  ///
  /// @return the range of All() that it takes; empty if there was no room
  Stretch EndList();

  /// The stretches of all lists.
  const std::vector<Stretch>& All() const { return all_; }

 private:
  /// Checking one entry more costs less than another stretch.
  static constexpr std::uint32_t kMostBetween = 1;

  void Keep();

  std::size_t most_;
  std::vector<Stretch> all_;
  std::size_t list_ = 0;  // where the current list begins
  bool isTooLong_ = false;
  std::uint32_t begin_ = 0;  // of the last stretch, which can still grow
  std::uint32_t end_ = 0;
};

}  // namespace ZARN::DU

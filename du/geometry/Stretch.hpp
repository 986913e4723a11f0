#pragma once

#include <cstdint>

namespace ZARN::DU {

/// A few adjacent entries of a list, in four bytes: lists of stretches are most
/// of the memory of a map of fine hardware.
class Stretch {
 public:
  static constexpr std::uint32_t kMostEntries = 127;
  /// Every stretch begins before this entry.
  static constexpr std::uint32_t kEnd = 1U << 25U;

  Stretch() = default;
  /// @param begin  below kEnd
  /// @param count  up to kMostEntries
  Stretch(std::uint32_t begin, std::uint32_t count)
      : bits_(begin << kCountBits | count) {}

  std::uint32_t Begin() const { return bits_ >> kCountBits; }
  std::uint32_t End() const { return Begin() + Count(); }
  std::uint32_t Count() const { return bits_ & kMostEntries; }

 private:
  static constexpr std::uint32_t kCountBits = 7;
  static_assert(kMostEntries == (1U << kCountBits) - 1);
  static_assert(kEnd - 1 == UINT32_MAX >> kCountBits);

  std::uint32_t bits_ = 0;
};

}  // namespace ZARN::DU

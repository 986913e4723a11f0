#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::DU {

/// A batch's verdict on a segment or path: a number of eShadowingComponent, or
/// kOpenVerdict if the filter has to decide.
using BatchVerdict = std::uint8_t;
inline constexpr BatchVerdict kOpenVerdict = 255;
static_assert(kNumberOfComponents < kOpenVerdict);

constexpr BatchVerdict BatchVerdictOf(eShadowingComponent component) {
  return static_cast<BatchVerdict>(component);
}

/// The verdict on a path from those on its two segments: the component that is
/// tested first. Each component is tested on both segments before the next one,
/// so an open segment leaves the path open.
constexpr BatchVerdict EarlierOf(BatchVerdict first, BatchVerdict second) {
  constexpr BatchVerdict kNone = BatchVerdictOf(eShadowingComponent::kNone);
  if (first == kOpenVerdict || second == kOpenVerdict) return kOpenVerdict;
  if (first == kNone) return second;
  if (second == kNone) return first;
  return first < second ? first : second;
}

/// Verdicts as a batch writes them: with the same numbers.
template <class Verdict>
BatchVerdict* AsBatch(Verdict* verdicts) {
  static_assert(std::is_enum_v<Verdict> &&
                sizeof(Verdict) == sizeof(BatchVerdict));
  // Bytes may alias anything.
  return reinterpret_cast<BatchVerdict*>(verdicts);
}

/// Call @p work(i) for every verdict that is open.
template <class Work>
void ForEachOpen(const BatchVerdict* verdicts, std::size_t count,
                 const Work& work) {
  std::size_t i = 0;
  while (i < count) {
    const void* const found =
        std::memchr(verdicts + i, kOpenVerdict, count - i);
    if (found == nullptr) return;
    i = static_cast<std::size_t>(static_cast<const BatchVerdict*>(found) -
                                 verdicts);
    work(i++);
  }
}

}  // namespace ZARN::DU

#pragma once

#include <cstdint>

namespace ZARN::DU {

/// What a filter says: its word where it is sure, else the caller asks the
/// formula.
enum class eAnswer : std::uint8_t { kClear, kUnsure, kBlocks };

/// The answer of a test that surely blocks, surely is clear, or neither. (The
/// two are asked apart because vector code keeps truths as masks.)
inline eAnswer AnswerOf(bool surelyBlocks, bool surelyClear) {
  if (surelyBlocks) return eAnswer::kBlocks;
  return surelyClear ? eAnswer::kClear : eAnswer::kUnsure;
}

/// What is done by two things together: one that blocks suffices, and only two
/// that are clear are.
constexpr eAnswer Either(eAnswer a, eAnswer b) { return a < b ? b : a; }

/// Whether something blocks, as the answer says, or as @p decide() does where
/// the answer is unsure.
template <class Decide>
[[gnu::always_inline]] inline bool IsBlocking(eAnswer answer,
                                              const Decide& decide) {
  return answer == eAnswer::kUnsure ? decide() : answer == eAnswer::kBlocks;
}

}  // namespace ZARN::DU

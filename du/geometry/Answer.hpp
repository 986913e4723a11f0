#pragma once

#include <cstdint>

namespace ZARN::DU {

/// The answer of a filter. After kUnsure the caller evaluates the formula.
enum class eAnswer : std::uint8_t { kClear, kUnsure, kBlocks };

/// The answer for two conditions: surely blocked, surely clear, or neither.
/// (They are separate because vector code keeps conditions as masks.)
inline eAnswer AnswerOf(bool surelyBlocks, bool surelyClear) {
  if (surelyBlocks) return eAnswer::kBlocks;
  return surelyClear ? eAnswer::kClear : eAnswer::kUnsure;
}

/// The answer for two items together: kBlocks if one blocks, kClear only if
/// both are clear.
constexpr eAnswer Either(eAnswer a, eAnswer b) { return a < b ? b : a; }

/// Whether something blocks: the answer, or the result of @p decide() if the
/// answer is unsure.
template <class Decide>
[[gnu::always_inline]] inline bool IsBlocking(eAnswer answer,
                                              const Decide& decide) {
  return answer == eAnswer::kUnsure ? decide() : answer == eAnswer::kBlocks;
}

}  // namespace ZARN::DU

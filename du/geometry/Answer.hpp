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
///
/// A switch makes every answer a branch, which the processor predicts. With
/// `answer == eAnswer::kBlocks` the compiler computes the verdict from the
/// answer, and whatever depends on the verdict has to wait for both.
template <class Decide>
[[gnu::always_inline]] inline bool IsBlocking(eAnswer answer,
                                              const Decide& decide) {
  switch (answer) {
    case eAnswer::kClear:
      return false;
    case eAnswer::kBlocks:
      return true;
    case eAnswer::kUnsure:
      break;
  }
  return decide();
}

}  // namespace ZARN::DU

#pragma once

namespace ZARN::Testing {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kHasSanitizer = true;
#else
inline constexpr bool kHasSanitizer = false;
#endif

/// How often a test repeats what takes long: a sanitizer, which looks for wrong
/// use of memory and not for rare verdicts, needs fewer.
template <class Number>
constexpr Number Repetitions(Number usual, Number withSanitizer) {
  return kHasSanitizer ? withSanitizer : usual;
}

}  // namespace ZARN::Testing

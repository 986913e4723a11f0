#pragma once

#include <sstream>
#include <string>

// Whether ZARN_ASSERT checks. The macro ZARN_ASSERTIONS comes from the CMake
// option of that name, which the presets for development set.
#ifdef ZARN_ASSERTIONS
#define ZARN_HAS_ASSERTIONS true
#else
#define ZARN_HAS_ASSERTIONS false
#endif

/// Check what our own code guarantees: end the program where @p condition does
/// not hold, with the place, the condition and some numbers on standard error.
///
///     ZARN_ASSERT(cell < cells, cell, cells);
///
/// Compiled to nothing unless ZARN_ASSERTIONS is defined. What a caller's path,
/// table or tolerance can hold is not asserted: it has a defined result. Not
/// for headers that are installed or that batch kernels include, which would be
/// compiled both with it and without.
#define ZARN_ASSERT(condition, ...)                                          \
  (!ZARN_HAS_ASSERTIONS || (condition)                                       \
       ? static_cast<void>(0)                                                \
       : ::ZARN::FailAssertion(__FILE__, __LINE__, #condition, #__VA_ARGS__, \
                               __VA_ARGS__))

namespace ZARN {

[[noreturn]] void AbortAt(const char* file, int line, const std::string& text);

template <class... Numbers>
[[noreturn]] void FailAssertion(const char* file, int line,
                                const char* condition, const char* names,
                                const Numbers&... numbers) {
  constexpr int kDigitsOfADouble = 17;
  std::ostringstream text;
  text.precision(kDigitsOfADouble);
  text << condition << " does not hold: " << names << " = ";
  const char* separator = "";
  // The sign makes a number of what would be written as a character.
  ((text << separator << +numbers, separator = ", "), ...);
  AbortAt(file, line, text.str());
}

}  // namespace ZARN

#pragma once

#include <sstream>
#include <string>

// Whether ZARN_ASSERT checks anything. ZARN_ASSERTIONS comes from the CMake
// option of that name, which the presets for development set.
#ifdef ZARN_ASSERTIONS
#define ZARN_HAS_ASSERTIONS true
#else
#define ZARN_HAS_ASSERTIONS false
#endif

/// Check a guarantee of our own code: if @p condition is false, print the
/// place, the condition and some numbers to standard error, and abort.
///
///     ZARN_ASSERT(cell < cells, cell, cells);
///
/// Compiled to nothing unless ZARN_ASSERTIONS is defined. Do not assert what
/// depends on a caller's path, table or tolerance: every value has a defined
/// result. Do not use it in headers that are installed or included by batch
/// kernels: those are compiled both with and without it.
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
  // Unary plus prints a character type as a number.
  ((text << separator << +numbers, separator = ", "), ...);
  AbortAt(file, line, text.str());
}

}  // namespace ZARN

#pragma once

#include <string_view>

namespace ZARN::IO {

/// A parsed number, or why parsing failed.
struct NumberOrReason {
  double value = 0.0;
  const char* reason = nullptr;  ///< null if there is a value
};

/// Parse a whole cell as a number, the same in every locale.
///
/// Accepts decimal and exponent notation, a leading + or -, inf and nan. A
/// number too small for a double becomes the nearest double. A number too large
/// is refused, and so are blanks and anything else.
NumberOrReason ParseNumber(std::string_view cell);

}  // namespace ZARN::IO

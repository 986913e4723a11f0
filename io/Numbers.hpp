#pragma once

#include <string_view>

namespace ZARN::IO {

/// A number that was read, or why it is none.
struct NumberOrReason {
  double value = 0.0;
  const char* reason = nullptr;  ///< null when there is a value
};

/// The number that a whole cell holds, whatever the locale.
///
/// Decimal and exponent notation, a leading + or -, inf and nan. What is too
/// small for a double becomes the nearest one; what is too large is refused,
/// and so are blanks and anything else.
NumberOrReason ParseNumber(std::string_view cell);

}  // namespace ZARN::IO

#pragma once

#include <string>
#include <string_view>

namespace ZARN::IO {

/// Text from a file, for messages: control characters are escaped, so that a
/// file cannot control the terminal, and long text is truncated.
std::string Printable(std::string_view text);

/// The same in quotes, for text that may be empty or end in a blank.
std::string Quoted(std::string_view text);

}  // namespace ZARN::IO

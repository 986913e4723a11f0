#pragma once

#include <string>
#include <string_view>

namespace ZARN::IO {

/// Text from a file or a database: control characters are escaped, so that it
/// cannot control the terminal.
std::string Escaped(std::string_view text);

/// The same for messages: long text is truncated.
std::string Printable(std::string_view text);

/// The same in quotes, for text that may be empty or end in a blank.
std::string Quoted(std::string_view text);

}  // namespace ZARN::IO

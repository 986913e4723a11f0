#pragma once

#include <string>
#include <string_view>

namespace ZARN::IO {

/// Text from a file as it is shown in messages: on one line, control characters
/// written out (so that a file cannot command the terminal), and the end of
/// long ones left out.
std::string Printable(std::string_view text);

/// The same in quotes, for text that may be empty or end in a blank.
std::string Quoted(std::string_view text);

}  // namespace ZARN::IO

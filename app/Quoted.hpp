#pragma once

#include <string>
#include <string_view>

namespace ZARN::App {

/// Text from a file as it is shown in messages: in quotes, on one line, control
/// characters written out (so that a file cannot command the terminal), and the
/// end of long ones left out.
std::string Quoted(std::string_view text);

}  // namespace ZARN::App

#pragma once

#include <string>
#include <string_view>

namespace ZARN::Display {

/// Any text as text of an HTML page, outside of scripts: never a tag, a
/// reference or the end of an attribute. What is not UTF-8, and characters that
/// HTML does not allow, become U+FFFD.
std::string HtmlText(std::string_view text);

/// Any text as UTF-8: what is not becomes U+FFFD.
std::string ValidUtf8(std::string_view text);

}  // namespace ZARN::Display

#include "io/Quoted.hpp"

namespace ZARN::IO {

std::string Escaped(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string escaped;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    constexpr unsigned char kDelete = 0x7F;
    if (code >= ' ' && code != kDelete) {
      escaped += c;
    } else {
      escaped += "\\x";
      escaped += kDigits[code / 16U];
      escaped += kDigits[code % 16U];
    }
  }
  return escaped;
}

std::string Printable(std::string_view text) {
  constexpr std::size_t kShown = 60;
  return Escaped(text.substr(0, kShown)) + (text.size() > kShown ? "..." : "");
}

std::string Quoted(std::string_view text) {
  return "\"" + Printable(text) + "\"";
}

}  // namespace ZARN::IO

#include "io/Quoted.hpp"

namespace ZARN::IO {

std::string Printable(std::string_view text) {
  constexpr std::size_t kShown = 60;
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string printable;
  for (const char c : text.substr(0, kShown)) {
    const auto code = static_cast<unsigned char>(c);
    constexpr unsigned char kDelete = 0x7F;
    if (code >= ' ' && code != kDelete) {
      printable += c;
    } else {
      printable += "\\x";
      printable += kDigits[code / 16U];
      printable += kDigits[code % 16U];
    }
  }
  return printable + (text.size() > kShown ? "..." : "");
}

std::string Quoted(std::string_view text) {
  return "\"" + Printable(text) + "\"";
}

}  // namespace ZARN::IO

#include "app/Quoted.hpp"

namespace ZARN::App {

std::string Quoted(std::string_view text) {
  constexpr std::size_t kShown = 60;
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char c : text.substr(0, kShown)) {
    const auto code = static_cast<unsigned char>(c);
    constexpr unsigned char kDelete = 0x7F;
    if (code >= ' ' && code != kDelete) {
      quoted += c;
    } else {
      quoted += "\\x";
      quoted += kDigits[code / 16U];
      quoted += kDigits[code % 16U];
    }
  }
  return quoted + (text.size() > kShown ? "...\"" : "\"");
}

}  // namespace ZARN::App

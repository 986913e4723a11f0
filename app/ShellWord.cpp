#include "app/ShellWord.hpp"

#include <string_view>

namespace ZARN::App {

std::string ShellWord(const std::string& text) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
      "_-+./:=,@%";
  if (!text.empty() &&
      text.find_first_not_of(kPlain) == std::string_view::npos) {
    return text;
  }
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? "'\\''" : std::string(1, c);
  return word + "'";
}

}  // namespace ZARN::App

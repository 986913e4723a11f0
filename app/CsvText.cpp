#include "app/CsvText.hpp"

#include <array>
#include <charconv>

namespace ZARN::App {

std::string CsvCell(std::string_view text) {
  if (text.find_first_of("\",\r\n") == std::string_view::npos) {
    return std::string(text);
  }
  std::string cell = "\"";
  for (const char c : text) {
    if (c == '"') cell += '"';
    cell += c;
  }
  return cell + '"';
}

void AppendNumber(std::string& text, double value) {
  std::array<char, 32> digits;  // the longest takes 24
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), value);
  text.append(digits.data(), result.ptr);
}

}  // namespace ZARN::App

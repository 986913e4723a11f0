#include "io/CsvText.hpp"

#include <array>
#include <charconv>

namespace ZARN::IO {
namespace {

template <class Value>
void AppendDigits(std::string& text, Value value) {
  std::array<char, 32> digits;  // at most 24 are used
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), value);
  text.append(digits.data(), result.ptr);
}

}  // namespace

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
  AppendDigits(text, value);
}

void AppendNumber(std::string& text, std::uint64_t value) {
  AppendDigits(text, value);
}

}  // namespace ZARN::IO

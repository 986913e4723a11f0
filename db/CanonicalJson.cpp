#include "db/CanonicalJson.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>
#include <variant>

namespace ZARN {

void AppendJson(std::string& text, double number, eMinusZero minusZero) {
  std::array<char, 32> digits;  // at most 24 are used
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), number);
  text.append(digits.data(), result.ptr);
  const bool isMinusZero = number == 0.0 && std::signbit(number);
  if (isMinusZero && minusZero == eMinusZero::kReadsBack) text += ".0";
}

void AppendJson(std::string& text, const std::string& string) {
  // Text that is not UTF-8 cannot come from a file; it must not throw here.
  constexpr auto kReplace = nlohmann::json::error_handler_t::replace;
  text += nlohmann::json(string).dump(-1, ' ', false, kReplace);
}

void AppendJson(std::string& text, const std::vector<double>& numbers,
                eMinusZero minusZero) {
  text += '[';
  std::string_view separator;
  for (const double number : numbers) {
    text += separator;
    AppendJson(text, number, minusZero);
    separator = ",";
  }
  text += ']';
}

void AppendJson(std::string& text,
                const std::map<std::string, TableField>& fields,
                eMinusZero minusZero) {
  text += '{';
  std::string_view separator;
  for (const auto& [name, field] : fields) {
    text += separator;
    AppendJson(text, name);
    text += ':';
    if (const auto* const string = std::get_if<std::string>(&field)) {
      AppendJson(text, *string);
    } else if (const auto* const number = std::get_if<double>(&field)) {
      AppendJson(text, *number, minusZero);
    } else {
      AppendJson(text, std::get<std::vector<double>>(field), minusZero);
    }
    separator = ",";
  }
  text += '}';
}

std::string JsonOfFields(const std::map<std::string, TableField>& fields) {
  std::string text;
  AppendJson(text, fields);
  return text;
}

}  // namespace ZARN

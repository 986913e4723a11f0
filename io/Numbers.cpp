#include "io/Numbers.hpp"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <string>
#include <system_error>

namespace ZARN::IO {
namespace {

/// from_chars does not distinguish too small from too large; strtod does.
double RoundedToDouble(std::string_view cell) {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(std::string(cell).c_str(), nullptr, plain);
}

}  // namespace

NumberOrReason ParseNumber(std::string_view cell) {
  constexpr const char* kNoNumber = "is not a number";
  std::string_view digits = cell;
  if (!digits.empty() && digits.front() == '+') {
    digits.remove_prefix(1);
    if (!digits.empty() && digits.front() == '-') return {0.0, kNoNumber};
  }
  NumberOrReason result;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, result.value);
  if (error == std::errc::invalid_argument || stop != end) {
    return {0.0, kNoNumber};
  }
  if (error == std::errc::result_out_of_range) {
    result.value = RoundedToDouble(digits);
    if (std::isinf(result.value)) {
      return {0.0, "is too large for a double"};
    }
  }
  return result;
}

}  // namespace ZARN::IO

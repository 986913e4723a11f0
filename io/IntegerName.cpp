#include "io/IntegerName.hpp"

#include <charconv>
#include <string>

namespace ZARN::IO {

std::optional<std::int64_t> IntegerOf(std::string_view name) {
  std::int64_t value = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  if (std::to_string(value) != name) return std::nullopt;
  return value;
}

}  // namespace ZARN::IO

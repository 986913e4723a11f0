#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace ZARN::IO {

/// The value of a name that is a whole number of 64 bits in its usual form, so
/// that nothing is lost when it is stored as a number: 7 and -12, not 007, +7
/// or 7.0. Nullopt for other names.
std::optional<std::int64_t> IntegerOf(std::string_view name);

}  // namespace ZARN::IO

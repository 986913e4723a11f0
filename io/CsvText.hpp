#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ZARN::IO {

/// Text as a CSV cell (RFC 4180), quoted if needed.
std::string CsvCell(std::string_view text);

/// Append the shortest decimal that reads back as the same double.
void AppendNumber(std::string& text, double value);
void AppendNumber(std::string& text, std::uint64_t value);

}  // namespace ZARN::IO

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ZARN::IO {

/// A text as one cell of CSV (RFC 4180), in quotes where it needs them.
std::string CsvCell(std::string_view text);

/// Append the shortest decimal that reads back as the same double.
void AppendNumber(std::string& text, double value);
void AppendNumber(std::string& text, std::uint64_t value);

}  // namespace ZARN::IO

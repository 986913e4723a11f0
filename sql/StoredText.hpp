#pragma once

#include <string>
#include <string_view>

#include "db/TableEntry.hpp"

namespace ZARN::SQL {

bool IsUtf8(std::string_view text);

/// Require what both engines can hold: UTF-8 without the character NUL.
///
/// @param what  what the text is, for the message: "the author"
/// @throws std::invalid_argument
void RequireStorable(std::string_view text, const std::string& what);

/// An entry in words: "SOLID/hold_down_rope, pass 1, runs from 100".
std::string TextOf(const TableEntry& entry);

}  // namespace ZARN::SQL

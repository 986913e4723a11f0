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

/// A range of runs in words: "runs 100 to 200", "run 7", "runs from 100",
/// "runs to 200", "all runs".
std::string TextOf(const RunRange& runs);

/// An entry in words: "SOLID/hold_down_rope, pass 1, runs from 100".
std::string TextOf(const TableEntry& entry);

}  // namespace ZARN::SQL

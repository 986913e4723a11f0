#pragma once

#include <string>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN {

/// Table entries as JSON text that ParseJsonTables (db/JsonTables.hpp) reads:
/// the same entries in the same order, every double to the last bit.
///
/// Laid out for people: one field a line, long arrays in lines of at most 100
/// characters. "runs" and "pass" are written where they are not the default.
/// Numbers are written as in db/CanonicalJson.hpp and must be finite. Sources
/// and places are not written.
std::string JsonText(const std::vector<TableEntry>& entries);

}  // namespace ZARN

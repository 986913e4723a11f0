#pragma once

#include <string>

#include "db/TableEntry.hpp"

namespace ZARN::SQL {

/// The fields of an entry as the database holds them: JsonOfFields
/// (db/CanonicalJson.hpp), which ParseJsonFields reads back bit for bit.
///
/// @throws std::invalid_argument naming what JSON cannot hold: a number that is
///         not finite, or text that is not UTF-8
std::string WriteFields(const TableEntry& entry);

/// Text of WriteFields as fingerprints have it, where -0.0 is -0.
///
/// @throws TableFileError if the text is damaged
std::string ToFingerprintText(std::string text);

}  // namespace ZARN::SQL

#pragma once

#include <string>

namespace ZARN::SQL {

/// The connection of SOCI to an SQLite file.
///
/// @param file  any name; it is escaped
/// @param mode  "rw", or "rwc" to make the file where there is none
std::string ConnectionToFile(const std::string& file, const std::string& mode);

/// Why an SQLite file cannot be opened, as far as the file system says; empty
/// if there is no reason.
///
/// @param mayBeMade  a file that is missing is made
std::string ReasonAgainst(const std::string& file, bool mayBeMade);

}  // namespace ZARN::SQL

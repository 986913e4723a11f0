#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN {

class DB;

/// A table file that cannot be used. The text names the file, the line and the
/// JSON path of what is wrong with it.
class TableFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Read table entries from JSON text:
///
///     [ {"table": "SOLID", "index": "rope", "fields": {"r_rope": 12.5}},
///       {"table": "GEO", "index": "hold_up_ropes", "runs": [1000, null],
///        "pass": 1, "fields": {"solid_definition": "rope"}} ]
///
/// "table", "index" and "fields" are required; "runs" is the inclusive range of
/// runs (null: open; default: all runs), "pass" a whole number from 0 (default
/// 0). A field is a number, an array of numbers or a string.
///
/// @param text  JSON, UTF-8
/// @param name  what to call the text in errors, usually its file name
/// @throws TableFileError for anything else: other keys, another shape, a key
///         given twice, a number that a double cannot hold
std::vector<TableEntry> ParseJsonTables(const std::string& text,
                                        const std::string& name);

/// Read table entries from a file, or from every *.json file of a directory in
/// the order of their names.
///
/// @throws TableFileError as ParseJsonTables; also if the path cannot be read,
///         if a directory holds no *.json, or for a file above 256 MiB
std::vector<TableEntry> ReadJsonTables(const std::string& path);

/// Add to @p db what ReadJsonTables reads. If that throws, the database is as
/// it was, also where only the last file of a directory is bad.
void LoadJsonTables(DB& db, const std::string& path);

}  // namespace ZARN

#pragma once

#include <map>
#include <string>
#include <vector>

#include "db/DBErrors.hpp"
#include "db/TableEntry.hpp"
#include "db/TableSet.hpp"

namespace ZARN {

/// Read table entries from JSON text:
///
///     [ {"table": "SOLID", "index": "rope", "fields": {"r_rope": 12.5}},
///       {"table": "GEO", "index": "hold_up_ropes", "runs": [1000, null],
///        "pass": 1, "fields": {"solid_definition": "rope"}} ]
///
/// "table", "index" and "fields" are required. "runs" is the inclusive range of
/// runs (null: no limit; default: all runs), "pass" an integer >= 0 (default
/// 0). A field is a number, an array of numbers or a string.
///
/// @param text  JSON, UTF-8
/// @param name  name of the text in error messages, usually the file name
/// @throws TableFileError for anything else: unknown keys, a wrong structure, a
///         key given twice, a number that a double cannot hold
std::vector<TableEntry> ParseJsonTables(const std::string& text,
                                        const std::string& name);

/// Read the fields of one entry from JSON text, as JsonOfFields
/// (db/CanonicalJson.hpp) writes them: {"r_rope":12.5}
///
/// @throws TableFileError as ParseJsonTables
std::map<std::string, TableField> ParseJsonFields(const std::string& text,
                                                  const std::string& name);

/// The table files at a path: the file itself, or every *.json file of a
/// directory, sorted by name.
///
/// @throws TableFileError if a directory cannot be read or holds no *.json
std::vector<std::string> TableFiles(const std::string& path);

/// Read table entries from all TableFiles.
///
/// @throws TableFileError as TableFiles and ParseJsonTables; also if a file
///         cannot be read or is above 256 MiB
std::vector<TableEntry> ReadJsonTables(const std::string& path);

/// Add the entries of ReadJsonTables to @p tables. If it throws, @p tables is
/// unchanged, even if only the last file of a directory is bad.
void LoadJsonTables(TableSet& tables, const std::string& path);

}  // namespace ZARN

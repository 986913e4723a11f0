#pragma once

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

/// The files that hold the tables at a path: the file itself, or every *.json
/// file of a directory, in the order of their names.
///
/// @throws TableFileError if a directory cannot be read or holds no *.json
std::vector<std::string> TableFiles(const std::string& path);

/// Read table entries from all TableFiles.
///
/// @throws TableFileError as TableFiles and ParseJsonTables; also if a file
///         cannot be read or is above 256 MiB
std::vector<TableEntry> ReadJsonTables(const std::string& path);

/// Add to @p tables what ReadJsonTables reads. If that throws, they are as they
/// were, also where only the last file of a directory is bad.
void LoadJsonTables(TableSet& tables, const std::string& path);

}  // namespace ZARN

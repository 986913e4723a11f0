#pragma once

#include <optional>
#include <string>
#include <vector>

#include "db/TableSet.hpp"

namespace ZARN {

/// Where tables come from, as --geometry, --override and --as-of say it.
struct TableSource {
  /// A JSON file, a directory of *.json files, "sqlite:FILE" or
  /// "postgresql:CONNECTION".
  std::string name;
  std::string overrides;            ///< JSON laid over it; empty: none
  std::optional<std::string> asOf;  ///< only of a database; none: now
};

/// Read the entries of a source, without what is laid over it.
///
/// @throws TableFileError for JSON; SQL::StoreError for databases;
///         std::invalid_argument for a time that cannot be read, or where the
///         source keeps no history
std::vector<TableEntry> ReadTables(const TableSource& source);

/// Add the entries of a source to @p tables, and what is laid over it. If it
/// throws, @p tables is unchanged.
void LoadTables(TableSet& tables, const TableSource& source);

/// The files that a source reads: inputs that no output may replace. Of a
/// PostgreSQL server, only what is laid over it.
std::vector<std::string> FilesOf(const TableSource& source);

}  // namespace ZARN

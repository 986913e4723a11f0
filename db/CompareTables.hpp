#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN {

/// One field, or one number of an array, that is not the same in two entries.
struct FieldDifference {
  std::string field;
  std::optional<std::size_t> position;  ///< in two arrays, from 0
  std::optional<TableField> before;     ///< none: it is missing there
  std::optional<TableField> after;
};

/// What differs between two sets of tables in one entry, for some runs.
struct EntryDifference {
  enum class eKind { kOnlyBefore, kOnlyAfter, kFields };

  std::string table;
  std::string index;
  RunRange runs;
  eKind kind = eKind::kFields;
  std::vector<FieldDifference> fields = {};  ///< of kFields
};

/// The fields that differ, sorted by name; doubles are the same if all their
/// bits are, so that -0 is not 0. Arrays of different length differ in each
/// position that one of them does not have.
std::vector<FieldDifference> CompareFields(
    const std::map<std::string, TableField>& before,
    const std::map<std::string, TableField>& after);

/// Compare what holds for each run: entries as TableSet selects them by run,
/// pass and order. Entries that are never read, passes and the order of entries
/// do not count, so that two equal sets have the same Fingerprint for every
/// run.
///
/// @param run  compare for this run only; none: for all runs
/// @return sorted by table, index and runs; neighbouring ranges of runs with
///         the same difference are one. With @p run, all have that run.
std::vector<EntryDifference> CompareTables(
    const std::vector<TableEntry>& before, const std::vector<TableEntry>& after,
    const std::optional<int>& run = std::nullopt);

}  // namespace ZARN

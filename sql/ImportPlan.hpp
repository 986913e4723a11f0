#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sql/Rows.hpp"

namespace ZARN::SQL {

/// An entry to add, with its fields as text.
struct PlannedEntry {
  TableEntry entry;
  std::string fields;
};

/// What an import adds.
struct ImportPlan {
  std::vector<PlannedEntry> added;
  std::size_t unchanged = 0;
};

/// Compare the entries of an import with those that stand.
///
/// Of entries with the same table, index and pass, the one added last counts,
/// so an import must not change which fields a pass has for a run. An entry is
/// left out if entries that stand already cover its runs with these fields. An
/// entry that differs for one of its runs is refused.
///
/// With @p asNewPass, what the import says is in use afterwards: if readers get
/// other fields for some of its runs, all its entries of this table and index
/// get passes above those that stand for their runs, in their own order. If
/// readers get these fields already, they are left out.
///
/// @throws ImportRefused naming entries that differ
///         std::invalid_argument naming an entry that cannot be stored
ImportPlan PlanImport(std::vector<TableEntry> entries,
                      const std::vector<Row>& standing, RowTexts& texts,
                      bool asNewPass);

}  // namespace ZARN::SQL

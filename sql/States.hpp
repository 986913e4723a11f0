#pragma once

#include <vector>

#include "sql/Rows.hpp"

namespace ZARN::SQL {

/// Write the states that an import makes: for the runs of its entries, the
/// fingerprint of the tables as they then stand.
///
/// @param rows  all entries, those of this import last
void AddStates(Connection& connection, const std::vector<Row>& rows,
               RowTexts& texts);

/// Write the states of every import.
void AddStatesOfAllImports(Connection& connection);

}  // namespace ZARN::SQL

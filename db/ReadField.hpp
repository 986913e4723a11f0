#pragma once

#include <string>
#include <vector>

#include "db/TableSet.hpp"

namespace ZARN {

// Each read takes its own link with pass -1, the highest pass, and releases it
// at once. Numbers are returned as stored. All throw DBNotFoundError if the
// table, the entry or the field is missing or the field has another type.

double ReadNumber(const TableSet& tables, const std::string& table,
                  const std::string& index, const std::string& field);
std::vector<double> ReadNumbers(const TableSet& tables,
                                const std::string& table,
                                const std::string& index,
                                const std::string& field);
std::string ReadString(const TableSet& tables, const std::string& table,
                       const std::string& index, const std::string& field);

/// Whether a field is a single number, not an array or a string.
bool IsNumber(const TableSet& tables, const std::string& table,
              const std::string& index, const std::string& field);

}  // namespace ZARN

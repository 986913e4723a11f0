#pragma once

#include <limits>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace ZARN {

/// The inclusive range of runs for which an entry is valid.
struct RunRange {
  int first = std::numeric_limits<int>::min();  ///< the lowest int: open
  int last = std::numeric_limits<int>::max();   ///< the highest int: open

  bool Contains(int run) const { return first <= run && run <= last; }
};

/// One value of an entry: a number, an array of numbers, or a string.
using TableField = std::variant<double, std::vector<double>, std::string>;

/// One entry of one table, the unit in which sources fill a set of tables.
struct TableEntry {
  std::string table;
  std::string index;
  RunRange runs;
  int pass = 0;  ///< >= 0; a higher pass supersedes a lower one
  std::map<std::string, TableField> fields;
};

}  // namespace ZARN

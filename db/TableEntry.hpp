#pragma once

#include <limits>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace ZARN {

/// The inclusive range of runs for which an entry is valid.
struct RunRange {
  int first = std::numeric_limits<int>::min();  ///< lowest int: no limit
  int last = std::numeric_limits<int>::max();   ///< highest int: no limit

  bool Contains(int run) const { return first <= run && run <= last; }
};

/// Where an entry or a field stands in the text that it comes from; 0 where it
/// comes from no text, as from a database.
struct TextPlace {
  int line = 0;    ///< from 1
  int column = 0;  ///< from 1, in bytes
};

/// One value of an entry: a number, an array of numbers, or a string.
using TableField = std::variant<double, std::vector<double>, std::string>;

/// One entry of one table; table sources add whole entries to a set.
struct TableEntry {
  std::string table;
  std::string index;
  RunRange runs;
  int pass = 0;  ///< >= 0; a higher pass replaces a lower one
  std::map<std::string, TableField> fields;

  // For messages; two entries that differ only here have the same content. The
  // initializers allow to leave them out.
  std::string source = {};  ///< name of the file or database
  TextPlace place = {};     ///< where the entry begins
  /// Where its fields begin, at their keys.
  std::map<std::string, TextPlace> places = {};
};

}  // namespace ZARN

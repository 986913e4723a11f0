#pragma once

#include <map>
#include <string>
#include <vector>

#include "sql/Connection.hpp"

namespace ZARN::SQL {

/// An entry in the database. Its fields, which can be large, are read when they
/// are needed: RowTexts.
struct Row {
  long long id = 0;      ///< in the order added
  long long import = 0;  ///< number of the import that added it
  TableEntry entry;      ///< without its fields
};

/// All entries, in the order added.
std::vector<Row> ReadRows(Connection& connection);

/// The fields of rows as text of WriteFields, read once each.
class RowTexts {
 public:
  explicit RowTexts(Connection& connection) : connection_(connection) {}

  const std::string& Of(long long id);
  /// For a row that has just been added.
  void Put(long long id, std::string text) {
    texts_.insert_or_assign(id, std::move(text));
  }

 private:
  Connection& connection_;
  std::map<long long, std::string> texts_;
};

/// A limit of a range of runs as the database holds it, where NULL is no limit.
struct RunLimit {
  int run = 0;
  soci::indicator isNull = soci::i_ok;
};
RunLimit FirstLimit(const RunRange& runs);
RunLimit LastLimit(const RunRange& runs);
RunRange RunsBetween(const RunLimit& first, const RunLimit& last);

}  // namespace ZARN::SQL

#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "db/DBErrors.hpp"
#include "db/DBLink.hpp"
#include "db/SimplePtrNoCopy.hpp"
#include "db/TableEntry.hpp"

namespace ZARN {

/// The constants database: named tables, whose entries are selected by an
/// index, the current run and a pass number.
///
/// It lives in memory; sources (db/JsonTables.hpp) fill it. Links may be taken
/// from several threads as long as none changes entries or run.
class DB {
 public:
  /// A pass argument: the highest pass there is.
  static constexpr int kHighestPass = -1;

  /// The one database of the process, made at the first call.
  static DB& Get();

  DB(const DB&) = delete;
  DB& operator=(const DB&) = delete;

  /// Add entries. Later ones win over earlier ones of the same table, index
  /// and pass. Either all are added or, if an exception leaves, none.
  void Add(std::vector<TableEntry> entries);

  /// Remove all entries; the run stays.
  void Clear();

  /// The run for which links are taken; 0 at first.
  void SetRun(int run) { run_ = run; }
  int GetRun() const { return run_; }

  /// Take a link to an entry that is valid for the current run.
  ///
  /// @param table  table name
  /// @param index  entry name
  /// @param pass   a pass number, of which the entry added last is taken, or
  ///               kHighestPass
  /// @throws DBNotFoundError if there is no such entry
  simple_ptr_nocopy<DBLink> GetLink(std::string table, std::string index,
                                    int pass) const;

 private:
  DB() = default;

  using Key = std::pair<std::string, std::string>;  // table, index
  using Entries = std::vector<std::shared_ptr<const TableEntry>>;

  std::map<Key, Entries> entries_;  // each list in the order of adding
  int run_ = 0;
};

}  // namespace ZARN

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

/// Named tables, whose entries are selected by an index, a run and a pass
/// number.
///
///     ZARN::TableSet tables;
///     ZARN::LoadJsonTables(tables, "planned-detector");
///     tables.SetRun(20000);
///     calculator.BeginOfRun(tables);  // reads these, not ZARN::DB::Get()
///
/// It lives in memory; sources (db/JsonTables.hpp) fill it. Numbers are stored
/// as they come: lengths in mm and angles in rad, as their readers expect.
/// Copies share the entries, which never change, and are independent otherwise.
/// Links may be taken from several threads as long as none changes this set.
class TableSet {
 public:
  /// A pass argument: the highest pass there is.
  static constexpr int kHighestPass = -1;

  /// Add entries. Later ones win over earlier ones of the same table, index
  /// and pass. If this throws, none is added.
  void Add(std::vector<TableEntry> entries);

  /// Remove all entries; the run stays.
  void Clear();

  /// The run for which links are taken; 0 at first.
  void SetRun(int run) { run_ = run; }
  int GetRun() const { return run_; }

  /// Take a link to an entry that is valid for the run of this set.
  ///
  /// @param table  table name
  /// @param index  entry name
  /// @param pass   a pass number, of which the entry added last is taken, or
  ///               kHighestPass
  /// @throws DBNotFoundError if there is no such entry
  simple_ptr_nocopy<DBLink> GetLink(std::string table, std::string index,
                                    int pass) const;

 private:
  using Key = std::pair<std::string, std::string>;  // table, index
  using Entries = std::vector<std::shared_ptr<const TableEntry>>;

  std::map<Key, Entries> entries_;  // each list in the order of adding
  int run_ = 0;
};

}  // namespace ZARN

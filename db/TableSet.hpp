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
/// The tables are in memory; sources (db/JsonTables.hpp) fill them. Numbers are
/// stored unchanged: lengths in mm and angles in rad, as their readers expect.
/// Copies share the entries, which never change, but are otherwise independent.
/// Taking links is thread-safe while no thread changes this set.
class TableSet {
 public:
  /// Pass argument that selects the highest pass.
  static constexpr int kHighestPass = -1;

  /// Add entries. Of those valid for a run with the same table, index and pass,
  /// the one added last is used. If this throws, none is added.
  void Add(std::vector<TableEntry> entries);

  /// Lay entries over the others: where one is valid for a run, it replaces
  /// the added entries of its table and index, whatever their passes are, also
  /// those added later. Among entries laid over, pass and order decide as in
  /// Add. If this throws, none is laid over.
  void Override(std::vector<TableEntry> entries);

  /// Remove all entries; keep the run.
  void Clear();

  /// The run for which links are taken; initially 0.
  void SetRun(int run) { run_ = run; }
  int GetRun() const { return run_; }

  /// Take a link to an entry that is valid for the current run.
  ///
  /// @param table  table name
  /// @param index  entry name
  /// @param pass   a pass number or kHighestPass; if several entries match, the
  ///               one added last is used
  /// @throws DBNotFoundError if there is no such entry
  simple_ptr_nocopy<DBLink> GetLink(std::string table, std::string index,
                                    int pass) const;

  /// The entries that links with kHighestPass lead to, sorted by table and
  /// index: what is valid for the current run.
  std::vector<std::shared_ptr<const TableEntry>> CurrentEntries() const;

  /// All entries of one table and index, for all runs: those added, then those
  /// laid over them.
  std::vector<std::shared_ptr<const TableEntry>> Versions(
      const std::string& table, const std::string& index) const;

 private:
  using Key = std::pair<std::string, std::string>;  // table, index
  using Entries = std::vector<std::shared_ptr<const TableEntry>>;

  /// The entries of one table and index, each list in the order added.
  struct EntryVersions {
    Entries added;
    Entries overriding;
  };

  /// Put entries into one list of their versions.
  void Append(std::vector<TableEntry> entries, Entries EntryVersions::*list);
  std::shared_ptr<const TableEntry> Select(const EntryVersions& versions,
                                           int pass) const;

  std::map<Key, EntryVersions> entries_;
  int run_ = 0;
};

}  // namespace ZARN

#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN::SQL {

/// A database or its server refuses, cannot be reached, is damaged, or has a
/// schema that this program does not know. The text names the database, never a
/// password.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A database cannot be written: the disk is full, there is no permission, or
/// the connection was lost.
class WriteError : public StoreError {
 public:
  using StoreError::StoreError;
};

/// Entries cannot be imported: an entry that stands would be overwritten. The
/// text names table, index, pass and runs, and what would be right.
class ImportRefused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One import: what one call of TableStore::Import added.
struct Import {
  long long number = 0;  ///< from 1, in the order of time
  std::string time;      ///< UTC: 2026-01-31T12:00:00.000000Z
  std::string author;
  std::string reason;
  std::string source;       ///< what was imported: name of the file or folder
  std::size_t entries = 0;  ///< number of entries added
};

/// An entry with the import that added it.
struct StoredEntry {
  TableEntry entry;
  Import import;
};

/// What Import did with its entries.
struct ImportResult {
  std::optional<Import> import;  ///< none if all entries stood already
  std::vector<TableEntry> added;
  std::size_t unchanged = 0;  ///< entries that stood already
};

/// What the author of an import says of it.
struct ImportNote {
  std::string author;
  std::string reason;
  std::string source;
};

/// A state of the tables for a range of runs: from the import that made it to
/// the next one with entries for these runs.
struct TableState {
  Import import;  ///< the import that made it
  RunRange runs;
};

/// Geometry tables by run in an SQL database, with their history: entries are
/// added, never changed or removed. A new pass of an entry supersedes it.
///
/// One import is one transaction: whoever reads sees all of it or nothing, also
/// after a crash. Two programs may import at the same time; one waits.
class TableStore {
 public:
  /// Whether a source of tables names a database: it begins with sqlite: or
  /// postgresql:
  static bool IsStore(std::string_view source);

  /// Open a database for reading; needs no write permission.
  ///
  /// @param source  "sqlite:FILE", or "postgresql:CONNECTION" with
  ///                "key=value ..." or "//host/dbname" as libpq takes it, but
  ///                without a password: that comes from the environment
  ///                (PGPASSWORD) or the password file
  /// @throws StoreError also if it is not a database of tables
  static TableStore OpenToRead(const std::string& source);
  /// Open a database for importing. Makes the schema where there is none
  /// (SQLite: also the file), and brings an older one up to date.
  ///
  /// @throws StoreError, WriteError
  static TableStore OpenToImport(const std::string& source);

  TableStore(TableStore&&) noexcept;
  TableStore& operator=(TableStore&&) noexcept;
  ~TableStore();

  /// The version of the schema that OpenToImport brought up to date; none if
  /// there was nothing to do.
  std::optional<int> MigratedFrom() const;

  /// Add entries in one transaction.
  ///
  /// An entry is left out if entries of its table, index and pass already have
  /// these fields for all of its runs. It is refused if one of them has other
  /// fields for one of its runs.
  ///
  /// @param asNewPass  instead, make sure that readers get what @p entries say:
  ///                   where they get other fields for one of the runs, all
  ///                   entries of the table and index get passes above those
  ///                   that stand for their runs, in their own order; where
  ///                   they get exactly these fields already, they are left out
  /// @throws ImportRefused also for what cannot be stored: a number that is not
  ///         finite, text that is not UTF-8
  /// @throws WriteError; except where it says that the connection was lost at
  ///         the end, nothing was added
  ImportResult Import(std::vector<TableEntry> entries, const ImportNote& note,
                      bool asNewPass);

  /// All entries, in the order added.
  ///
  /// @param asOf  read what stood at this time (ParseTime); none: now
  /// @throws StoreError, std::invalid_argument for a time that cannot be read
  std::vector<TableEntry> Read(const std::optional<std::string>& asOf) const;

  /// The imports, oldest first.
  std::vector<SQL::Import> Imports() const;

  /// The entries with their imports, in the order added.
  std::vector<StoredEntry> History() const;

  /// The states whose Fingerprint (db/Fingerprint.hpp) this is, oldest first.
  ///
  /// @throws StoreError also for a schema of version 1, which has no states
  std::vector<TableState> FindStates(const std::string& fingerprint) const;

 private:
  class Session;
  explicit TableStore(std::unique_ptr<Session> session);
  std::unique_ptr<Session> session_;
};

/// A time as the store writes it, from what people write: a date
/// (2026-01-31: its end), a time in UTC (2026-01-31T12:00:00Z), with an offset
/// (+01:00), or with fractions of a second.
///
/// @throws std::invalid_argument naming the text and what is expected
std::string ParseTime(const std::string& text);

}  // namespace ZARN::SQL

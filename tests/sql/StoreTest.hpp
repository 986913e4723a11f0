#pragma once

#include <gtest/gtest.h>
#include <soci/postgresql/soci-postgresql.h>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "sql/TableStore.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::SQL::Testing {

/// What follows postgresql: for the server of tests/sql/postgresql.py; null
/// where the tests run without a server, which ctest never does in the release
/// build.
inline const char* ServerOfTests() {
  return std::getenv("ZARN_TEST_POSTGRESQL");
}

inline std::vector<std::string> Engines() {
  if (ServerOfTests() == nullptr) return {"sqlite"};
  return {"sqlite", "postgresql"};
}

inline std::string NameOfEngine(
    const testing::TestParamInfo<std::string>& info) {
  return info.param;
}

/// A test with a database of its own, in which there is nothing yet; its
/// parameter is the engine.
// NOLINTNEXTLINE(misc-multiple-inheritance): as GoogleTest has it
class StoreTest : public ZARN::Testing::InFolder,
                  public testing::WithParamInterface<std::string> {
 protected:
  void SetUp() override {
    InFolder::SetUp();
    if (!IsServer()) return;
    static int number = 0;
    schema_ = "test_" + std::to_string(++number);
    soci::session(soci::postgresql, ServerOfTests())
        << "CREATE SCHEMA " << schema_;
  }

  static bool IsServer() { return GetParam() == "postgresql"; }

  /// What follows postgresql: for this test.
  std::string Connection() const {
    return ServerOfTests() + std::string(" options='-c search_path=") +
           schema_ + " -c client_min_messages=warning'";
  }

  /// The name of the database.
  std::string Source() const {
    return IsServer() ? "postgresql:" + Connection() : "sqlite:tables.db";
  }

  TableStore ToRead() const { return TableStore::OpenToRead(Source()); }
  TableStore ToImport() const { return TableStore::OpenToImport(Source()); }

  /// Work on the database past the store.
  soci::session Past() const {
    return IsServer() ? soci::session(soci::postgresql, Connection())
                      : soci::session(soci::sqlite3, "db=tables.db timeout=60");
  }
  void Execute(const std::string& statement) const { Past() << statement; }
  int Count(const std::string& table) const {
    int number = -1;
    Past() << "SELECT count(*) FROM " << table, soci::into(number);
    return number;
  }

  const std::string& Schema() const { return schema_; }

 private:
  std::string schema_;  // of a server: one for each test
};

/// An entry with one number.
inline TableEntry Entry(const std::string& table, const std::string& index,
                        double value, RunRange runs = {}, int pass = 0) {
  TableEntry entry;
  entry.table = table;
  entry.index = index;
  entry.runs = runs;
  entry.pass = pass;
  entry.fields["value"] = value;
  return entry;
}

inline ImportNote Note(const std::string& reason = "survey") {
  return {"a. author", reason, "tables.json"};
}

}  // namespace ZARN::SQL::Testing

namespace ZARN {

/// For tests: the same content.
inline bool operator==(const TableEntry& a, const TableEntry& b) {
  return a.table == b.table && a.index == b.index &&
         a.runs.first == b.runs.first && a.runs.last == b.runs.last &&
         a.pass == b.pass && a.fields == b.fields;
}

inline void PrintTo(const TableEntry& entry, std::ostream* out) {
  *out << entry.table << "/" << entry.index << " pass " << entry.pass
       << " runs " << entry.runs.first << " to " << entry.runs.last << " with "
       << entry.fields.size() << " fields";
}

}  // namespace ZARN

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "db/Fingerprint.hpp"
#include "sql/TableStore.hpp"
#include "tests/sql/StoreTest.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::SQL {
namespace {

using Testing::Entry;
using Testing::Note;
using ZARN::Testing::TextOf;

/// A database of version 1 with three imports, as it was written then. This
/// text never changes.
const std::vector<std::string> kVersion1OfSQLite = {
    "PRAGMA application_id = 1514230350",
    "CREATE TABLE zarn_schema (version INTEGER NOT NULL) STRICT",
    "CREATE TABLE zarn_import (id INTEGER PRIMARY KEY, time TEXT NOT NULL "
    "UNIQUE, author TEXT NOT NULL, reason TEXT NOT NULL, source TEXT NOT NULL) "
    "STRICT",
    "CREATE TABLE zarn_entry (id INTEGER PRIMARY KEY, import_id INTEGER NOT "
    "NULL REFERENCES zarn_import (id), table_name TEXT NOT NULL, index_name "
    "TEXT NOT NULL, pass INTEGER NOT NULL CHECK (pass >= 0), first_run "
    "INTEGER, "
    "last_run INTEGER, fields TEXT NOT NULL) STRICT",
};
const std::vector<std::string> kVersion1OfPostgreSQL = {
    "CREATE TABLE zarn_schema (version INTEGER NOT NULL)",
    "CREATE TABLE zarn_import (id INTEGER PRIMARY KEY, time TEXT COLLATE \"C\" "
    "NOT NULL UNIQUE, author TEXT NOT NULL, reason TEXT NOT NULL, source TEXT "
    "NOT NULL)",
    "CREATE TABLE zarn_entry (id INTEGER PRIMARY KEY, import_id INTEGER NOT "
    "NULL REFERENCES zarn_import (id), table_name TEXT NOT NULL, index_name "
    "TEXT NOT NULL, pass INTEGER NOT NULL CHECK (pass >= 0), first_run "
    "INTEGER, "
    "last_run INTEGER, fields TEXT NOT NULL)",
};
const std::vector<std::string> kRowsOfVersion1 = {
    "INSERT INTO zarn_schema (version) VALUES (1)",
    "INSERT INTO zarn_import VALUES "
    "(1, '2026-01-01T00:00:00.000000Z', 'ann', 'survey', 'a.json'), "
    "(2, '2026-01-02T00:00:00.000000Z', 'bob', 'moved', 'b.json'), "
    "(3, '2026-01-03T00:00:00.000000Z', 'ann', 'again', 'a.json')",
    "INSERT INTO zarn_entry VALUES "
    "(1, 1, 'A', 'x', 0, NULL, NULL, '{\"value\":1}'), "
    "(2, 1, 'B', 'y', 0, 0, NULL, '{\"value\":-0.0}'), "
    "(3, 2, 'A', 'x', 1, 10, 20, '{\"value\":2}'), "
    "(4, 3, 'B', 'y', 0, NULL, -1, '{\"value\":0.1}')",
};

class SchemaTest : public Testing::StoreTest {
 protected:
  void MakeVersion1() const {
    const auto& tables = IsServer() ? kVersion1OfPostgreSQL : kVersion1OfSQLite;
    for (const std::string& statement : tables) Execute(statement);
    for (const std::string& statement : kRowsOfVersion1) Execute(statement);
  }

  std::string TextOfReading() const {
    return TextOf<StoreError>([&] { ToRead(); });
  }
  std::string TextOfImporting() const {
    return TextOf<StoreError>([&] { ToImport(); });
  }
};

INSTANTIATE_TEST_SUITE_P(Engines, SchemaTest,
                         testing::ValuesIn(Testing::Engines()),
                         Testing::NameOfEngine);

TEST_P(SchemaTest, ReadsVersion1) {
  MakeVersion1();
  const TableStore store = ToRead();
  const auto entries = store.Read({});
  ASSERT_EQ(entries.size(), 4U);
  EXPECT_EQ(entries[2], Entry("A", "x", 2.0, {10, 20}, 1));
  EXPECT_EQ(store.Read("2026-01-01").size(), 2U);
  EXPECT_EQ(store.Imports().at(1).author, "bob");
  EXPECT_EQ(TextOf<StoreError>([&] { store.FindStates("none"); }),
            Source() +
                ": has schema version 1, which has no fingerprints; the next "
                "zarn-shadow tables import adds them");
}

TEST_P(SchemaTest, BringsVersion1UpToDate) {
  MakeVersion1();
  const auto before = ToRead().Read({});
  EXPECT_EQ(ToImport().MigratedFrom(), std::optional<int>(1));
  EXPECT_EQ(ToImport().MigratedFrom(), std::nullopt);
  const TableStore store = ToRead();
  EXPECT_EQ(store.Read({}), before);
  for (const Import& import : store.Imports()) {
    TableSet tables;
    tables.Add(store.Read(import.time));
    for (const int run : {-1, 0, 9, 10, 20, 21}) {
      SCOPED_TRACE("import " + std::to_string(import.number) + ", run " +
                   std::to_string(run));
      tables.SetRun(run);
      const auto states = store.FindStates(Fingerprint(tables));
      ASSERT_FALSE(states.empty());
      EXPECT_LE(states.front().import.number, import.number);
    }
  }
  // Two ranges of runs of the first import, one of the second, one of the
  // third.
  EXPECT_EQ(Count("zarn_state"), 4);
  ToImport().Import({Entry("C", "z", 1.0)}, Note(), false);
  EXPECT_EQ(ToRead().Imports().back().number, 4);
}

TEST_P(SchemaTest, StaysAtVersion1IfBringingUpToDateFails) {
  MakeVersion1();
  Execute("UPDATE zarn_entry SET fields = '{\"value\":-0.0' WHERE id = 4");
  EXPECT_ANY_THROW(ToImport());
  int version = 0;
  Past() << "SELECT version FROM zarn_schema", soci::into(version);
  EXPECT_EQ(version, 1);
  EXPECT_ANY_THROW(Past() << "SELECT * FROM zarn_state");
}

TEST_P(SchemaTest, RefusesANewerVersion) {
  ToImport().Import({Entry("A", "x", 1.0)}, Note(), false);
  TableStore open = ToImport();
  Execute("UPDATE zarn_schema SET version = 3");
  const std::string reason = Source() +
                             ": has schema version 3; this program knows up to "
                             "2: use a newer zarn-shadow";
  EXPECT_EQ(TextOfReading(), reason);
  EXPECT_EQ(TextOfImporting(), reason);
  // Also if another program has changed it since.
  EXPECT_EQ(TextOf<StoreError>(
                [&] { open.Import({Entry("A", "y", 1.0)}, Note(), false); }),
            reason);
  EXPECT_EQ(Count("zarn_entry"), 1);
}

TEST_P(SchemaTest, AsksForAnImportWhereThereAreNoTables) {
  if (!IsServer()) Put("tables.db", "");
  EXPECT_EQ(TextOfReading(),
            Source() +
                ": has no geometry tables; zarn-shadow tables import makes "
                "them");
  ToImport();
  EXPECT_TRUE(ToRead().Read({}).empty());
}

TEST(SchemaOfSQLite, NamesWhatIsNoDatabase) {
  EXPECT_EQ(TextOf<StoreError>([] { TableStore::OpenToRead("tables.json"); }),
            "tables.json: is not a database; expected sqlite:FILE or "
            "postgresql:CONNECTION");
  EXPECT_EQ(TextOf<StoreError>([] { TableStore::OpenToRead("sqlite:"); }),
            "sqlite:: there is no name of a file after sqlite:");
}

class FileTest : public ZARN::Testing::InFolder {
 protected:
  static std::string TextOfReading(const std::string& file) {
    return TextOf<StoreError>(
        [&] { TableStore::OpenToRead("sqlite:" + file); });
  }
  static std::string TextOfImporting(const std::string& file) {
    return TextOf<StoreError>(
        [&] { TableStore::OpenToImport("sqlite:" + file); });
  }
};

TEST_F(FileTest, IsMissing) {
  EXPECT_EQ(
      TextOfReading("tables.db"),
      "sqlite:tables.db: there is no such file; zarn-shadow tables import "
      "makes it");
  EXPECT_FALSE(std::filesystem::exists("tables.db"));
  EXPECT_EQ(TextOfImporting("none/tables.db"),
            "sqlite:none/tables.db: cannot be made: there is no folder " +
                std::filesystem::absolute("none").string());
}

TEST_F(FileTest, IsAFolder) {
  EXPECT_EQ(TextOfReading("."), "sqlite:.: is a folder, not an SQLite file");
  EXPECT_EQ(TextOfImporting("."), "sqlite:.: is a folder, not an SQLite file");
}

TEST_F(FileTest, IsNoDatabase) {
  const std::string text(5000, 'x');
  Put("tables.db", text);
  for (const std::string& said :
       {TextOfReading("tables.db"), TextOfImporting("tables.db")}) {
    EXPECT_EQ(said,
              "sqlite:tables.db: is not an SQLite database (file is not a "
              "database)");
  }
  EXPECT_EQ(Text("tables.db"), text);
}

TEST_F(FileTest, IsADatabaseOfAnotherProgram) {
  soci::session(soci::sqlite3, "tables.db") << "CREATE TABLE notes (text TEXT)";
  const std::string before = Text("tables.db");
  const std::string reason =
      "sqlite:tables.db: is an SQLite database of another program";
  EXPECT_EQ(TextOfReading("tables.db"), reason);
  EXPECT_EQ(TextOfImporting("tables.db"), reason);
  EXPECT_EQ(Text("tables.db"), before);
  soci::session(soci::sqlite3, "tables.db") << "PRAGMA application_id = 7";
  EXPECT_EQ(TextOfReading("tables.db"), reason);
  EXPECT_EQ(TextOfImporting("tables.db"), reason);
}

TEST_F(FileTest, IsDamaged) {
  {
    std::vector<TableEntry> entries;
    for (int i = 0; i < 500; ++i) {
      entries.push_back(Entry("A", "x" + std::to_string(i), i));
    }
    TableStore::OpenToImport("sqlite:tables.db").Import(entries, Note(), false);
  }
  const std::string whole = Text("tables.db");
  // Every page of 4096 bytes but the first, and the file cut short.
  for (std::size_t page = 4096; page < whole.size(); page += 4096) {
    std::string damaged = whole;
    damaged.replace(page, 64, 64, '\xa5');
    Put("tables.db", damaged);
    EXPECT_NE(TextOfReading("tables.db").find("the database is damaged"),
              std::string::npos)
        << page << ": " << TextOfReading("tables.db");
  }
  Put("tables.db", whole.substr(0, whole.size() / 2));
  EXPECT_NE(TextOfReading("tables.db").find("the database is damaged"),
            std::string::npos)
      << TextOfReading("tables.db");
  EXPECT_NE(TextOfImporting("tables.db").find("the database is damaged"),
            std::string::npos);
}

TEST_F(FileTest, HasAnyName) {
  for (const std::string name :
       {"a b.db", "a'b\"c.db", "100%25 = ?.db", "tables;timeout=1", "Größe.db",
        ":memory:", "file:x.db", "a\nb"}) {
    SCOPED_TRACE(name);
    TableStore::OpenToImport("sqlite:" + name)
        .Import({Entry("A", "x", 1.0)}, Note(), false);
    EXPECT_TRUE(std::filesystem::exists(name));
    EXPECT_EQ(TableStore::OpenToRead("sqlite:" + name).Read({}).size(), 1U);
  }
}

}  // namespace
}  // namespace ZARN::SQL

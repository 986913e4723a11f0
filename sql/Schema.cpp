#include "sql/Schema.hpp"

#include "sql/States.hpp"

namespace ZARN::SQL {
namespace {

/// Marks an SQLite file as ours, for its application_id: the letters "ZARN".
constexpr int kApplicationId = 0x5A41524E;

bool HasSchema(Connection& connection) {
  return connection.Run([&](soci::session& session) {
    int number = 0;
    if (connection.Engine() == eEngine::kSQLite) {
      session << "SELECT count(*) FROM sqlite_master "
                 "WHERE type = 'table' AND name = 'zarn_schema'",
          soci::into(number);
    } else {
      // Not to_regclass, which can overlook a table that another program has
      // just made.
      session << "SELECT count(*) FROM pg_catalog.pg_tables "
                 "WHERE tablename = 'zarn_schema' "
                 "AND schemaname = ANY (current_schemas(false))",
          soci::into(number);
    }
    return number != 0;
  });
}

/// Refuse an SQLite file of another program. One without tables, as a killed
/// import can leave it, is nobody's.
void RefuseForeignFile(Connection& connection) {
  if (connection.Engine() != eEngine::kSQLite) return;
  const auto [id, tables] = connection.Run([](soci::session& session) {
    std::pair<int, int> found;
    session << "PRAGMA application_id", soci::into(found.first);
    session << "SELECT count(*) FROM sqlite_master", soci::into(found.second);
    return found;
  });
  if (id == kApplicationId || (id == 0 && tables == 0)) return;
  connection.Refuse("is an SQLite database of another program");
}

void RequireIntact(Connection& connection) {
  if (connection.Engine() != eEngine::kSQLite) return;
  const std::string problem = connection.Run([](soci::session& session) {
    std::string text;
    session << "PRAGMA quick_check(1)", soci::into(text);
    return text;
  });
  if (problem != "ok") {
    connection.Refuse("the database is damaged; replace it by a copy (" +
                      problem + ")");
  }
}

void MakeVersion1(Connection& connection) {
  const bool isSQLite = connection.Engine() == eEngine::kSQLite;
  // Times are compared as bytes, whatever the language of the server.
  const std::string strict = isSQLite ? " STRICT" : "";
  const std::string time = isSQLite ? "TEXT" : "TEXT COLLATE \"C\"";
  if (isSQLite) {
    connection.Execute("PRAGMA application_id = " +
                       std::to_string(kApplicationId));
  }
  connection.Execute("CREATE TABLE zarn_schema (version INTEGER NOT NULL)" +
                     strict);
  connection.Execute(
      "CREATE TABLE zarn_import (id INTEGER PRIMARY KEY, time " + time +
      " NOT NULL UNIQUE, author TEXT NOT NULL, reason TEXT NOT NULL, "
      "source TEXT NOT NULL)" +
      strict);
  connection.Execute(
      "CREATE TABLE zarn_entry (id INTEGER PRIMARY KEY, "
      "import_id INTEGER NOT NULL REFERENCES zarn_import (id), "
      "table_name TEXT NOT NULL, index_name TEXT NOT NULL, "
      "pass INTEGER NOT NULL CHECK (pass >= 0), "
      "first_run INTEGER, last_run INTEGER, fields TEXT NOT NULL)" +
      strict);
  connection.Execute("INSERT INTO zarn_schema (version) VALUES (1)");
}

void MakeVersion2(Connection& connection) {
  connection.Execute(
      std::string("CREATE TABLE zarn_state ("
                  "import_id INTEGER NOT NULL REFERENCES zarn_import (id), "
                  "first_run INTEGER, last_run INTEGER, "
                  "fingerprint TEXT NOT NULL)") +
      (connection.Engine() == eEngine::kSQLite ? " STRICT" : ""));
  connection.Execute(
      "CREATE INDEX zarn_state_fingerprint ON zarn_state (fingerprint)");
  AddStatesOfAllImports(connection);
  connection.Execute("UPDATE zarn_schema SET version = 2");
}

}  // namespace

int ReadSchemaVersion(Connection& connection) {
  const int version = connection.Run([](soci::session& session) {
    int number = 0;
    session << "SELECT version FROM zarn_schema", soci::into(number);
    return number;
  });
  if (version < 1) connection.Refuse("its schema has no version");
  if (version > kSchemaVersion) {
    connection.Refuse("has schema version " + std::to_string(version) +
                      "; this program knows up to " +
                      std::to_string(kSchemaVersion) +
                      ": use a newer zarn-shadow");
  }
  return version;
}

int RequireSchema(Connection& connection) {
  RefuseForeignFile(connection);
  if (!HasSchema(connection)) {
    connection.Refuse(
        "has no geometry tables; zarn-shadow tables import makes them");
  }
  const int version = ReadSchemaVersion(connection);
  RequireIntact(connection);
  return version;
}

int MakeSchema(Connection& connection) {
  RefuseForeignFile(connection);
  // Without the right to make tables, an import into a schema that is up to
  // date must work; so look first.
  if (HasSchema(connection) &&
      ReadSchemaVersion(connection) == kSchemaVersion) {
    RequireIntact(connection);
    return kSchemaVersion;
  }
  Transaction transaction(connection, eAccess::kImport);
  // Another program may have made it meanwhile.
  const int before = HasSchema(connection) ? ReadSchemaVersion(connection) : 0;
  if (before < 1) MakeVersion1(connection);
  if (before < 2) MakeVersion2(connection);
  transaction.Commit();
  return before;
}

}  // namespace ZARN::SQL

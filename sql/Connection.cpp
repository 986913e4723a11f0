#include "sql/Connection.hpp"

#include <soci/postgresql/soci-postgresql.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include <algorithm>
#include <sstream>
#include <string_view>
#include <utility>

#include "sql/PostgreSQLName.hpp"
#include "sql/SQLiteName.hpp"

namespace ZARN::SQL {
namespace {

constexpr std::string_view kSQLite = "sqlite:";
constexpr std::string_view kPostgreSQL = "postgresql:";

/// How long to wait for an import by another program.
constexpr const char* kWaitSeconds = "60";

/// The lock of PostgreSQL that imports take: the letters "zarn". It needs no
/// right to change a table, so a server can grant importers INSERT only.
constexpr long long kImportLock = 0x7A61726E;

bool BeginsWith(std::string_view text, std::string_view begin) {
  return text.substr(0, begin.size()) == begin;
}

/// Remove the text up to the end of @p mark, if it has it.
void RemoveUpTo(std::string& text, std::string_view mark) {
  const std::size_t place = text.find(mark);
  if (place != std::string::npos) text.erase(0, place + mark.size());
}

/// What an engine says, as one line, without what SOCI puts before it and the
/// statement that PostgreSQL puts behind it.
std::string MessageOf(const soci::soci_error& error) {
  std::string text = error.get_error_message();
  RemoveUpTo(text, "Cannot establish connection to the database.");
  RemoveUpTo(text, "Fatal error. ");
  if (BeginsWith(text, "sqlite3_")) RemoveUpTo(text, ": ");
  text.erase(std::min(text.find("\nLINE "), text.size()));
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) {
    line += (line.empty() ? "" : " ") + word;
  }
  return line;
}

std::string TextOfLock() {
  return std::string("another program has locked the database for ") +
         kWaitSeconds + " s; try again";
}

/// What a user can do about an error of SQLite; empty if its text says all.
std::string AdviceOn(int code, eAccess access) {
  const bool isImport = access == eAccess::kImport;
  switch (code & 0xFF) {  // the rest is the detail of an extended code
    case SQLITE_NOTADB:
      return "is not an SQLite database";
    case SQLITE_CORRUPT:
      return "the database is damaged; replace it by a copy";
    case SQLITE_BUSY:
      return TextOfLock();
    case SQLITE_FULL:
    case SQLITE_IOERR:
      return isImport ? "the disk is full or cannot be written" : "";
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
      return isImport
                 ? "an import needs write permission for the file and for "
                   "its folder"
                 : "an import was interrupted; zarn-shadow tables list, by "
                   "a user with write permission, undoes it";
    default:
      return "";
  }
}

}  // namespace

bool TableStore::IsStore(std::string_view source) {
  return BeginsWith(source, kSQLite) || BeginsWith(source, kPostgreSQL);
}

Connection::Connection(std::string source, eAccess access)
    : source_(std::move(source)),
      access_(access),
      engine_(BeginsWith(source_, kSQLite) ? eEngine::kSQLite
                                           : eEngine::kPostgreSQL) {
  if (!TableStore::IsStore(source_)) {
    Refuse("is not a database; expected sqlite:FILE or postgresql:CONNECTION");
  }
  if (engine_ == eEngine::kSQLite) {
    OpenFile();
  } else {
    OpenServer();
  }
}

void Connection::OpenFile() {
  const bool isImport = access_ == eAccess::kImport;
  const std::string file = source_.substr(kSQLite.size());
  const std::string reason = ReasonAgainst(file, isImport);
  if (!reason.empty() && isImport) throw WriteError(source_ + ": " + reason);
  if (!reason.empty()) Refuse(reason);
  // A reader, too, opens the file for writing if it may: SQLite must undo what
  // an interrupted import left. Without permission it opens it for reading.
  const std::string connection =
      ConnectionToFile(file, isImport ? "rwc" : "rw") +
      " timeout=" + kWaitSeconds;
  Run([&](soci::session& session) {
    session.open(soci::sqlite3, connection);
    isOpen_ = true;
    session << "PRAGMA foreign_keys = ON";
    if (isImport) {
      session << "PRAGMA synchronous = EXTRA";
      // Pages written before the end would lock out readers.
      session << "PRAGMA cache_spill = OFF";
    } else {
      session << "PRAGMA query_only = ON";
    }
  });
}

void Connection::OpenServer() {
  const std::string connection =
      ConnectionToServer(source_.substr(kPostgreSQL.size()));
  Run([&](soci::session& session) {
    session.open(soci::postgresql, connection);
    isOpen_ = true;
    session << "SET client_min_messages = warning";
    session << std::string("SET lock_timeout = '") + kWaitSeconds + "s'";
    if (access_ == eAccess::kRead) {
      session << "SET default_transaction_read_only = on";
    }
  });
}

void Connection::Execute(const std::string& statement) {
  Run([&](soci::session& session) { session << statement; });
}

bool Connection::IsAlive() {
  if (engine_ == eEngine::kSQLite) return true;
  const auto* const backend =
      static_cast<const soci::postgresql_session_backend*>(
          session_.get_backend());
  return PQstatus(backend->conn_) == CONNECTION_OK;
}

void Connection::Refuse(const std::string& reason) const {
  throw StoreError(source_ + ": " + reason);
}

void Connection::Refuse(const soci::soci_error& error) const {
  constexpr std::string_view kLockNotAvailable = "55P03";
  std::string advice;
  bool isDamaged = false;
  if (const auto* const file =
          dynamic_cast<const soci::sqlite3_soci_error*>(&error)) {
    const int code = file->result() & 0xFF;
    advice = AdviceOn(code, access_);
    isDamaged = code == SQLITE_NOTADB || code == SQLITE_CORRUPT;
  } else if (const auto* const server =
                 dynamic_cast<const soci::postgresql_soci_error*>(&error)) {
    if (server->sqlstate() == kLockNotAvailable) advice = TextOfLock();
  }
  std::string text = MessageOf(error);
  if (!advice.empty()) text = advice + " (" + text + ")";
  if (access_ == eAccess::kImport && isOpen_ && !isDamaged) {
    throw WriteError(source_ + ": " + text);
  }
  Refuse(text);
}

Transaction::Transaction(Connection& connection, eAccess access)
    : connection_(connection) {
  const bool isImport = access == eAccess::kImport;
  if (connection.Engine() == eEngine::kSQLite) {
    connection.Execute(isImport ? "BEGIN IMMEDIATE" : "BEGIN");
    return;
  }
  connection.Execute(isImport ? "BEGIN"
                              : "BEGIN ISOLATION LEVEL REPEATABLE READ");
  if (!isImport) return;
  connection.Run([](soci::session& session) {
    const long long lock = kImportLock;
    session << "SELECT pg_advisory_xact_lock(:lock)", soci::use(lock);
  });
}

Transaction::~Transaction() {
  if (!isOpen_) return;
  try {
    connection_.Execute("ROLLBACK");
  } catch (const StoreError&) {
    // Without a connection, or after a full disk, the engine has done it.
  }
}

void Transaction::Commit() {
  try {
    connection_.Execute("COMMIT");
    isOpen_ = false;
  } catch (const StoreError& error) {
    if (connection_.IsAlive()) throw;
    isOpen_ = false;
    throw WriteError(std::string(error.what()) +
                     "; it is not known whether the import stands: look with "
                     "zarn-shadow tables history");
  }
}

}  // namespace ZARN::SQL

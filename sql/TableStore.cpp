#include "sql/TableStore.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

#include "db/DBErrors.hpp"
#include "db/JsonTables.hpp"
#include "sql/Connection.hpp"
#include "sql/ImportPlan.hpp"
#include "sql/Rows.hpp"
#include "sql/Schema.hpp"
#include "sql/States.hpp"
#include "sql/StoredText.hpp"
#include "sql/TimeText.hpp"

namespace ZARN::SQL {

class TableStore::Session : public Connection {
 public:
  using Connection::Connection;

  int version = kSchemaVersion;
  std::optional<int> migratedFrom;
};

namespace {

std::vector<Import> ReadImports(Connection& connection) {
  return connection.Run(
      [](soci::session& session) {
        std::vector<Import> imports;
        Import import;
        long long entries = 0;
        soci::statement statement =
            (session.prepare
                 << "SELECT id, time, author, reason, source, "
                    "(SELECT count(*) FROM zarn_entry WHERE import_id = "
                    "zarn_import.id) FROM zarn_import ORDER BY id",
             soci::into(import.number), soci::into(import.time),
             soci::into(import.author), soci::into(import.reason),
             soci::into(import.source), soci::into(entries));
        statement.execute();
        while (statement.fetch()) {
          import.entries = static_cast<std::size_t>(entries);
          imports.push_back(import);
        }
        return imports;
      });
}

/// The entries whose imports are up to @p number, with their fields.
std::vector<Row> ReadEntries(Connection& connection, long long number) {
  std::vector<Row> rows;
  std::vector<std::string> texts;
  connection.Run([&](soci::session& session) {
    Row row;
    std::string text;
    RunLimit first;
    RunLimit last;
    soci::statement statement =
        (session.prepare << "SELECT id, import_id, table_name, index_name, "
                            "pass, first_run, last_run, fields FROM zarn_entry "
                            "WHERE import_id <= :number ORDER BY id",
         soci::use(number), soci::into(row.id), soci::into(row.import),
         soci::into(row.entry.table), soci::into(row.entry.index),
         soci::into(row.entry.pass), soci::into(first.run, first.isNull),
         soci::into(last.run, last.isNull), soci::into(text));
    statement.execute();
    while (statement.fetch()) {
      row.entry.runs = RunsBetween(first, last);
      rows.push_back(row);
      texts.push_back(text);
    }
  });
  for (std::size_t i = 0; i < rows.size(); ++i) {
    TableEntry& entry = rows[i].entry;
    entry.source = connection.Source();
    try {
      entry.fields = ParseJsonFields(texts[i], TextOf(entry));
    } catch (const TableFileError& error) {
      connection.Refuse(std::string("is damaged: ") + error.what());
    }
  }
  return rows;
}

void InsertImport(Connection& connection, const Import& import) {
  connection.Run([&](soci::session& session) {
    session << "INSERT INTO zarn_import (id, time, author, reason, source) "
               "VALUES (:id, :time, :author, :reason, :source)",
        soci::use(import.number), soci::use(import.time),
        soci::use(import.author), soci::use(import.reason),
        soci::use(import.source);
  });
}

/// Insert the rows, whose texts are known.
void InsertRows(Connection& connection, const std::vector<Row>& rows,
                RowTexts& texts) {
  connection.Run([&](soci::session& session) {
    Row row;
    RunLimit first;
    RunLimit last;
    std::string text;
    soci::statement statement =
        (session.prepare
             << "INSERT INTO zarn_entry (id, import_id, table_name, "
                "index_name, pass, first_run, last_run, fields) VALUES "
                "(:id, :import, :table, :index, :pass, :first, :last, :fields)",
         soci::use(row.id), soci::use(row.import), soci::use(row.entry.table),
         soci::use(row.entry.index), soci::use(row.entry.pass),
         soci::use(first.run, first.isNull), soci::use(last.run, last.isNull),
         soci::use(text));
    for (const Row& next : rows) {
      row = next;
      first = FirstLimit(row.entry.runs);
      last = LastLimit(row.entry.runs);
      text = texts.Of(row.id);
      statement.execute(true);
    }
  });
}

long long Now() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

/// The import that follows the others. Its time is later than theirs, also
/// where the clock of this machine is behind that of another one.
Import NextImport(const std::vector<Import>& imports, const ImportNote& note) {
  Import import;
  import.number = imports.empty() ? 1 : imports.back().number + 1;
  const long long earliest =
      imports.empty() ? 0 : ToMicroseconds(imports.back().time) + 1;
  import.time = TimeText(std::max(Now(), earliest));
  import.author = note.author;
  import.reason = note.reason;
  import.source = note.source;
  return import;
}

/// The number of the last import that stood at a time; 0 if there was none.
long long LastImportAt(const std::vector<Import>& imports,
                       const std::optional<std::string>& asOf) {
  long long number = 0;
  const std::string time = asOf.has_value() ? ParseTime(*asOf) : "";
  for (const Import& import : imports) {
    if (!asOf.has_value() || import.time <= time) number = import.number;
  }
  return number;
}

ImportPlan PlanOrRefuse(std::vector<TableEntry> entries, const ImportNote& note,
                        const std::vector<Row>& standing, RowTexts& texts,
                        bool asNewPass) {
  try {
    RequireStorable(note.author, "the author");
    RequireStorable(note.reason, "the reason");
    RequireStorable(note.source, "the name of the source");
    return PlanImport(std::move(entries), standing, texts, asNewPass);
  } catch (const std::invalid_argument& error) {
    throw ImportRefused(error.what());
  }
}

}  // namespace

TableStore::TableStore(std::unique_ptr<Session> session)
    : session_(std::move(session)) {}
TableStore::TableStore(TableStore&&) noexcept = default;
TableStore& TableStore::operator=(TableStore&&) noexcept = default;
TableStore::~TableStore() = default;

TableStore TableStore::OpenToRead(const std::string& source) {
  auto session = std::make_unique<Session>(source, eAccess::kRead);
  session->version = RequireSchema(*session);
  return TableStore(std::move(session));
}

TableStore TableStore::OpenToImport(const std::string& source) {
  auto session = std::make_unique<Session>(source, eAccess::kImport);
  const int before = MakeSchema(*session);
  if (before > 0 && before < kSchemaVersion) session->migratedFrom = before;
  return TableStore(std::move(session));
}

std::optional<int> TableStore::MigratedFrom() const {
  return session_->migratedFrom;
}

ImportResult TableStore::Import(std::vector<TableEntry> entries,
                                const ImportNote& note, bool asNewPass) {
  Transaction transaction(*session_, eAccess::kImport);
  // Another program may have changed it since this one opened it.
  ReadSchemaVersion(*session_);
  std::vector<Row> rows = ReadRows(*session_);
  RowTexts texts(*session_);
  ImportPlan plan =
      PlanOrRefuse(std::move(entries), note, rows, texts, asNewPass);
  ImportResult result;
  result.unchanged = plan.unchanged;
  if (plan.added.empty()) return result;

  SQL::Import import = NextImport(ReadImports(*session_), note);
  import.entries = plan.added.size();
  InsertImport(*session_, import);
  long long id = rows.empty() ? 0 : rows.back().id;
  std::vector<Row> added;
  for (PlannedEntry& planned : plan.added) {
    texts.Put(++id, std::move(planned.fields));
    Row row = {id, import.number, planned.entry};
    row.entry.fields.clear();
    added.push_back(row);
    rows.push_back(std::move(row));
    result.added.push_back(std::move(planned.entry));
  }
  InsertRows(*session_, added, texts);
  AddStates(*session_, rows, texts);
  transaction.Commit();
  result.import = std::move(import);
  return result;
}

std::vector<TableEntry> TableStore::Read(
    const std::optional<std::string>& asOf) const {
  const Transaction transaction(*session_, eAccess::kRead);
  const long long number = LastImportAt(ReadImports(*session_), asOf);
  std::vector<TableEntry> entries;
  for (Row& row : ReadEntries(*session_, number)) {
    entries.push_back(std::move(row.entry));
  }
  return entries;
}

std::vector<Import> TableStore::Imports() const {
  return ReadImports(*session_);
}

std::vector<StoredEntry> TableStore::History() const {
  const Transaction transaction(*session_, eAccess::kRead);
  const std::vector<SQL::Import> imports = ReadImports(*session_);
  std::vector<StoredEntry> history;
  if (imports.empty()) return history;
  // Imports are numbered without gaps.
  for (Row& row : ReadEntries(*session_, imports.back().number)) {
    const auto place = static_cast<std::size_t>(row.import - 1);
    history.push_back({std::move(row.entry), imports.at(place)});
  }
  return history;
}

std::vector<TableState> TableStore::FindStates(
    const std::string& fingerprint) const {
  if (session_->version < 2) {
    session_->Refuse(
        "has schema version 1, which has no fingerprints; the next "
        "zarn-shadow tables import adds them");
  }
  const Transaction transaction(*session_, eAccess::kRead);
  const std::vector<SQL::Import> imports = ReadImports(*session_);
  return session_->Run([&](soci::session& session) {
    std::vector<TableState> states;
    long long number = 0;
    RunLimit first;
    RunLimit last;
    soci::statement statement =
        (session.prepare << "SELECT import_id, first_run, last_run FROM "
                            "zarn_state WHERE fingerprint = :fingerprint "
                            "ORDER BY import_id, first_run",
         soci::use(fingerprint), soci::into(number),
         soci::into(first.run, first.isNull),
         soci::into(last.run, last.isNull));
    statement.execute();
    while (statement.fetch()) {
      const auto place = static_cast<std::size_t>(number - 1);
      states.push_back({imports.at(place), RunsBetween(first, last)});
    }
    return states;
  });
}

}  // namespace ZARN::SQL

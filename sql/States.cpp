#include "sql/States.hpp"

#include <algorithm>
#include <limits>
#include <memory>
#include <set>
#include <utility>
#include <variant>

#include "db/Fingerprint.hpp"
#include "db/TableSet.hpp"
#include "sql/FieldsText.hpp"

namespace ZARN::SQL {
namespace {

struct RunsWithFingerprint {
  RunRange runs;
  std::string fingerprint;
};

using Selection = std::vector<std::shared_ptr<const TableEntry>>;

/// The tables import by import, with entries whose only field is the id of
/// their row: which entry stands for a run does not depend on its fields.
class StateHistory {
 public:
  explicit StateHistory(RowTexts& texts) : texts_(texts) {}

  /// Add the entries of an import.
  void Add(const std::vector<Row>& rows) {
    std::vector<TableEntry> entries;
    for (const Row& row : rows) {
      TableEntry entry = row.entry;
      entry.fields = {{"id", static_cast<double>(row.id)}};
      starts_.insert(entry.runs.first);
      starts_.insert(static_cast<long long>(entry.runs.last) + 1);
      entries.push_back(std::move(entry));
    }
    tables_.Add(std::move(entries));
  }

  /// The states that stand for the runs of these entries.
  std::vector<RunsWithFingerprint> StatesFor(const std::vector<Row>& rows) {
    std::vector<RunsWithFingerprint> states;
    Selection before;
    for (auto start = starts_.begin(); start != starts_.end(); ++start) {
      // The last start is behind the entries that end last.
      const auto next = std::next(start);
      if (next == starts_.end()) break;
      const RunRange runs = {static_cast<int>(*start),
                             static_cast<int>(*next - 1)};
      const bool isOfImport = std::any_of(
          rows.begin(), rows.end(),
          [&](const Row& row) { return row.entry.runs.Contains(runs.first); });
      if (!isOfImport) {
        before.clear();
        continue;
      }
      tables_.SetRun(runs.first);
      Selection now = tables_.CurrentEntries();
      if (now == before) {
        states.back().runs.last = runs.last;
      } else {
        states.push_back({runs, FingerprintOf(now)});
        before = std::move(now);
      }
    }
    return states;
  }

 private:
  std::string FingerprintOf(const Selection& selection) {
    std::vector<CanonicalEntry> entries;
    for (const auto& entry : selection) {
      entries.push_back({entry->table, entry->index, TextOf(*entry)});
    }
    return Fingerprint(entries);
  }

  const std::string& TextOf(const TableEntry& entry) {
    const auto id =
        static_cast<long long>(std::get<double>(entry.fields.at("id")));
    const auto found = fingerprintTexts_.find(id);
    if (found != fingerprintTexts_.end()) return found->second;
    return fingerprintTexts_.emplace(id, ToFingerprintText(texts_.Of(id)))
        .first->second;
  }

  RowTexts& texts_;
  TableSet tables_;
  std::set<long long> starts_;  // of ranges in which the same entries stand
  std::map<long long, std::string> fingerprintTexts_;
};

void WriteStates(Connection& connection, long long import,
                 const std::vector<RunsWithFingerprint>& states) {
  connection.Run([&](soci::session& session) {
    RunLimit first;
    RunLimit last;
    std::string fingerprint;
    soci::statement statement =
        (session.prepare << "INSERT INTO zarn_state "
                            "(import_id, first_run, last_run, fingerprint) "
                            "VALUES (:import, :first, :last, :fingerprint)",
         soci::use(import), soci::use(first.run, first.isNull),
         soci::use(last.run, last.isNull), soci::use(fingerprint));
    for (const RunsWithFingerprint& state : states) {
      first = FirstLimit(state.runs);
      last = LastLimit(state.runs);
      fingerprint = state.fingerprint;
      statement.execute(true);
    }
  });
}

/// The rows of one import after the other.
std::vector<std::vector<Row>> ByImport(const std::vector<Row>& rows) {
  std::vector<std::vector<Row>> imports;
  for (const Row& row : rows) {
    if (imports.empty() || imports.back().front().import != row.import) {
      imports.emplace_back();
    }
    imports.back().push_back(row);
  }
  return imports;
}

}  // namespace

void AddStates(Connection& connection, const std::vector<Row>& rows,
               RowTexts& texts) {
  StateHistory history(texts);
  const long long import = rows.back().import;
  const auto own =
      std::find_if(rows.begin(), rows.end(),
                   [import](const Row& row) { return row.import == import; });
  history.Add(rows);
  WriteStates(connection, import, history.StatesFor({own, rows.end()}));
}

void AddStatesOfAllImports(Connection& connection) {
  RowTexts texts(connection);
  StateHistory history(texts);
  for (const std::vector<Row>& rows : ByImport(ReadRows(connection))) {
    history.Add(rows);
    WriteStates(connection, rows.front().import, history.StatesFor(rows));
  }
}

}  // namespace ZARN::SQL

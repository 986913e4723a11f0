#include "sql/Rows.hpp"

#include <limits>
#include <utility>

namespace ZARN::SQL {

std::vector<Row> ReadRows(Connection& connection) {
  return connection.Run([](soci::session& session) {
    std::vector<Row> rows;
    Row row;
    RunLimit first;
    RunLimit last;
    soci::statement statement =
        (session.prepare << "SELECT id, import_id, table_name, index_name, "
                            "pass, first_run, last_run FROM zarn_entry "
                            "ORDER BY id",
         soci::into(row.id), soci::into(row.import),
         soci::into(row.entry.table), soci::into(row.entry.index),
         soci::into(row.entry.pass), soci::into(first.run, first.isNull),
         soci::into(last.run, last.isNull));
    statement.execute();
    while (statement.fetch()) {
      row.entry.runs = RunsBetween(first, last);
      rows.push_back(row);
    }
    return rows;
  });
}

const std::string& RowTexts::Of(long long id) {
  const auto found = texts_.find(id);
  if (found != texts_.end()) return found->second;
  std::string& text = texts_[id];
  connection_.Run([&](soci::session& session) {
    session << "SELECT fields FROM zarn_entry WHERE id = :id", soci::use(id),
        soci::into(text);
  });
  return text;
}

RunLimit FirstLimit(const RunRange& runs) {
  const bool isOpen = runs.first == std::numeric_limits<int>::min();
  return {runs.first, isOpen ? soci::i_null : soci::i_ok};
}

RunLimit LastLimit(const RunRange& runs) {
  const bool isOpen = runs.last == std::numeric_limits<int>::max();
  return {runs.last, isOpen ? soci::i_null : soci::i_ok};
}

RunRange RunsBetween(const RunLimit& first, const RunLimit& last) {
  RunRange runs;
  if (first.isNull == soci::i_ok) runs.first = first.run;
  if (last.isNull == soci::i_ok) runs.last = last.run;
  return runs;
}

}  // namespace ZARN::SQL

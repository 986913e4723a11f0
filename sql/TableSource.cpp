#include "sql/TableSource.hpp"

#include <stdexcept>
#include <utility>

#include "db/JsonTables.hpp"
#include "sql/TableStore.hpp"

namespace ZARN {
namespace {

std::vector<TableEntry> ReadStore(const TableSource& source) {
  const auto store = SQL::TableStore::OpenToRead(source.name);
  auto entries = store.Read(source.asOf);
  if (!entries.empty() || !source.asOf.has_value()) return entries;
  const auto imports = store.Imports();
  throw std::invalid_argument(
      source.name + ": there were no tables at " +
      SQL::ParseTime(*source.asOf) +
      (imports.empty() ? "; there are none yet"
                       : "; the first import was at " + imports.front().time));
}

}  // namespace

std::vector<TableEntry> ReadTables(const TableSource& source) {
  if (SQL::TableStore::IsStore(source.name)) return ReadStore(source);
  if (source.asOf.has_value()) {
    throw std::invalid_argument(source.name +
                                ": JSON has no history to read as of a time; a "
                                "database has (sqlite:FILE, "
                                "postgresql:CONNECTION)");
  }
  return ReadJsonTables(source.name);
}

void LoadTables(TableSet& tables, const TableSource& source) {
  TableSet loaded = tables;
  loaded.Add(ReadTables(source));
  if (!source.overrides.empty()) {
    loaded.Override(ReadJsonTables(source.overrides));
  }
  tables = std::move(loaded);
}

std::vector<std::string> FilesOf(const TableSource& source) {
  constexpr std::string_view kSQLite = "sqlite:";
  std::vector<std::string> files;
  if (source.name.rfind(kSQLite, 0) == 0) {
    files.push_back(source.name.substr(kSQLite.size()));
  } else if (!SQL::TableStore::IsStore(source.name)) {
    files = TableFiles(source.name);
  }
  if (!source.overrides.empty()) {
    for (std::string& file : TableFiles(source.overrides)) {
      files.push_back(std::move(file));
    }
  }
  return files;
}

}  // namespace ZARN

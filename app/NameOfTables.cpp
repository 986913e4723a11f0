#include "app/NameOfTables.hpp"

#include <filesystem>
#include <string_view>

namespace ZARN::App {
namespace {

constexpr std::string_view kSQLite = "sqlite:";
constexpr std::string_view kPostgreSQL = "postgresql:";

bool BeginsWith(std::string_view text, std::string_view begin) {
  return text.substr(0, begin.size()) == begin;
}

std::string NameOfFile(std::string_view file) {
  // A folder given as "." has its name.
  const auto path = std::filesystem::absolute(file).lexically_normal();
  const auto name = path.has_filename() ? path : path.parent_path();
  return name.extension() == ".json" || name.extension() == ".db"
             ? name.stem().string()
             : name.filename().string();
}

/// The database in "//host/dbname?..." or "host=... dbname=..."; a server whose
/// environment names it has none.
std::string NameOfDatabase(std::string_view connection) {
  std::string_view name;
  if (BeginsWith(connection, "//")) {
    const std::size_t slash = connection.find('/', 2);
    if (slash != std::string_view::npos) name = connection.substr(slash + 1);
    name = name.substr(0, name.find('?'));
  } else {
    constexpr std::string_view kKey = "dbname=";
    const std::size_t key = connection.rfind(kKey);
    if (key != std::string_view::npos) {
      name = connection.substr(key + kKey.size());
    }
    name = name.substr(0, name.find(' '));
  }
  return name.empty() ? "PostgreSQL" : std::string(name);
}

std::string NameOfSource(std::string_view source) {
  if (BeginsWith(source, kSQLite)) {
    return NameOfFile(source.substr(kSQLite.size()));
  }
  if (BeginsWith(source, kPostgreSQL)) {
    return NameOfDatabase(source.substr(kPostgreSQL.size()));
  }
  return NameOfFile(source);
}

}  // namespace

std::string NameOfTables(const TableSource& source) {
  std::string name = NameOfSource(source.name);
  if (source.asOf.has_value()) name += " as of " + *source.asOf;
  if (!source.overrides.empty())
    name += " with " + NameOfFile(source.overrides);
  return name;
}

}  // namespace ZARN::App

#include <exception>
#include <iostream>

#include "db/JsonTables.hpp"
#include "sql/TableSource.hpp"
#include "sql/TableStore.hpp"

/// Imports JSON tables as a new pass into a database, which is made if there is
/// none, and compares what is read from it now with what stood after the first
/// import.
int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: ImportTables JSON DATABASE AUTHOR REASON\n";
    return 2;
  }
  try {
    auto store = ZARN::SQL::TableStore::OpenToImport(argv[2]);
    const bool asNewPass = true;  // entries of the file supersede those there
    const auto result = store.Import(ZARN::ReadJsonTables(argv[1]),
                                     {argv[3], argv[4], argv[1]}, asNewPass);
    std::cout << "added " << result.added.size() << ", unchanged "
              << result.unchanged << "\n";

    ZARN::TableSource source;
    source.name = argv[2];
    const auto now = ZARN::ReadTables(source);
    source.asOf = store.Imports().front().time;
    const auto then = ZARN::ReadTables(source);
    std::cout << then.size() << " entries after the first import, "
              << now.size() << " now\n";
  } catch (const std::exception& error) {  // also a database that refuses
    std::cerr << "ImportTables: " << error.what() << "\n";
    return 2;
  }
}

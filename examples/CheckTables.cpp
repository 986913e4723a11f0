#include <exception>
#include <iostream>
#include <string>

#include "db/Fingerprint.hpp"
#include "du/CheckTables.hpp"
#include "sql/TableSource.hpp"

/// Checks the geometry tables of a run, and prints what is wrong with them and
/// their fingerprint. The tables are JSON or a database, for example
/// data/reference-detector or sqlite:tables.db.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: CheckTables TABLES RUN\n";
    return 2;
  }
  try {
    ZARN::TableSource source;
    source.name = argv[1];
    ZARN::TableSet tables;
    ZARN::LoadTables(tables, source);
    tables.SetRun(std::stoi(argv[2]));
    int status = 0;
    for (const auto& finding : ZARN::DU::CheckTables(tables)) {
      std::cout << ZARN::DU::TextOf(finding) << "\n";
      if (finding.severity == ZARN::DU::eSeverity::kError) status = 3;
    }
    std::cout << "fingerprint " << ZARN::Fingerprint(tables) << "\n";
    return status;
  } catch (const std::exception& error) {  // a source that cannot be read
    std::cerr << "CheckTables: " << error.what() << "\n";
    return 2;
  }
}

#pragma once

#include <string>

#include "sql/TableSource.hpp"

namespace ZARN::App {

/// What a picture calls tables: "reference-detector" for
/// data/reference-detector/, for files reference-detector.json and
/// sqlite:reference-detector.db, and for a database of this name on a server.
/// What is laid over them and the time of --as-of follow: "detector with plan".
std::string NameOfTables(const TableSource& source);

}  // namespace ZARN::App

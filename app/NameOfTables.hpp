#pragma once

#include <string>

namespace ZARN::App {

/// What a picture calls the tables of --geometry: "reference-detector" for
/// data/reference-detector/ and for a file reference-detector.json.
std::string NameOfTables(const std::string& geometry);

}  // namespace ZARN::App

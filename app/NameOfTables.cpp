#include "app/NameOfTables.hpp"

#include <filesystem>

namespace ZARN::App {

std::string NameOfTables(const std::string& geometry) {
  // A folder given as "." has its name.
  const auto path = std::filesystem::absolute(geometry).lexically_normal();
  const auto name = path.has_filename() ? path : path.parent_path();
  return name.extension() == ".json" ? name.stem().string()
                                     : name.filename().string();
}

}  // namespace ZARN::App

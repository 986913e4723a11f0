#include "app/LightPathReader.hpp"

#include <array>
#include <string>

#include "app/LightPathColumns.hpp"
#include "app/Numbers.hpp"
#include "app/Quoted.hpp"

namespace ZARN::App {
namespace {

DU::eLightPathType TypeOfName(std::string_view name) {
  for (std::size_t type = 0; type < DU::kLightPathTypeNames.size(); ++type) {
    if (name == DU::kLightPathTypeNames[type]) {
      return static_cast<DU::eLightPathType>(type);
    }
  }
  return LightPathReader::kUnknownType;
}

double Coordinate(const CsvRows& rows, std::size_t column) {
  const std::string_view cell = rows.Cell(column);
  if (cell.empty()) return 0.0;
  const NumberOrReason number = ReadNumber(cell);
  if (number.reason != nullptr) {
    throw rows.Error(column, Quoted(cell) + " " + number.reason);
  }
  return number.value;
}

}  // namespace

LightPathReader::LightPathReader(InputFile& input) : table_(input) {
  std::vector<std::string> names = {"type"};
  for (const LightPathColumns& vector : kLightPathColumns) {
    for (const char* axis : {"_x", "_y", "_z"}) {
      names.push_back(vector.name + std::string(axis));
    }
  }
  columns_ = table_.RequireColumns(names);
}

bool LightPathReader::Next(CsvRows& rows, DU::LightPath& path) const {
  if (!rows.Next()) return false;
  auto column = columns_.begin();
  path.LightPathType = TypeOfName(rows.Cell(*column++));
  for (const LightPathColumns& vector : kLightPathColumns) {
    const double x = Coordinate(rows, *column++);
    const double y = Coordinate(rows, *column++);
    const double z = Coordinate(rows, *column++);
    (path.*vector.member).SetXYZ(x, y, z);
  }
  return true;
}

}  // namespace ZARN::App

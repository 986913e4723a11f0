#include "io/LightPathReader.hpp"

#include <string>

#include "io/LightPathColumns.hpp"
#include "io/Numbers.hpp"
#include "io/Quoted.hpp"

namespace ZARN::IO {
namespace {

double Coordinate(const CsvRows& rows, std::size_t column) {
  const std::string_view cell = rows.Cell(column);
  if (cell.empty()) return 0.0;
  const NumberOrReason number = ParseNumber(cell);
  if (number.reason != nullptr) {
    throw rows.Error(column, Quoted(cell) + " " + number.reason);
  }
  return number.value;
}

}  // namespace

LightPathReader::LightPathReader(InputFile& input, const ColumnNames& names)
    : table_(input),
      columns_(table_.RequireColumns(LightPathColumns(), names)) {
  for (const char* const name : {"event", "pmt"}) {
    if (names.Has(name)) table_.RequireColumns({name}, names);
    const std::optional<std::size_t> place = table_.FindColumn(names.Of(name));
    if (!place.has_value()) continue;
    nameColumns_.emplace_back(name);
    namePlaces_.push_back(*place);
  }
}

bool LightPathReader::Next(CsvRows& rows, DU::LightPath& path) const {
  if (!rows.Next()) return false;
  auto column = columns_.begin();
  path.LightPathType = LightPathBlock::TypeOfName(rows.Cell(*column++));
  for (const LightPathVector& vector : kLightPathVectors) {
    const double x = Coordinate(rows, *column++);
    const double y = Coordinate(rows, *column++);
    const double z = Coordinate(rows, *column++);
    (path.*vector.member).SetXYZ(x, y, z);
  }
  return true;
}

}  // namespace ZARN::IO

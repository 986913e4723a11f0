#include "app/LightPathReader.hpp"

#include <algorithm>

#include "app/LightPathColumns.hpp"
#include "app/Numbers.hpp"
#include "app/Quoted.hpp"

namespace ZARN::App {
namespace {

using DU::LightPath;

/// The type under which paths with an unknown name go.
constexpr auto kOtherType =
    static_cast<DU::eLightPathType>(DU::kNumberOfLightPathTypes);

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

bool LightPathReader::Next(DU::LightPathCalculator& lightPath) {
  if (!table_.NextRow()) return false;

  LightPath path;
  auto column = columns_.begin();
  const std::string_view name = table_.Cell(*column++);
  for (const LightPathColumns& vector : kLightPathColumns) {
    const double x = Coordinate(*column++);
    const double y = Coordinate(*column++);
    const double z = Coordinate(*column++);
    (path.*vector.member).SetXYZ(x, y, z);
  }

  const auto& names = DU::kLightPathTypeNames;
  const auto known = std::find(names.begin(), names.end(), name);
  if (known != names.end()) {
    path.LightPathType = static_cast<DU::eLightPathType>(known - names.begin());
  } else {
    path.LightPathType = kOtherType;
    lightPath.LightPathTypeNames()[kOtherType] = name;
    if (unknownTypes_ == 0) firstUnknownType_ = name;
    ++unknownTypes_;
  }
  lightPath.SetLightPath(path);
  return true;
}

double LightPathReader::Coordinate(std::size_t column) const {
  const std::string_view cell = table_.Cell(column);
  if (cell.empty()) return 0.0;
  const NumberOrReason number = ReadNumber(cell);
  if (number.reason != nullptr) {
    table_.Fail(column, Quoted(cell) + " " + number.reason);
  }
  return number.value;
}

}  // namespace ZARN::App

#include "app/LightPathText.hpp"

#include "app/CsvText.hpp"
#include "app/LightPathColumns.hpp"
#include "lightpath/Crossings.hpp"

namespace ZARN::App {

std::string LightPathHeader() {
  std::string header = "type";
  for (const LightPathColumns& vector : kLightPathColumns) {
    for (const char* axis : {"_x", "_y", "_z"}) {
      header += "," + (vector.name + std::string(axis));
    }
  }
  return header;
}

void AppendLightPath(std::string& text, const DU::LightPath& path) {
  const std::size_t points = DU::kCrossings[path.LightPathType].size();
  const std::size_t used =
      kLightPathColumns.size() - DU::kAVPoints.size() + points;
  text += DU::kLightPathTypeNames[path.LightPathType];
  for (std::size_t i = 0; i < kLightPathColumns.size(); ++i) {
    if (i >= used) {
      text += ",,,";
      continue;
    }
    const TVector3& vector = path.*kLightPathColumns[i].member;
    for (const double value : {vector.X(), vector.Y(), vector.Z()}) {
      text += ',';
      AppendNumber(text, value);
    }
  }
}

}  // namespace ZARN::App

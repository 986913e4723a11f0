#include "io/LightPathText.hpp"

#include "io/CsvText.hpp"
#include "io/LightPathColumns.hpp"

namespace ZARN::IO {

std::string LightPathHeader() {
  std::string header;
  for (const std::string& column : LightPathColumns()) {
    header += (header.empty() ? "" : ",") + column;
  }
  return header;
}

void AppendLightPath(std::string& text, const DU::LightPath& path) {
  const std::size_t used = VectorsOf(path.LightPathType);
  text += DU::kLightPathTypeNames[path.LightPathType];
  for (std::size_t i = 0; i < kLightPathVectors.size(); ++i) {
    if (i >= used) {
      text += ",,,";
      continue;
    }
    const TVector3& vector = path.*kLightPathVectors[i].member;
    for (const double value : {vector.X(), vector.Y(), vector.Z()}) {
      text += ',';
      AppendNumber(text, value);
    }
  }
}

}  // namespace ZARN::IO

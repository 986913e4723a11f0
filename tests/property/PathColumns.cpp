#include "tests/property/PathColumns.hpp"

#include <algorithm>

#include "tests/support/PathVectors.hpp"

namespace ZARN::Testing {

bool UsesVector(DU::eLightPathType type, TVector3 DU::LightPath::*vector) {
  const auto isOneOf = [&](auto... used) { return ((vector == used) || ...); };
  switch (type) {
    case DU::kInnerAVToWater:
      return isOneOf(&DU::LightPath::AVPoint2, &DU::LightPath::FinalDirection);
    case DU::kAVThroughInnerAVToWater:
      return isOneOf(&DU::LightPath::AVPoint3, &DU::LightPath::FinalDirection);
    case DU::kAVToWater:
      return isOneOf(&DU::LightPath::AVPoint1, &DU::LightPath::FinalDirection);
    case DU::kWaterThroughInnerAV:
      return isOneOf(&DU::LightPath::AVPoint1, &DU::LightPath::AVPoint4,
                     &DU::LightPath::InitialDirection,
                     &DU::LightPath::FinalDirection);
    case DU::kWaterThroughAV:
      return isOneOf(&DU::LightPath::AVPoint1, &DU::LightPath::AVPoint2,
                     &DU::LightPath::InitialDirection,
                     &DU::LightPath::FinalDirection);
    case DU::kWaterReflection:
      return isOneOf(&DU::LightPath::AVPoint1, &DU::LightPath::InitialDirection,
                     &DU::LightPath::FinalDirection);
    case DU::kWater:
      return isOneOf(&DU::LightPath::StartPos, &DU::LightPath::EndPos,
                     &DU::LightPath::InitialDirection);
    case DU::kUninitialised:
    case DU::kNumberOfLightPathTypes:
      break;
  }
  return false;
}

PathColumns::PathColumns(const std::vector<DU::LightPath>& paths,
                         eUnused unused) {
  for (const DU::LightPath& path : paths) {
    types_.push_back(static_cast<int>(path.LightPathType));
  }
  arrays_.LightPathType = types_.data();
  for (std::size_t v = 0; v < kPathVectors.size(); ++v) {
    const auto vector = kPathVectors[v].inRecord;
    const bool isUsed =
        std::any_of(paths.begin(), paths.end(), [&](const DU::LightPath& path) {
          return UsesVector(path.LightPathType, vector);
        });
    if (!isUsed && unused == eUnused::kNull) continue;
    for (std::size_t i = 0; i < 3; ++i) {
      std::vector<double>& column = columns_[3 * v + i];
      column.reserve(paths.size());
      for (const DU::LightPath& path : paths) {
        column.push_back((path.*vector)(static_cast<int>(i)));
      }
    }
    arrays_.*kPathVectors[v].inColumns = {columns_[3 * v].data(),
                                          columns_[3 * v + 1].data(),
                                          columns_[3 * v + 2].data()};
  }
}

}  // namespace ZARN::Testing

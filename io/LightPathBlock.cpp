#include "io/LightPathBlock.hpp"

namespace ZARN::IO {

void LightPathBlock::Resize(std::size_t size) {
  types.resize(size);
  for (std::vector<double>& column : coordinates) column.resize(size);
}

DU::eLightPathType LightPathBlock::TypeOfName(std::string_view name) {
  for (std::size_t type = 0; type < DU::kLightPathTypeNames.size(); ++type) {
    if (name == DU::kLightPathTypeNames[type]) {
      return static_cast<DU::eLightPathType>(type);
    }
  }
  return kUnknownType;
}

void LightPathBlock::SetType(std::size_t index, std::string_view name) {
  types[index] = TypeOfName(name);
  if (types[index] != kUnknownType) return;
  unknownTypes.push_back({index, std::string(name)});
}

void LightPathBlock::SetType(std::size_t index, std::int64_t number) {
  const bool isKnown = 0 <= number && number < DU::kNumberOfLightPathTypes;
  types[index] = isKnown ? static_cast<int>(number) : kUnknownType;
  if (!isKnown) unknownTypes.push_back({index, std::to_string(number)});
}

DU::LightPathArrays LightPathBlock::Arrays() const {
  const auto vector = [this](std::size_t number) -> DU::VectorArrays {
    return {coordinates[3 * number].data(), coordinates[3 * number + 1].data(),
            coordinates[3 * number + 2].data()};
  };
  return {types.data(), vector(3), vector(2), vector(0), vector(1),
          vector(4),    vector(5), vector(6), vector(7)};
}

}  // namespace ZARN::IO

#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::DU {

LightPathCalculator::LightPathCalculator() {
  for (std::size_t type = 0; type < kLightPathTypeNames.size(); ++type) {
    typeNames_[static_cast<eLightPathType>(type)] = kLightPathTypeNames[type];
  }
}

}  // namespace ZARN::DU

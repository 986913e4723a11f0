#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/Crossings.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

/// A vector of a light path: its CSV columns are <name>_x, <name>_y, <name>_z.
struct LightPathVector {
  const char* name;
  TVector3 DU::LightPath::*member;
};

inline constexpr std::array<LightPathVector, 8> kLightPathVectors = {
    {{"start", &DU::LightPath::StartPos},
     {"end", &DU::LightPath::EndPos},
     {"initial", &DU::LightPath::InitialDirection},
     {"final", &DU::LightPath::FinalDirection},
     {"av1", &DU::LightPath::AVPoint1},
     {"av2", &DU::LightPath::AVPoint2},
     {"av3", &DU::LightPath::AVPoint3},
     {"av4", &DU::LightPath::AVPoint4}}};

/// Number of the vectors, from the first, that paths of a type use; all for an
/// unknown type.
inline std::size_t VectorsOf(DU::eLightPathType type) {
  if (!DU::IsKnownType(type)) return kLightPathVectors.size();
  return kLightPathVectors.size() - DU::kAVPoints.size() +
         DU::kCrossings[type].size();
}

/// The names of all columns: "type", then those of the vectors in order.
inline std::vector<std::string> LightPathColumns() {
  std::vector<std::string> names = {"type"};
  for (const LightPathVector& vector : kLightPathVectors) {
    for (const char* axis : {"_x", "_y", "_z"}) {
      names.push_back(vector.name + std::string(axis));
    }
  }
  return names;
}

}  // namespace ZARN::IO

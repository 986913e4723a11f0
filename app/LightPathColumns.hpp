#pragma once

#include <array>

#include "TVector3.h"
#include "lightpath/LightPath.hpp"

namespace ZARN::App {

/// The columns <name>_x, <name>_y and <name>_z of light paths in CSV.
struct LightPathColumns {
  const char* name;
  TVector3 DU::LightPath::*member;
};

inline constexpr std::array<LightPathColumns, 8> kLightPathColumns = {
    {{"start", &DU::LightPath::StartPos},
     {"end", &DU::LightPath::EndPos},
     {"initial", &DU::LightPath::InitialDirection},
     {"final", &DU::LightPath::FinalDirection},
     {"av1", &DU::LightPath::AVPoint1},
     {"av2", &DU::LightPath::AVPoint2},
     {"av3", &DU::LightPath::AVPoint3},
     {"av4", &DU::LightPath::AVPoint4}}};

}  // namespace ZARN::App

#pragma once

#include <array>

#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"

namespace ZARN::Testing {

/// A vector of a light path, in a record and in columns.
struct PathVector {
  TVector3 DU::LightPath::*inRecord;
  DU::VectorArrays DU::LightPathArrays::*inColumns;
};
inline constexpr std::array<PathVector, 8> kPathVectors = {{
    {&DU::LightPath::FinalDirection, &DU::LightPathArrays::FinalDirection},
    {&DU::LightPath::InitialDirection, &DU::LightPathArrays::InitialDirection},
    {&DU::LightPath::StartPos, &DU::LightPathArrays::StartPos},
    {&DU::LightPath::EndPos, &DU::LightPathArrays::EndPos},
    {&DU::LightPath::AVPoint1, &DU::LightPathArrays::AVPoint1},
    {&DU::LightPath::AVPoint2, &DU::LightPathArrays::AVPoint2},
    {&DU::LightPath::AVPoint3, &DU::LightPathArrays::AVPoint3},
    {&DU::LightPath::AVPoint4, &DU::LightPathArrays::AVPoint4},
}};

}  // namespace ZARN::Testing

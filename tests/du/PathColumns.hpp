#pragma once

#include <array>
#include <vector>

#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"

namespace ZARN::Testing {

/// Paths as columns; owns the data that their arrays point to.
class PathColumns {
 public:
  explicit PathColumns(const std::vector<DU::LightPath>& paths) {
    for (const DU::LightPath& path : paths) {
      types_.push_back(path.LightPathType);
      for (std::size_t i = 0; i < kVectors.size(); ++i) {
        const TVector3& vector = path.*kVectors[i].inRecord;
        for (const int axis : {0, 1, 2}) {
          values_[i][static_cast<std::size_t>(axis)].push_back(vector[axis]);
        }
      }
    }
  }

  DU::LightPathArrays Arrays() const {
    DU::LightPathArrays arrays;
    arrays.LightPathType = types_.data();
    for (std::size_t i = 0; i < kVectors.size(); ++i) {
      const auto& [x, y, z] = values_[i];
      arrays.*kVectors[i].inColumns = {x.data(), y.data(), z.data()};
    }
    return arrays;
  }

 private:
  struct Vector {
    TVector3 DU::LightPath::*inRecord;
    DU::VectorArrays DU::LightPathArrays::*inColumns;
  };
  static constexpr std::array<Vector, 8> kVectors = {{
      {&DU::LightPath::FinalDirection, &DU::LightPathArrays::FinalDirection},
      {&DU::LightPath::InitialDirection,
       &DU::LightPathArrays::InitialDirection},
      {&DU::LightPath::StartPos, &DU::LightPathArrays::StartPos},
      {&DU::LightPath::EndPos, &DU::LightPathArrays::EndPos},
      {&DU::LightPath::AVPoint1, &DU::LightPathArrays::AVPoint1},
      {&DU::LightPath::AVPoint2, &DU::LightPathArrays::AVPoint2},
      {&DU::LightPath::AVPoint3, &DU::LightPathArrays::AVPoint3},
      {&DU::LightPath::AVPoint4, &DU::LightPathArrays::AVPoint4},
  }};

  std::vector<int> types_;
  std::array<std::array<std::vector<double>, 3>, kVectors.size()> values_;
};

}  // namespace ZARN::Testing

#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"

namespace ZARN::Testing {

/// Whether the water segments of paths of a type use a vector.
bool UsesVector(DU::eLightPathType type, TVector3 DU::LightPath::*vector);

/// Light paths as columns.
class PathColumns {
 public:
  /// What to do with arrays that no path uses.
  enum class eUnused { kFilled, kNull };

  PathColumns(const std::vector<DU::LightPath>& paths, eUnused unused);
  PathColumns(const PathColumns&) = delete;
  PathColumns& operator=(const PathColumns&) = delete;
  ~PathColumns() = default;

  const DU::LightPathArrays& Arrays() const { return arrays_; }

 private:
  std::vector<int> types_;
  std::array<std::vector<double>, 24> columns_;
  DU::LightPathArrays arrays_;
};

}  // namespace ZARN::Testing

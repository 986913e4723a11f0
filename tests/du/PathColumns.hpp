#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"
#include "tests/support/PathVectors.hpp"

namespace ZARN::Testing {

/// Paths as columns; owns the data that their arrays point to.
class PathColumns {
 public:
  explicit PathColumns(const std::vector<DU::LightPath>& paths) {
    for (const DU::LightPath& path : paths) {
      types_.push_back(path.LightPathType);
      for (std::size_t i = 0; i < kPathVectors.size(); ++i) {
        const TVector3& vector = path.*kPathVectors[i].inRecord;
        for (const int axis : {0, 1, 2}) {
          values_[i][static_cast<std::size_t>(axis)].push_back(vector[axis]);
        }
      }
    }
  }

  DU::LightPathArrays Arrays() const {
    DU::LightPathArrays arrays;
    arrays.LightPathType = types_.data();
    for (std::size_t i = 0; i < kPathVectors.size(); ++i) {
      const auto& [x, y, z] = values_[i];
      arrays.*kPathVectors[i].inColumns = {x.data(), y.data(), z.data()};
    }
    return arrays;
  }

 private:
  std::vector<int> types_;
  std::array<std::array<std::vector<double>, 3>, kPathVectors.size()> values_;
};

/// The same as fields of packed records, one byte after an aligned address.
class PackedPaths {
 public:
  explicit PackedPaths(const std::vector<DU::LightPath>& paths)
      : bytes_(1 + paths.size() * kRecord) {
    std::byte* to = bytes_.data() + 1;
    for (const DU::LightPath& path : paths) {
      const int type = path.LightPathType;
      std::memcpy(to, &type, sizeof type);
      to += sizeof type;
      for (const PathVector& vector : kPathVectors) {
        for (const int axis : {0, 1, 2}) {
          const double value = (path.*vector.inRecord)[axis];
          std::memcpy(to, &value, sizeof value);
          to += sizeof value;
        }
      }
    }
  }

  DU::LightPathArrays Arrays() const {
    const std::byte* from = bytes_.data() + 1;
    DU::LightPathArrays arrays;
    arrays.LightPathType = {from, kRecord};
    from += sizeof(int);
    for (const PathVector& vector : kPathVectors) {
      arrays.*vector.inColumns = {{from, kRecord},
                                  {from + sizeof(double), kRecord},
                                  {from + 2 * sizeof(double), kRecord}};
      from += 3 * sizeof(double);
    }
    return arrays;
  }

 private:
  static constexpr std::ptrdiff_t kRecord =
      sizeof(int) + kPathVectors.size() * 3 * sizeof(double);

  std::vector<std::byte> bytes_;
};

}  // namespace ZARN::Testing

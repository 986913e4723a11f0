#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lightpath/LightPathArrays.hpp"

namespace ZARN::IO {

/// Consecutive light paths of an input, as dense columns.
struct LightPathBlock {
  /// The type of paths whose type name, or number, is not one of the eight.
  static constexpr auto kUnknownType =
      static_cast<DU::eLightPathType>(DU::kNumberOfLightPathTypes);

  struct UnknownType {
    std::size_t index;  ///< of the path
    std::string name;   ///< in the input
  };

  std::vector<int> types;  ///< values of eLightPathType
  std::vector<UnknownType> unknownTypes;
  /// start_x, start_y, start_z, end_x ... av4_z: in the order of the columns
  /// of a CSV file of light paths.
  std::array<std::vector<double>, 24> coordinates;

  std::size_t Size() const { return types.size(); }

  /// Make room for so many paths. Columns keep their memory.
  void Resize(std::size_t size);

  /// Set the type of a path by its name or its number. Call it in the order of
  /// the paths, and clear unknownTypes before.
  void SetType(std::size_t index, std::string_view name);
  void SetType(std::size_t index, std::int64_t number);

  /// The type with this name, or kUnknownType.
  static DU::eLightPathType TypeOfName(std::string_view name);

  /// The columns, valid until the next change of the size.
  DU::LightPathArrays Arrays() const;
};

}  // namespace ZARN::IO

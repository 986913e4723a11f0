#pragma once

#include <nanobind/nanobind.h>

#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

#include "lightpath/LightPathArrays.hpp"
#include "python/module/Buffer.hpp"

namespace ZARN::Python {

/// Light paths in arrays that Python owns, one for each column.
class Paths {
 public:
  /// @param types    numbers of eLightPathType, 'i'
  /// @param columns  coordinates, 'd', in the order of IO::LightPathColumns
  ///                 without the type; None for those that are missing
  /// @throws nanobind::value_error if arrays differ in length, or a column is
  ///         missing that a path's type uses; it names the column
  Paths(const nanobind::object& types, const nanobind::list& columns);

  std::size_t Count() const { return types_.Size(); }
  const DU::LightPathArrays& Arrays() const { return arrays_; }

 private:
  void RequireColumns() const;

  Buffer types_;
  std::deque<Buffer> columns_;
  DU::LightPathArrays arrays_;
};

}  // namespace ZARN::Python

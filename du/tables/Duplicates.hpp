#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "TVector3.h"

namespace ZARN::DU {

/// The first two positions, by their order, that are the same within
/// kSamePlace, and how many more are given again.
struct Duplicates {
  std::size_t first;
  std::size_t second;
  std::size_t others;
};

/// Positions that are given twice; none if all differ. Those that are not
/// finite are left out. Takes n log n steps for n positions, unless many lie
/// in one plane of x.
std::optional<Duplicates> FindDuplicates(
    const std::vector<TVector3>& positions);

}  // namespace ZARN::DU

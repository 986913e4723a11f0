#pragma once

#include <cstddef>
#include <vector>

#include "lightpath/LightPath.hpp"

namespace ZARN::Testing {

/// The first paths of data/example-paths.csv, which were computed in the
/// reference detector.
///
/// @throws std::runtime_error if there are fewer
std::vector<DU::LightPath> ExamplePaths(std::size_t count);

}  // namespace ZARN::Testing

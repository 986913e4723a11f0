#pragma once

#include <cstddef>

#include "tests/property/Random.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::Testing {

/// The tables of one invented geometry.
struct Detector {
  Tables tables;
  std::size_t plates = 0;  ///< belly plates, for the size of their grid
};

/// Invent a geometry. Half of them could be built; the others have odd sizes,
/// degenerate ropes, missing or damaged tables, or numbers that are none.
Detector MakeDetector(Random& random);

}  // namespace ZARN::Testing

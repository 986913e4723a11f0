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
///
/// @param mostRopes  hold-down ropes: each has some 2,000 surface points, and
///                   the plain calculator asks them all
Detector MakeDetector(Random& random, std::size_t mostRopes = 10);

}  // namespace ZARN::Testing

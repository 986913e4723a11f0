#pragma once

#include <cstddef>

#include "tests/property/Random.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::Testing {

/// The tables of a random geometry.
struct Detector {
  Tables tables;
  std::size_t plates = 0;  ///< belly plates, for the size of their grid
};

/// Make a random geometry. Half of them could be built; the others have unusual
/// sizes, degenerate ropes, missing or damaged tables, or NaN and infinity.
///
/// @param mostRopes  maximum number of hold-down ropes: each has about 2,000
///                   surface points, and the plain calculator tests them all
Detector MakeDetector(Random& random, std::size_t mostRopes = 10);

}  // namespace ZARN::Testing

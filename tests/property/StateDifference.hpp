#pragma once

#include <string>

#include "du/ShadowingCalculator.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// Compare the complete state of two calculators: flags, tolerances, radii and
/// every list, bit for bit (a NaN equals a NaN).
///
/// @return the first difference; empty if there is none
std::string StateDifference(const DU::ShadowingCalculator& real,
                            const Reference::PlainShadowingCalculator& plain);

}  // namespace ZARN::Testing

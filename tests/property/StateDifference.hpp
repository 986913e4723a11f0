#pragma once

#include <string>

#include "du/ShadowingCalculator.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Testing {

/// Compare all that the two calculators hold: flags, tolerances, radii and
/// every list, bit for bit (a NaN equals a NaN).
///
/// @return what differs first; empty if nothing does
std::string StateDifference(const DU::ShadowingCalculator& real,
                            const Reference::PlainShadowingCalculator& plain);

}  // namespace ZARN::Testing

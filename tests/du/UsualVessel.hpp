#pragma once

namespace ZARN::Testing {

/// With which tests of one component judge it, mm.
inline constexpr double kTolerance = 150.0;
inline constexpr double kOuterAVRadius = 5860.0;

}  // namespace ZARN::Testing

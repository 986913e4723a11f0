#pragma once

namespace ZARN::Testing {

// What tests of single components use, mm.

inline constexpr double kTolerance = 150.0;
inline constexpr double kOuterAVRadius = 5860.0;

}  // namespace ZARN::Testing

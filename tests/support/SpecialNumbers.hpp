#pragma once

#include <limits>

namespace ZARN::Testing {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace ZARN::Testing

#pragma once

namespace ZARN::DU {

// Literals, so that no library's rounding of pi can change a verdict.
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kHalfPi = 1.5707963267948966;
inline constexpr double kDegreesPerRadian = 57.29577951308232;

/// Radius of the sphere on which all ropes end, at the top or the bottom, mm.
inline constexpr double kRopeEndSphereRadius = 8500.0;

}  // namespace ZARN::DU

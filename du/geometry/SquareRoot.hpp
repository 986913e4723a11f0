#pragma once

namespace ZARN::DU {

// The filters' functions are always inlined, and call no function of the
// standard library that might not be: batch kernels are compiled for several
// processors, and the linker keeps one copy of a function that is not inlined,
// perhaps the one that this processor cannot run.

[[gnu::always_inline]] inline double SquareRoot(double x) {
  return __builtin_sqrt(x);
}
[[gnu::always_inline]] inline float SquareRoot(float x) {
  return __builtin_sqrtf(x);
}

}  // namespace ZARN::DU

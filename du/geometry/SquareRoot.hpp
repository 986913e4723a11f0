#pragma once

namespace ZARN::DU {

// The functions of the filters are always inlined, and call no function of the
// standard library that might not be. Batch kernels are compiled for several
// processors; if a function is not inlined, the linker keeps only one copy of
// it, which may be one that this processor cannot run.

[[gnu::always_inline]] inline double SquareRoot(double x) {
  return __builtin_sqrt(x);
}
[[gnu::always_inline]] inline float SquareRoot(float x) {
  return __builtin_sqrtf(x);
}

}  // namespace ZARN::DU

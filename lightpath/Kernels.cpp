#include "lightpath/Kernels.hpp"

namespace ZARN::DU {

std::vector<eKernel> AvailableKernels() {
  std::vector<eKernel> kernels = {eKernel::kBaseline};
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2") != 0) kernels.push_back(eKernel::kAVX2);
  if (__builtin_cpu_supports("avx512f") != 0 &&
      __builtin_cpu_supports("avx512vl") != 0 &&
      __builtin_cpu_supports("avx512dq") != 0 &&
      __builtin_cpu_supports("avx512bw") != 0) {
    kernels.push_back(eKernel::kAVX512);
  }
#endif
  return kernels;
}

}  // namespace ZARN::DU

#pragma once

#include <vector>

namespace ZARN::DU {

/// Kinds of processors for which loops over many paths are compiled.
enum class eKernel { kBaseline, kAVX2, kAVX512 };

/// The kernels that this processor can run, the narrowest first.
std::vector<eKernel> AvailableKernels();

/// The widest of them.
inline eKernel WidestKernel() { return AvailableKernels().back(); }

}  // namespace ZARN::DU

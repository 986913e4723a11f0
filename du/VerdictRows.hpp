#pragma once

#include <cstdint>

#include "du/Verdict.hpp"

namespace ZARN::DU {

/// Where ShadowingCalculator::FindVerdicts writes: one value for each PMT.
/// Null for what is not needed, which then costs nothing.
struct VerdictRows {
  eVerdict* direct;               ///< on the direct light; never null
  eVerdict* reflected = nullptr;  ///< on the light reflected at the vessel
  /// The eLightPathType of the direct light, kUninitialised where there is no
  /// path. (One byte each: rows are written faster than memory takes them.)
  std::uint8_t* types = nullptr;
};

}  // namespace ZARN::DU

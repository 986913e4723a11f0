#pragma once

namespace ZARN::DU {

/// The layers in front of the formulas. Each decides only what it surely knows
/// and hands the rest on, so the verdicts are the same with any of them off; a
/// layer that is off is built to know nothing. For benchmarks and tests.
struct ShadowingLayers {
  /// Crossings, heights and rope angles from products and square roots, with
  /// guard bands; off: cosine, arc cosine and tangent.
  bool algebra = true;
  /// Azimuth tables before the ropes' dot products; off: one cell for all.
  bool tables = true;
  /// The map of the vessel sphere before all tests of crossing points; off: the
  /// tests.
  bool map = true;
};

}  // namespace ZARN::DU

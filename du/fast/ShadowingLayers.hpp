#pragma once

namespace ZARN::DU {

/// The layers that are used before the formulas. Each decides only the cases
/// that it can prove and leaves the rest to the next, so verdicts are the same
/// with any of them off; a layer that is off is built so that it proves
/// nothing. For benchmarks and tests.
struct ShadowingLayers {
  /// Crossings, heights and rope angles by products and square roots, with
  /// guard bands; off: by cosine, arc cosine and tangent.
  bool algebra = true;
  /// Azimuth tables before the ropes' scalar products; off: a single cell.
  bool tables = true;
  /// The map of the vessel sphere before all tests of crossing points; off:
  /// only the tests.
  bool map = true;
};

}  // namespace ZARN::DU

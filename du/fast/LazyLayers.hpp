#pragma once

#include <atomic>
#include <cstdint>

#include "du/fast/MadeOnce.hpp"
#include "du/fast/ShadowingBatch.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "du/hardware/Hardware.hpp"

namespace ZARN::DU {

/// The layers of one geometry and one set of tolerances.
struct PreparedLayers {
  PreparedLayers(const Hardware& hardware, const ShadowingLayers& layers)
      : filter(hardware, layers), batch(filter) {}

  ShadowingFilter filter;
  ShadowingBatch batch;
};

/// Makes the layers when it pays: once the formulas have cost as much as making
/// the layers would, or on request.
///
/// Thread-safe: one thread makes the layers while others continue with the
/// formulas, which also continue to be used if there is no memory (MadeOnce).
class LazyLayers {
 public:
  /// @param hardware  the same as in every other call
  /// @param wanted    the layers that are made
  LazyLayers(const Hardware& hardware, const ShadowingLayers& wanted);

  /// The layers, or null if they are not made.
  const PreparedLayers* Get() const { return layers_.Get(); }

  /// Count a path that the formulas judged, and make the layers if they pay.
  void CountByFormulas(const Hardware& hardware, ePathKind kind);

  /// Make the layers now, unless they are made or another thread makes them.
  void Make(const Hardware& hardware) noexcept {
    layers_.Make(hardware, wanted_);
  }

 private:
  const ShadowingLayers wanted_;
  // In units of what the formulas take for one surface point.
  std::uint64_t costOfMaking_;
  std::uint64_t costOfCrossing_;
  std::uint64_t costInWater_;
  std::atomic<std::uint64_t> spent_ = 0;
  MadeOnce<PreparedLayers> layers_;
};

}  // namespace ZARN::DU

#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "du/fast/ShadowingBatch.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "du/hardware/Hardware.hpp"

namespace ZARN::DU {

/// What is made for one geometry and one set of tolerances.
struct PreparedLayers {
  PreparedLayers(const Hardware& hardware, const ShadowingLayers& layers)
      : filter(hardware, layers), batch(filter) {}

  ShadowingFilter filter;
  ShadowingBatch batch;
};

/// The layers of one geometry and one set of tolerances, made when they pay:
/// once the formulas have cost what making them would, or when asked for.
///
/// Thread-safe: one thread makes the layers while others go on with the
/// formulas. Where there is no memory for them, the formulas go on for good.
/// From then on nothing here is written.
class LazyLayers {
 public:
  /// @param hardware  the one that every other call is made with
  /// @param wanted    the layers that are made
  LazyLayers(const Hardware& hardware, const ShadowingLayers& wanted);

  LazyLayers(const LazyLayers&) = delete;
  LazyLayers& operator=(const LazyLayers&) = delete;

  /// The layers; null where they are not made.
  const PreparedLayers* Get() const {
    return state_.load(std::memory_order_acquire) == eState::kMade ? &*layers_
                                                                   : nullptr;
  }

  /// Count a path that the formulas judged, and make the layers if they pay.
  void CountByFormulas(const Hardware& hardware, ePathKind kind);

  /// Make the layers now, unless another thread makes them already.
  void Make(const Hardware& hardware) noexcept;

 private:
  enum class eState { kNotMade, kBeingMade, kMade, kFailed };

  const ShadowingLayers wanted_;
  // In units of what the formulas take for one surface point.
  std::uint64_t costOfMaking_;
  std::uint64_t costOfCrossing_;
  std::uint64_t costInWater_;
  std::atomic<std::uint64_t> spent_ = 0;
  std::atomic<eState> state_ = eState::kNotMade;
  std::optional<PreparedLayers> layers_;
};

}  // namespace ZARN::DU

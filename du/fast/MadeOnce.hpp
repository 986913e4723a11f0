#pragma once

#include <atomic>
#include <exception>
#include <optional>

namespace ZARN::DU {

/// A thing that is made when it is first needed.
///
/// Thread-safe: one thread makes it while others go without. If there is no
/// memory for it, there is none. After it was tried, no call writes to this
/// object.
template <class Thing>
class MadeOnce {
 public:
  MadeOnce() = default;
  MadeOnce(const MadeOnce&) = delete;
  MadeOnce& operator=(const MadeOnce&) = delete;

  /// The thing, or null if it is not made.
  const Thing* Get() const {
    return state_.load(std::memory_order_acquire) == eState::kMade ? &*thing_
                                                                   : nullptr;
  }

  bool WasTried() const {
    return state_.load(std::memory_order_relaxed) != eState::kNotMade;
  }

  /// Make it now from these arguments, unless it was tried.
  template <class... Arguments>
  void Make(const Arguments&... arguments) noexcept {
    if (WasTried()) return;
    eState expected = eState::kNotMade;
    if (!state_.compare_exchange_strong(expected, eState::kBeingMade)) return;
    try {
      thing_.emplace(arguments...);
      state_.store(eState::kMade, std::memory_order_release);
    } catch (const std::exception&) {
      state_.store(eState::kFailed, std::memory_order_relaxed);
    }
  }

 private:
  enum class eState { kNotMade, kBeingMade, kMade, kFailed };

  std::atomic<eState> state_ = eState::kNotMade;
  std::optional<Thing> thing_;
};

}  // namespace ZARN::DU

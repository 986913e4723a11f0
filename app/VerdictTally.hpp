#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>

#include "du/ShadowingCalculator.hpp"
#include "du/ShadowingComponent.hpp"

namespace ZARN::App {

/// Counts verdicts and prints them as the table at the end of a command.
class VerdictTally {
 public:
  void Add(DU::eShadowingComponent verdict) {
    ++counts_[static_cast<std::size_t>(verdict)];
  }

  std::uint64_t Paths() const;

  /// @param calculator  tells which components were loaded
  /// @param seconds     how long the paths took
  void Print(std::ostream& out, const DU::ShadowingCalculator& calculator,
             double seconds) const;

 private:
  std::array<std::uint64_t, DU::kShadowingComponents.size() + 1> counts_ = {};
};

}  // namespace ZARN::App

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "du/Verdict.hpp"
#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::Scan {

/// Counts the verdicts on light paths.
class VerdictCounts {
 public:
  void Add(DU::eShadowingComponent verdict, std::uint64_t count = 1) {
    counts_[static_cast<std::size_t>(verdict)] += count;
  }
  VerdictCounts& operator+=(const VerdictCounts& other);

  /// Add a row of verdicts; those that say why there is no path are not
  /// counted.
  void AddRow(const DU::eVerdict* row, std::size_t length);

  /// Number of paths with this verdict.
  std::uint64_t Of(DU::eShadowingComponent verdict) const {
    return counts_[static_cast<std::size_t>(verdict)];
  }

  std::uint64_t Paths() const;
  std::uint64_t Shadowed() const;

  /// The component that shadows most paths; among equals the one that is tested
  /// first; kNone if no path is shadowed.
  DU::eShadowingComponent MostFrequent() const;

 private:
  std::array<std::uint64_t, DU::kNumberOfComponents + 1> counts_ = {};
};

}  // namespace ZARN::Scan

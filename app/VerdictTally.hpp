#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "du/ShadowingCalculator.hpp"
#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::App {

/// A line of the table at the end of a command.
void PrintCount(std::ostream& out, const std::string& label,
                std::uint64_t count);

/// Counts verdicts and prints them as the table at the end of a command.
class VerdictTally {
 public:
  void Add(DU::eShadowingComponent verdict) {
    ++counts_[static_cast<std::size_t>(verdict)];
  }

  std::uint64_t Paths() const;
  std::uint64_t Shadowed() const;

  /// The component that shadows most, of several the one that is tested first;
  /// kNone where nothing does.
  DU::eShadowingComponent MostFrequent() const;

  /// @param calculator  tells which components were loaded
  /// @param seconds     how long the paths took
  void Print(std::ostream& out, const DU::ShadowingCalculator& calculator,
             double seconds) const;

 private:
  std::array<std::uint64_t, DU::kShadowingComponents.size() + 1> counts_ = {};
};

}  // namespace ZARN::App

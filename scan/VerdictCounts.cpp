#include "scan/VerdictCounts.hpp"

#include <algorithm>
#include <numeric>

namespace ZARN::Scan {

VerdictCounts& VerdictCounts::operator+=(const VerdictCounts& other) {
  for (std::size_t i = 0; i < counts_.size(); ++i) {
    counts_[i] += other.counts_[i];
  }
  return *this;
}

void VerdictCounts::AddRow(const DU::eVerdict* row, std::size_t length) {
  // Sums that fit into a byte, so that one instruction counts many verdicts.
  constexpr std::size_t kPart = 192;
  for (std::size_t begin = 0; begin < length; begin += kPart) {
    const std::size_t end = std::min(begin + kPart, length);
    for (std::size_t component = 0; component < counts_.size(); ++component) {
      const auto verdict = static_cast<DU::eVerdict>(component);
      std::uint8_t sum = 0;
      for (std::size_t i = begin; i < end; ++i) {
        sum = static_cast<std::uint8_t>(sum + (row[i] == verdict ? 1 : 0));
      }
      counts_[component] += sum;
    }
  }
}

std::uint64_t VerdictCounts::Paths() const {
  return std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
}

std::uint64_t VerdictCounts::Shadowed() const {
  return Paths() - Of(DU::eShadowingComponent::kNone);
}

DU::eShadowingComponent VerdictCounts::MostFrequent() const {
  auto most = DU::eShadowingComponent::kNone;
  std::uint64_t highest = 0;
  for (const auto component : DU::kShadowingComponents) {
    if (Of(component) > highest) {
      most = component;
      highest = Of(component);
    }
  }
  return most;
}

}  // namespace ZARN::Scan

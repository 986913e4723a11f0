#include "scan/VerdictCounts.hpp"

#include <numeric>

namespace ZARN::Scan {

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

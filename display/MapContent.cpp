#include "display/MapContent.hpp"

#include <numeric>

namespace ZARN::Display {

void MapCounts::Add(DU::eVerdict verdict, std::uint64_t count) {
  if (DU::HasPath(verdict)) {
    paths.Add(DU::ComponentOf(verdict), count);
    return;
  }
  const std::size_t reason =
      static_cast<std::size_t>(verdict) -
      static_cast<std::size_t>(DU::eVerdict::kTotalReflection);
  if (reason < withoutPath.size()) withoutPath[reason] += count;
}

std::uint64_t MapCounts::WithoutPath() const {
  return std::accumulate(withoutPath.begin(), withoutPath.end(),
                         std::uint64_t{0});
}

}  // namespace ZARN::Display

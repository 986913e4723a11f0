#include "du/tables/Duplicates.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "du/tables/Vessel.hpp"

namespace ZARN::DU {

std::optional<Duplicates> FindDuplicates(
    const std::vector<TVector3>& positions) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (std::isfinite(positions[i].Mag2())) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) {
                     return positions[a].X() < positions[b].X();
                   });
  // For each position the first one, by their order, at the same place.
  std::vector<std::size_t> firsts(positions.size());
  std::iota(firsts.begin(), firsts.end(), 0U);
  for (std::size_t i = 0; i < order.size(); ++i) {
    const TVector3& a = positions[order[i]];
    for (std::size_t k = i + 1; k < order.size(); ++k) {
      const TVector3& b = positions[order[k]];
      if (b.X() - a.X() >= kSamePlace) break;
      if ((b - a).Mag() >= kSamePlace) continue;
      const auto [first, second] = std::minmax(order[i], order[k]);
      firsts[second] = std::min(firsts[second], first);
    }
  }
  std::optional<Duplicates> found;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (firsts[i] == i) continue;
    if (found.has_value()) {
      ++found->others;
    } else {
      found = Duplicates{firsts[i], i, 0};
    }
  }
  return found;
}

}  // namespace ZARN::DU

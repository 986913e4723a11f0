#include "log/NearestName.hpp"

#include <algorithm>
#include <cstddef>

namespace ZARN {
namespace {

/// Number of characters changed, missing, added, or swapped with the next.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  // Between the first i characters of a and the first k of b.
  std::vector<std::vector<std::size_t>> distance(
      a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t k = 0; k <= b.size(); ++k) {
      std::size_t& least = distance[i][k];
      if (i == 0 || k == 0) {
        least = i + k;
        continue;
      }
      least = std::min({distance[i - 1][k] + 1, distance[i][k - 1] + 1,
                        distance[i - 1][k - 1] + (a[i - 1] != b[k - 1])});
      const bool isSwapped =
          i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1];
      if (isSwapped) least = std::min(least, distance[i - 2][k - 2] + 1);
    }
  }
  return distance.back().back();
}

}  // namespace

std::string NearestName(const std::string& name,
                        const std::vector<std::string>& names) {
  std::string nearest;
  std::size_t least = name.size() / 3 + 1;
  for (const std::string& candidate : names) {
    // A distance is at least the difference of the lengths; its table for a
    // very long name would be large.
    if (name.size() >= candidate.size() + least) continue;
    const std::size_t distance = EditDistance(name, candidate);
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

std::string Suggest(const std::string& nearest) {
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

}  // namespace ZARN

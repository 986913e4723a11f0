#include "lightpath/PMTArray.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ZARN::DU {
namespace {

/// Distances of PMTs that a table can hold for, mm.
constexpr double kNearest = 1.0;
constexpr double kFarthest = 1e9;

/// With fewer PMTs a table costs more than it saves.
constexpr std::size_t kFewest = 128;

/// The number of groups if distances vary without steps.
constexpr double kWideGroups = 20.0;

}  // namespace

PMTArray::PMTArray(std::vector<TVector3> positions)
    : positions_(std::move(positions)) {
  std::vector<double> radii;
  std::vector<std::uint32_t> others;
  radii.reserve(positions_.size());
  for (const TVector3& position : positions_) {
    const auto pmt = static_cast<std::uint32_t>(radii.size());
    radii.push_back(position.Mag());
    const bool isUsual = radii.back() >= kNearest && radii.back() <= kFarthest;
    (isUsual ? order_ : others).push_back(pmt);
  }
  std::stable_sort(
      order_.begin(), order_.end(),
      [&](std::uint32_t a, std::uint32_t b) { return radii[a] < radii[b]; });
  MakeGroups(radii);
  // Neighbours in the file are often neighbours in space.
  for (const Group& group : groups_) {
    std::sort(order_.begin() + static_cast<std::ptrdiff_t>(group.begin),
              order_.begin() + static_cast<std::ptrdiff_t>(group.end));
  }
  for (const std::uint32_t pmt : order_) {
    const double inverse = 1.0 / radii[pmt];
    // The same unit vector as that of a single path.
    const TVector3 direction = positions_[pmt] * inverse;
    x_.push_back(direction.X());
    y_.push_back(direction.Y());
    z_.push_back(direction.Z());
    inverseRadius_.push_back(inverse);
  }
  order_.insert(order_.end(), others.begin(), others.end());
}

void PMTArray::MakeGroups(const std::vector<double>& radii) {
  const auto divide = [&](double width) {
    groups_.clear();
    for (std::size_t i = 0; i < order_.size(); ++i) {
      const double radius = radii[order_[i]];
      if (groups_.empty() || radius > groups_.back().lowest * (1.0 + width)) {
        groups_.push_back({i, i, radius, radius});
      }
      groups_.back().end = i + 1;
      groups_.back().highest = radius;
    }
  };
  if (order_.empty()) return;
  divide(kNarrow);
  if (groups_.size() == 1 || groups_.size() * kFewest <= order_.size()) return;
  const double range = radii[order_.back()] / radii[order_.front()];
  divide(std::pow(range, 1.0 / kWideGroups) - 1.0);
}

}  // namespace ZARN::DU

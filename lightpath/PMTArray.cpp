#include "lightpath/PMTArray.hpp"

#include <algorithm>
#include <array>
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

/// The coordinate in which directions differ most.
int LongestAxis(const std::vector<TVector3>& directions,
                const std::uint32_t* begin, const std::uint32_t* end) {
  std::array<double, 3> lengths = {};
  for (std::size_t axis = 0; axis < lengths.size(); ++axis) {
    const auto i = static_cast<int>(axis);
    const auto [least, most] =
        std::minmax_element(begin, end, [&](std::uint32_t a, std::uint32_t b) {
          return directions[a][i] < directions[b][i];
        });
    lengths[axis] = directions[*most][i] - directions[*least][i];
  }
  return static_cast<int>(std::max_element(lengths.begin(), lengths.end()) -
                          lengths.begin());
}

}  // namespace

PMTArray::PMTArray(std::vector<TVector3> positions)
    : positions_(std::move(positions)) {
  std::vector<double> radii;
  std::vector<TVector3> directions;
  std::vector<std::uint32_t> others;
  radii.reserve(positions_.size());
  directions.reserve(positions_.size());
  for (const TVector3& position : positions_) {
    const auto pmt = static_cast<std::uint32_t>(radii.size());
    radii.push_back(position.Mag());
    const bool isUsual = radii.back() >= kNearest && radii.back() <= kFarthest;
    // The same unit vector as that of a single path.
    directions.push_back(isUsual ? position * (1.0 / radii.back()) : position);
    (isUsual ? order_ : others).push_back(pmt);
  }
  std::stable_sort(
      order_.begin(), order_.end(),
      [&](std::uint32_t a, std::uint32_t b) { return radii[a] < radii[b]; });
  MakeGroups(radii);
  for (Group& group : groups_) {
    MakePatches(group, group.begin, group.end, directions);
  }
  for (const std::uint32_t pmt : order_) {
    x_.push_back(directions[pmt].X());
    y_.push_back(directions[pmt].Y());
    z_.push_back(directions[pmt].Z());
    inverseRadius_.push_back(1.0 / radii[pmt]);
  }
  order_.insert(order_.end(), others.begin(), others.end());
}

void PMTArray::MakeGroups(const std::vector<double>& radii) {
  const auto divide = [&](double width) {
    groups_.clear();
    for (std::size_t i = 0; i < order_.size(); ++i) {
      const double radius = radii[order_[i]];
      if (groups_.empty() || radius > groups_.back().lowest * (1.0 + width)) {
        groups_.push_back({i, i, radius, radius, {}});
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

/// Divide PMTs of a group at the middle of their longest side until they are
/// few, and order them by this division. Every patch but the last is full.
void PMTArray::MakePatches(Group& group, std::size_t begin, std::size_t end,
                           const std::vector<TVector3>& directions) {
  std::uint32_t* const first = order_.data() + begin;
  std::uint32_t* const last = order_.data() + end;
  const std::size_t patches = (end - begin - 1) / kMostInPatch + 1;
  if (patches > 1) {
    const std::size_t middle = begin + patches / 2 * kMostInPatch;
    const int axis = LongestAxis(directions, first, last);
    std::nth_element(first, order_.data() + middle, last,
                     [&](std::uint32_t a, std::uint32_t b) {
                       return directions[a][axis] < directions[b][axis];
                     });
    MakePatches(group, begin, middle, directions);
    MakePatches(group, middle, end, directions);
    return;
  }
  std::sort(first, last);  // so that results are written in order
  TVector3 sum;
  for (const std::uint32_t* i = first; i != last; ++i) sum += directions[*i];
  const TVector3 axis = sum.Mag() > 0.0 ? sum.Unit() : directions[*first];
  double cosine = 1.0;
  for (const std::uint32_t* i = first; i != last; ++i) {
    cosine = std::min(cosine, directions[*i].Dot(axis));
  }
  cosine = std::max(cosine, -1.0);
  group.patches.push_back(
      {begin, end, axis, cosine, std::sqrt((1.0 - cosine) * (1.0 + cosine))});
}

}  // namespace ZARN::DU

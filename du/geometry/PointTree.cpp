#include "du/geometry/PointTree.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "du/geometry/OctahedralPlace.hpp"

namespace ZARN::DU {
namespace {

/// Blocks of a leaf, the smallest node.
constexpr std::uint32_t kLeafBlocks = 8;
constexpr std::uint32_t kLeafPoints = kLeafBlocks * PointBlocks::kPoints;

/// At least the number of levels: node numbers have 32 bits.
constexpr std::size_t kMostLevels = 32;

/// With a larger coordinate there is no tree; no detector is so large.
constexpr double kLargestLength = 1e9;

/// Bound on the relative error of a distance, computed here and by the loop:
/// three differences, three squares and two sums are rounded by 2^-53 each; all
/// but the differences count half in the root, which is also rounded: less than
/// 2^-51. For both distances and the limit together this is less than 2^-49;
/// the bound is twice as large. A distance whose square underflows counts as
/// zero and is below every limit here, because every node has a radius.
constexpr double kDistanceError = 0x1p-48;

/// Bound on the errors of the places of a box, mm. On a map's sphere of up to
/// 100 m they are less than 1e-9.
constexpr double kBoxError = 1e-6;

/// The smallest radius of a node.
constexpr double kLeastRadius = 1e-30;

/// Bits of a coordinate on the curve: neighbours nearer than the 2048th part of
/// the octahedral square need no order.
constexpr unsigned kCurveBits = 11;

/// Put a zero bit before each of the lower kCurveBits bits.
std::uint32_t SpreadOut(std::uint32_t bits) {
  static_assert(kCurveBits <= 16);
  bits = (bits | bits << 8U) & 0x00FF00FFU;
  bits = (bits | bits << 4U) & 0x0F0F0F0FU;
  bits = (bits | bits << 2U) & 0x33333333U;
  return (bits | bits << 1U) & 0x55555555U;
}

/// The position of a point's direction on a curve through the octahedral square
/// that passes small squares one after the other (G. Morton, 1966).
std::uint32_t PlaceOnCurve(const Point& point) {
  // The origin has no direction; very close to it the division overflows.
  constexpr double kLeastLength = 1e-300;
  const double length =
      std::abs(point.x) + std::abs(point.y) + std::abs(point.z);
  if (!(length > kLeastLength)) return 0;
  const auto place = PlaceOf(point.x, point.y, point.z);
  constexpr int kCells = 1 << kCurveBits;
  const auto along = [](double at) {
    return static_cast<std::uint32_t>(CellAlong(at, kCells / 2.0, kCells));
  };
  return SpreadOut(along(place.v)) << 1U | SpreadOut(along(place.u));
}

bool IsInRange(double coordinate) {
  return std::abs(coordinate) < kLargestLength;
}

/// Sort points along the curve, so that neighbours are side by side: by the
/// lower half of their places, and then by the upper half (a radix sort, which
/// no branch slows down).
void SortAlongCurve(std::vector<Point>& points) {
  struct Placed {
    std::uint32_t place;
    std::uint32_t index;
  };
  constexpr std::uint32_t kHalves = 1U << kCurveBits;
  std::vector<Placed> from(points.size());
  for (std::uint32_t i = 0; i < from.size(); ++i) {
    from[i] = {PlaceOnCurve(points[i]), i};
  }
  std::vector<Placed> to(points.size());
  for (const unsigned shift : {0U, kCurveBits}) {
    const auto half = [shift](const Placed& point) {
      return point.place >> shift & (kHalves - 1);
    };
    std::array<std::uint32_t, kHalves> next = {};
    for (const Placed& point : from) ++next[half(point)];
    std::uint32_t begin = 0;
    for (std::uint32_t& count : next) begin += std::exchange(count, begin);
    for (const Placed& point : from) to[next[half(point)]++] = point;
    from.swap(to);
  }
  std::vector<Point> sorted(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    sorted[i] = points[from[i].index];
  }
  points = std::move(sorted);
}

}  // namespace

PointTree::PointTree(const std::vector<TVector3>& points, double reach)
    : reach_(reach) {
  std::vector<Point> finite;
  bool isInRange = true;
  if (reach > 0.0) {
    finite.reserve(points.size());
    for (const TVector3& p : points) {
      if (!std::isfinite(p.X()) || !std::isfinite(p.Y()) ||
          !std::isfinite(p.Z())) {
        continue;
      }
      finite.push_back({p.X(), p.Y(), p.Z()});
      isInRange =
          isInRange && IsInRange(p.X()) && IsInRange(p.Y()) && IsInRange(p.Z());
    }
  }
  if (isInRange) SortAlongCurve(finite);
  count_ = static_cast<std::uint32_t>(finite.size());
  blocks_ = PointBlocks(finite, reach);
  if (isInRange) MakeNodes(finite);
}

void PointTree::MakeNodes(const std::vector<Point>& points) {
  if (points.empty()) return;
  firstLeaf_ = 1;
  while (std::uint64_t{firstLeaf_} * kLeafPoints < points.size()) {
    firstLeaf_ *= 2;
  }
  nodes_.resize(std::size_t{2} * firstLeaf_);
  MakeNode(1, points);
}

/// Make a node and all below it.
///
/// @return the box around its points
PointTree::Box PointTree::MakeNode(std::uint32_t number,
                                   const std::vector<Point>& points) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  Box box = {{kInfinity, kInfinity, kInfinity},
             {-kInfinity, -kInfinity, -kInfinity}};
  const auto include = [&box](const Point& low, const Point& high) {
    box.low = {std::min(box.low.x, low.x), std::min(box.low.y, low.y),
               std::min(box.low.z, low.z)};
    box.high = {std::max(box.high.x, high.x), std::max(box.high.y, high.y),
                std::max(box.high.z, high.z)};
  };
  if (number < firstLeaf_) {
    for (const std::uint32_t half : {2 * number, 2 * number + 1}) {
      const Box inside = MakeNode(half, points);
      include(inside.low, inside.high);
    }
  } else {
    const std::size_t begin = std::size_t{number - firstLeaf_} * kLeafPoints;
    const std::size_t end = std::min(begin + kLeafPoints, points.size());
    for (std::size_t i = begin; i < end; ++i) include(points[i], points[i]);
  }
  nodes_[number] = BallAround(box);
  return box;
}

PointTree::Node PointTree::BallAround(const Box& box) {
  if (!(box.low.x <= box.high.x)) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    return {kInfinity, kInfinity, kInfinity, 0.0F};
  }
  const auto middle = [](double low, double high) {
    return static_cast<float>(low + (high - low) / 2.0);
  };
  const float x = middle(box.low.x, box.high.x);
  const float y = middle(box.low.y, box.high.y);
  const float z = middle(box.low.z, box.high.z);
  const auto farthest = [](double low, double at, double high) {
    return std::max(at - low, high - at);
  };
  const double radius = std::sqrt(Squared(
      {farthest(box.low.x, x, box.high.x), farthest(box.low.y, y, box.high.y),
       farthest(box.low.z, z, box.high.z)}));
  // More than the rounding, also the one to single precision.
  return {x, y, z, static_cast<float>(radius * (1.0 + 1e-6) + kLeastRadius)};
}

eAnswer PointTree::JudgePointNear(const Ball& places, Stretch entries) const {
  // The distance of another place differs by at most the radius, and by the
  // rounding of both.
  const double nearest =
      std::sqrt(blocks_.LeastSquaredDistance(places.centre, entries));
  const double margin = places.radius + kDistanceError * (nearest + reach_);
  return AnswerOf(nearest<reach_ - margin, nearest> reach_ + margin);
}

bool PointTree::HasPointNear(const TVector3& place) const {
  if (nodes_.empty()) return blocks_.HasNear(place);
  const Point from = {place.X(), place.Y(), place.Z()};
  std::array<std::uint32_t, kMostLevels> open;
  std::size_t count = 0;
  open[count++] = 1;
  while (count > 0) {
    const std::uint32_t number = open[--count];
    const Node& node = nodes_[number];
    const double far = (reach_ + node.Radius()) * (1.0 + kDistanceError);
    // Also true for a place that is not finite.
    if (!(SquaredDistance(from, node.Middle()) < far * far)) {
      continue;
    }
    if (number >= firstLeaf_) {
      const Entries leaf = EntriesOf(number);
      if (blocks_.HasNear(place, leaf.begin, leaf.end)) return true;
      continue;
    }
    open[count++] = 2 * number + 1;
    open[count++] = 2 * number;
  }
  return false;
}

PointTree::Items PointTree::AllItems() const {
  if (count_ == 0) return {};
  const std::uint32_t root = nodes_.empty() ? 0 : 1;
  return {root};
}

PointTree::Entries PointTree::EntriesOf(std::uint32_t item) const {
  const auto nodes = static_cast<std::uint32_t>(nodes_.size());
  if (item >= nodes) return {item - nodes, item - nodes + 1};
  std::uint32_t first = item;
  std::uint32_t last = item;
  while (first < firstLeaf_) {
    first = 2 * first;
    last = 2 * last + 1;
  }
  const auto entry = [this](std::uint32_t leaf) {
    return std::min((leaf - firstLeaf_) * kLeafBlocks, blocks_.Size());
  };
  return {entry(first), entry(last + 1)};
}

void PointTree::AppendEntries(const Items& items, StretchLists& list) const {
  if (nodes_.empty()) {
    list.Append(0, blocks_.Size());
    return;
  }
  for (const std::uint32_t item : items) {
    const Entries entries = EntriesOf(item);
    list.Append(entries.begin, entries.end);
  }
}

/// A reach above kLargestLength counts as kLargestLength for the inner limit.
PointTree::Limits PointTree::LimitsWith(double margin) const {
  const double more = margin + kBoxError;
  const double nearer = std::min(reach_, kLargestLength);
  return {std::max(nearer - more - kDistanceError * (nearer + more), 0.0),
          (reach_ + more) * (1.0 + kDistanceError)};
}

}  // namespace ZARN::DU

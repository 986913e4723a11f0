#include "du/geometry/NearestPoint.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace ZARN::DU {
namespace {

/// A node with fewer points has no children.
constexpr std::size_t kSplitPoints = 16;

std::size_t MiddleOf(std::size_t begin, std::size_t end) {
  return begin + (end - begin) / 2;
}

/// Squares that are farther apart than this have different roots.
constexpr double kSameRoot = 1 + 4 * std::numeric_limits<double>::epsilon();

/// How far a coordinate is outside a range.
double Outside(double low, double at, double high) {
  return std::max(std::max(low - at, at - high), 0.0);
}

}  // namespace

NearestPoint::NearestPoint(const std::vector<TVector3>& points) {
  for (std::size_t i = 0; i < points.size(); ++i) {
    const TVector3& p = points[i];
    // The distance to any other point is not finite.
    if (!std::isfinite(p.X()) || !std::isfinite(p.Y()) ||
        !std::isfinite(p.Z())) {
      continue;
    }
    points_.push_back({{p.X(), p.Y(), p.Z()}, static_cast<std::uint32_t>(i)});
  }
  std::size_t nodes = 2;
  for (std::size_t n = points_.size(); n >= kSplitPoints; n -= n / 2)
    nodes *= 2;
  boxes_.resize(nodes);
  MakeNode(1, 0, points_.size());
}

/// Sort the points of a node, which is halved across the longest side of its
/// box.
void NearestPoint::MakeNode(std::size_t number, std::size_t begin,
                            std::size_t end) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  Point low = {kInfinity, kInfinity, kInfinity};
  Point high = {-kInfinity, -kInfinity, -kInfinity};
  for (std::size_t i = begin; i < end; ++i) {
    const Point& p = points_[i].point;
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y),
            std::max(high.z, p.z)};
  }
  boxes_[number] = {low, high};
  if (end - begin < kSplitPoints) return;
  const Point size = high - low;
  const auto axis = size.x >= size.y && size.x >= size.z ? &Point::x
                    : size.y >= size.z                   ? &Point::y
                                                         : &Point::z;
  const auto at = [this](std::size_t i) {
    return points_.begin() + static_cast<std::ptrdiff_t>(i);
  };
  const std::size_t middle = MiddleOf(begin, end);
  std::nth_element(at(begin), at(middle), at(end),
                   [axis](const Listed& a, const Listed& b) {
                     return a.point.*axis < b.point.*axis;
                   });
  MakeNode(2 * number, begin, middle);
  MakeNode(2 * number + 1, middle, end);
}

std::optional<std::size_t> NearestPoint::To(const TVector3& place) const {
  Nearest nearest;
  if (!points_.empty()) {
    Search({place.X(), place.Y(), place.Z()}, 1, 0, points_.size(), nearest);
  }
  if (std::isinf(nearest.distance)) return std::nullopt;
  return nearest.position;
}

void NearestPoint::Nearest::Take(double squared, std::uint32_t listed) {
  const double root = std::sqrt(squared);
  if (root > distance || (root == distance && listed > position)) return;
  distance = root;
  position = listed;
  most = squared * kSameRoot;
}

void NearestPoint::Search(const Point& place, std::size_t number,
                          std::size_t begin, std::size_t end,
                          Nearest& nearest) const {
  if (end - begin < kSplitPoints) {
    for (std::size_t i = begin; i < end; ++i) {
      const double squared = SquaredDistance(place, points_[i].point);
      if (squared <= nearest.most) nearest.Take(squared, points_[i].position);
    }
    return;
  }
  const auto squaredTo = [&](const Box& box) {
    return Squared({Outside(box.low.x, place.x, box.high.x),
                    Outside(box.low.y, place.y, box.high.y),
                    Outside(box.low.z, place.z, box.high.z)});
  };
  struct Half {
    double squared;
    std::size_t number;
    std::size_t begin;
    std::size_t end;
  };
  const std::size_t middle = MiddleOf(begin, end);
  std::array<Half, 2> halves = {
      {{squaredTo(boxes_[2 * number]), 2 * number, begin, middle},
       {squaredTo(boxes_[2 * number + 1]), 2 * number + 1, middle, end}}};
  if (halves[1].squared < halves[0].squared) std::swap(halves[0], halves[1]);
  for (const Half& half : halves) {
    if (!(half.squared <= nearest.most)) continue;
    Search(place, half.number, half.begin, half.end, nearest);
  }
}

}  // namespace ZARN::DU

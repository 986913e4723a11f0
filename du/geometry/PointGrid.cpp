#include "du/geometry/PointGrid.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ZARN::DU {
namespace {

/// More cells than this along an axis would cost more memory than time.
constexpr double kMostCells = 100.0;

/// Coordinates and reaches up to here can be divided into cells without an
/// overflow; no detector is larger.
constexpr double kLargestLength = 1e9;

/// The square of a shorter distance may be 0: two points within such a reach
/// need not be near each other.
constexpr double kLeastReach = 1e-100;

/// Distances up to here are right to less than a margin of 1e-6 mm. Of a larger
/// reach balls only know that it holds what is much nearer.
constexpr double kLargestJudged = 1e8;

/// The cell of a place along an axis, in cells from the origin. Grows with the
/// place, as each of its two roundings does.
double CellsFrom(double origin, double place, double cellsPerLength) {
  return (place - origin) * cellsPerLength;
}

}  // namespace

PointGrid::PointGrid(const std::vector<TVector3>& points, double reach,
                     eGrid layout)
    : reach_(reach) {
  std::vector<TVector3> finite;
  finite.reserve(points.size());
  std::copy_if(points.begin(), points.end(), std::back_inserter(finite),
               [&](const TVector3& p) {
                 return reach > 0.0 && std::isfinite(p.X()) &&
                        std::isfinite(p.Y()) && std::isfinite(p.Z());
               });
  if (layout == eGrid::kUniform) LayOut(finite, reach);

  std::vector<std::uint32_t> cells;
  cells.reserve(finite.size());
  for (const TVector3& point : finite) cells.push_back(CellOf(point));
  begins_.assign(axes_[0].cells * axes_[1].cells * axes_[2].cells + 1, 0);
  for (const std::uint32_t cell : cells) ++begins_[cell + 1];
  for (std::size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];

  std::vector<Point> sorted(finite.size());
  std::vector<std::uint32_t> next(begins_.begin(), begins_.end() - 1);
  for (std::size_t i = 0; i < finite.size(); ++i) {
    sorted[next[cells[i]]++] = {finite[i].X(), finite[i].Y(), finite[i].Z()};
  }
  points_ = PointList(std::move(sorted), reach);
}

/// Choose the cells; where that cannot be done there remains one for all.
void PointGrid::LayOut(const std::vector<TVector3>& points, double reach) {
  if (points.empty() || !(reach > kLeastReach && reach < kLargestLength)) {
    return;
  }
  TVector3 low = points.front();
  TVector3 high = low;
  for (const TVector3& p : points) {
    low.SetXYZ(std::min(low.X(), p.X()), std::min(low.Y(), p.Y()),
               std::min(low.Z(), p.Z()));
    high.SetXYZ(std::max(high.X(), p.X()), std::max(high.Y(), p.Y()),
                std::max(high.Z(), p.Z()));
  }
  const double largest = std::max(
      {-low.X(), -low.Y(), -low.Z(), high.X(), high.Y(), high.Z(), 0.0});
  if (!(largest < kLargestLength)) return;

  const TVector3 extent = high - low;
  const double edge = std::max(
      reach, std::max({extent.X(), extent.Y(), extent.Z()}) / kMostCells);
  cellsPerLength_ = 1.0 / edge;
  const std::array<double, 3> lows = {low.X(), low.Y(), low.Z()};
  const std::array<double, 3> highs = {high.X(), high.Y(), high.Z()};
  for (std::size_t i = 0; i < axes_.size(); ++i) {
    axes_[i].origin = lows[i];
    axes_[i].cells = 1 + static_cast<std::uint32_t>(
                             CellsFrom(lows[i], highs[i], cellsPerLength_));
  }
  // The slack covers the rounding of a touched interval's ends: those of a
  // place near enough to matter are below largest + 2 reach.
  constexpr double kSlack = 1e-9;
  touch_ = reach + kSlack * (largest + reach);
}

std::uint32_t PointGrid::CellOf(const TVector3& point) const {
  const std::array<double, 3> place = {point.X(), point.Y(), point.Z()};
  std::uint32_t cell = 0;
  for (std::size_t i = 0; i < axes_.size(); ++i) {
    cell = cell * axes_[i].cells +
           (cellsPerLength_ > 0.0
                ? static_cast<std::uint32_t>(
                      CellsFrom(axes_[i].origin, place[i], cellsPerLength_))
                : 0U);
  }
  return cell;
}

/// Find the cells that the reach of a coordinate touches; false if none, also
/// for NaN.
bool PointGrid::FindRange(const Axis& axis, double coordinate,
                          Range& range) const {
  const double low =
      CellsFrom(axis.origin, coordinate - touch_, cellsPerLength_);
  const double high =
      CellsFrom(axis.origin, coordinate + touch_, cellsPerLength_);
  if (!(high >= 0.0 && low < axis.cells)) return false;
  range.first = low > 0.0 ? static_cast<std::uint32_t>(low) : 0U;
  range.last =
      high < axis.cells ? static_cast<std::uint32_t>(high) : axis.cells - 1;
  return true;
}

bool PointGrid::HasPointNear(const TVector3& point) const {
  if (!(cellsPerLength_ > 0.0)) {
    return points_.HasNear(point, 0, points_.Size());
  }
  Range x = {};
  Range y = {};
  Range z = {};
  if (!FindRange(axes_[0], point.X(), x) ||
      !FindRange(axes_[1], point.Y(), y) ||
      !FindRange(axes_[2], point.Z(), z)) {
    return false;
  }
  for (std::uint32_t i = x.first; i <= x.last; ++i) {
    for (std::uint32_t j = y.first; j <= y.last; ++j) {
      const std::uint32_t row = (i * axes_[1].cells + j) * axes_[2].cells;
      // Neighbours along z stand side by side in the lists.
      if (points_.HasNear(point, begins_[row + z.first],
                          begins_[row + z.last + 1])) {
        return true;
      }
    }
  }
  return false;
}

PointList PointGrid::ListOf(const Items& items) const {
  std::vector<Point> points;
  points.reserve(items.size());
  for (const std::uint32_t i : items) points.push_back(points_[i]);
  return {std::move(points), reach_};
}

std::uint32_t PointGrid::CountItems() const { return points_.Size(); }

eAnswer PointGrid::Judge(const Ball& ball, const Items& items,
                         Items& open) const {
  const auto squaredDistanceTo = [&ball, &points = points_](std::uint32_t i) {
    return SquaredDistance(ball.centre, points[i]);
  };
  if (!(reach_ < kLargestJudged)) {
    const double half = reach_ / 2.0;
    const bool isHeld =
        ball.radius < half / 2.0 &&
        std::any_of(items.begin(), items.end(), [&](std::uint32_t i) {
          return squaredDistanceTo(i) < half * half;
        });
    if (isHeld) return eAnswer::kBlocks;
    open.clear();
    return points_.Size() > 0 ? eAnswer::kUnsure : eAnswer::kClear;
  }
  constexpr double kRounding = 1e-6;  // mm
  const double radius = ball.radius + kRounding;
  const double inner = std::max(reach_ - radius, 0.0);
  const double outer = reach_ + radius;
  // What was nearest to the enclosing ball stands first, and mostly decides.
  if (!items.empty() && squaredDistanceTo(items.front()) < inner * inner) {
    return eAnswer::kBlocks;
  }
  // Both loops without branches: they are most of what a map costs.
  double nearest2 = outer * outer;
  std::size_t nearest = 0;
  open.resize(items.size());
  std::size_t count = 0;
  for (const std::uint32_t i : items) {
    const double distance2 = squaredDistanceTo(i);
    open[count] = i;
    nearest = distance2 < nearest2 ? count : nearest;
    nearest2 = std::min(nearest2, distance2);
    count += distance2 >= outer * outer ? 0U : 1U;
  }
  if (nearest2 < inner * inner) return eAnswer::kBlocks;
  if (count == 0) {
    open.clear();
    return eAnswer::kClear;
  }
  std::swap(open[0], open[nearest]);
  open.resize(count);
  // Left out are those that lie, from every point of the ball, behind the
  // nearest one: beyond the plane half way between them. The squared distances
  // differ by more than they are rounded. Few do where the ball is large.
  if (2 * radius > reach_) return eAnswer::kUnsure;
  const Point& first = points_[open[0]];
  const double diameter2 = 4.0 * radius * radius;
  constexpr double kRelativeRounding = 1e-12;
  std::size_t kept = 1;
  for (std::size_t k = 1; k < count; ++k) {
    const std::uint32_t i = open[k];
    const double distance2 = squaredDistanceTo(i);
    const double over = distance2 * (1.0 - kRelativeRounding) - nearest2;
    const double farther = over > 0.0 ? over : 0.0;
    open[kept] = i;
    kept += farther * farther > diameter2 * SquaredDistance(points_[i], first)
                ? 0U
                : 1U;
  }
  open.resize(kept);
  return eAnswer::kUnsure;
}

}  // namespace ZARN::DU

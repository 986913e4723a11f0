#include "display/MapPoints.hpp"

#include <cmath>
#include <utility>

namespace ZARN::Display {
namespace {

/// The first number from @p begin to before @p end that passes a test, which
/// all later ones pass, too; @p end if none does.
template <class Test>
std::size_t FirstThat(std::size_t begin, std::size_t end, const Test& test) {
  while (begin < end) {
    const std::size_t middle = begin + (end - begin) / 2;
    if (test(middle)) {
      end = middle;
    } else {
      begin = middle + 1;
    }
  }
  return begin;
}

}  // namespace

MapPoints PointsOf(const std::vector<TVector3>& points) {
  return {points.size(), [&points](std::size_t begin, std::size_t end) {
            return std::vector<TVector3>(
                points.begin() + static_cast<std::ptrdiff_t>(begin),
                points.begin() + static_cast<std::ptrdiff_t>(end));
          }};
}

MapPoints EvenDirections(std::size_t count) {
  return {count, [count](std::size_t begin, std::size_t end) {
            const double goldenAngle = M_PI * (3.0 - std::sqrt(5.0));
            std::vector<TVector3> directions;
            directions.reserve(end - begin);
            for (std::size_t i = begin; i < end; ++i) {
              const auto number = static_cast<double>(i);
              // The middle of one of `count` zones of equal area.
              const double z =
                  1.0 - (2.0 * number + 1.0) / static_cast<double>(count);
              const double fromAxis = std::sqrt((1.0 - z) * (1.0 + z));
              const double azimuth = goldenAngle * number;
              directions.emplace_back(fromAxis * std::cos(azimuth),
                                      fromAxis * std::sin(azimuth), z);
            }
            return directions;
          }};
}

std::vector<std::uint32_t> JudgedPixels(const MapGrid& grid) {
  std::vector<std::uint32_t> pixels;
  const std::size_t half = (grid.columns + 1) / 2;
  for (std::size_t row = 0; row < grid.rows; ++row) {
    const auto isInside = [&](std::size_t column) {
      return grid.FindDirection(column, row).has_value();
    };
    // The ellipse is convex: its columns in a row stand together.
    const std::size_t begin = FirstThat(0, half, isInside);
    const std::size_t end =
        FirstThat(half, grid.columns,
                  [&](std::size_t column) { return !isInside(column); });
    for (std::size_t column = begin; column < end; ++column) {
      pixels.push_back(static_cast<std::uint32_t>(row * grid.columns + column));
    }
  }
  return pixels;
}

MapPoints DirectionsOf(const MapGrid& grid,
                       const std::vector<std::uint32_t>& pixels) {
  return {pixels.size(), [grid, &pixels](std::size_t begin, std::size_t end) {
            std::vector<TVector3> directions;
            directions.reserve(end - begin);
            for (std::size_t i = begin; i < end; ++i) {
              directions.push_back(*grid.FindDirection(
                  pixels[i] % grid.columns, pixels[i] / grid.columns));
            }
            return directions;
          }};
}

MapPoints EndsOnSphere(MapPoints directions, const TVector3& from,
                       double radius) {
  const std::size_t count = directions.count;
  return {count, [directions = std::move(directions), from, radius](
                     std::size_t begin, std::size_t end) {
            std::vector<TVector3> points = directions.make(begin, end);
            // In units of the radius, whose square may be no number.
            const TVector3 start(from.X() / radius, from.Y() / radius,
                                 from.Z() / radius);
            const double inside = 1.0 - start.Mag2();
            for (TVector3& point : points) {
              const double along = start.Dot(point);
              const double way = std::sqrt(along * along + inside) - along;
              point = (start + point * way) * radius;
            }
            return points;
          }};
}

}  // namespace ZARN::Display

#pragma once

#include <cmath>
#include <cstddef>

#include "display/MapContent.hpp"
#include "display/SkyMap.hpp"

namespace ZARN::Display {

/// Contents of maps for tests.

/// A direction of many that are spread evenly.
inline TVector3 SpreadDirection(std::size_t index, std::size_t count) {
  constexpr double kGoldenAngle = 2.399963229728653;
  const double z = 1.0 - (2.0 * static_cast<double>(index) + 1.0) /
                             static_cast<double>(count);
  const double azimuth = kGoldenAngle * static_cast<double>(index);
  const double across = std::sqrt(1.0 - z * z);
  return {across * std::cos(azimuth), across * std::sin(azimuth), z};
}

/// One event, without PMTs.
inline MapContent MakeEmptyContent() {
  MapContent content;
  content.events = {{4600.0, 0.0, 3000.0}};
  content.tolerance = 150.0;
  content.wavelength = 400.0;
  content.detector = "reference detector";
  return content;
}

/// PMTs with the verdicts 0 (clear) to 7 (total reflection) in turn.
inline MapContent MakeMarks(std::size_t count) {
  MapContent content = MakeEmptyContent();
  for (std::size_t i = 0; i < count; ++i) {
    MapMark mark;
    mark.direction = SpreadDirection(i, count);
    mark.verdict = static_cast<DU::eVerdict>(i % 8);
    content.counts.Add(mark.verdict);
    content.marks.push_back(mark);
  }
  return content;
}

/// Every direction: six sectors of azimuth with a component each, as far as
/// @p verdict does not say otherwise.
template <class Verdict>
MapContent MakePixels(const MapGrid& grid, const Verdict& verdict) {
  MapContent content = MakeEmptyContent();
  MapPixels pixels;
  pixels.columns = grid.columns;
  pixels.rows = grid.rows;
  pixels.verdicts.assign(grid.columns * grid.rows, DU::eVerdict::kClear);
  for (std::size_t row = 0; row < grid.rows; ++row) {
    for (std::size_t column = 0; column < grid.columns; ++column) {
      const auto direction = grid.FindDirection(column, row);
      if (!direction) continue;
      const DU::eVerdict of = verdict(*direction);
      pixels.verdicts[row * grid.columns + column] = of;
      content.counts.Add(of);
    }
  }
  content.pixels = std::move(pixels);
  return content;
}

/// The component of one of six sectors of azimuth.
inline DU::eVerdict SectorOf(const TVector3& direction) {
  const double turn =
      (std::atan2(direction.Y(), direction.X()) + M_PI) / (2.0 * M_PI);
  return static_cast<DU::eVerdict>(1 + static_cast<int>(turn * 6.0) % 6);
}

/// Counts at 17 tolerances; more is blocked at higher ones.
inline MapPanel MakePanel() {
  MapPanel panel;
  for (unsigned i = 0; i < 17; ++i) {
    panel.tolerances.push_back(i == 0 ? 10.0 : 300.0 / 16.0 * i);
    Scan::VerdictCounts counts;
    counts.Add(DU::eShadowingComponent::kNone, 500);
    for (const auto component : DU::kShadowingComponents) {
      counts.Add(component, 4UL * (i + 1U));
    }
    panel.counts.push_back(counts);
  }
  return panel;
}

/// The same with counts at other tolerances.
inline MapContent WithPanel(MapContent content) {
  content.panel = MakePanel();
  return content;
}

}  // namespace ZARN::Display

#include "display/FillMap.hpp"

#include <algorithm>
#include <cmath>

namespace ZARN::Display {

std::vector<MapMark> MarksOf(const std::vector<TVector3>& pmts,
                             const MapVerdicts& verdicts,
                             const TVector3& from) {
  std::vector<MapMark> marks;
  marks.reserve(pmts.size());
  for (std::size_t i = 0; i < pmts.size(); ++i) {
    MapMark mark;
    mark.direction = pmts[i] - from;
    if (!verdicts.verdicts.empty()) mark.verdict = verdicts.verdicts[i];
    if (!verdicts.before.empty()) mark.before = verdicts.before[i];
    if (!verdicts.paths.empty()) {
      mark.paths = verdicts.paths[i];
      mark.shadowed = verdicts.shadowed[i];
    }
    marks.push_back(mark);
  }
  return marks;
}

MapPixels PixelsOf(const MapGrid& grid,
                   const std::vector<std::uint32_t>& pixels,
                   const MapVerdicts& verdicts) {
  MapPixels all;
  all.columns = grid.columns;
  all.rows = grid.rows;
  const auto spread = [&](const std::vector<DU::eVerdict>& judged) {
    std::vector<DU::eVerdict> ofAll(grid.columns * grid.rows);
    for (std::size_t i = 0; i < judged.size(); ++i) {
      ofAll[pixels[i]] = judged[i];
    }
    return ofAll;
  };
  all.verdicts = spread(verdicts.verdicts);
  if (!verdicts.before.empty()) all.before = spread(verdicts.before);
  return all;
}

std::vector<double> PanelTolerances(double tolerance) {
  constexpr std::size_t kCount = 17;
  constexpr double kLowest = 10.0;    // mm
  constexpr double kHighest = 300.0;  // mm
  const double low = std::min(kLowest, tolerance);
  const double high = std::max(kHighest, tolerance);
  std::vector<double> tolerances;
  for (std::size_t i = 0; i < kCount; ++i) {
    const double part = static_cast<double>(i) / (kCount - 1);
    tolerances.push_back(low + part * (high - low));
  }
  tolerances.back() = high;  // without rounding
  if (low < tolerance && tolerance < high) {
    *std::min_element(
        tolerances.begin() + 1, tolerances.end() - 1, [&](double a, double b) {
          return std::abs(a - tolerance) < std::abs(b - tolerance);
        }) = tolerance;
  }
  return tolerances;
}

std::array<eComponentState, DU::kNumberOfComponents> ComponentStatesOf(
    const DU::ShadowingCalculator& shadowing) {
  std::array<eComponentState, DU::kNumberOfComponents> states = {};
  for (std::size_t i = 0; i < states.size(); ++i) {
    const DU::eShadowingComponent component = DU::kShadowingComponents[i];
    if (!shadowing.IsInfoLoaded(component)) {
      states[i] = eComponentState::kNotLoaded;
    } else if (shadowing.GetHardware().HasNothingToTest(component)) {
      states[i] = eComponentState::kNothingToTest;
    } else {
      states[i] = eComponentState::kTested;
    }
  }
  return states;
}

}  // namespace ZARN::Display

#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "TVector3.h"
#include "display/MapContent.hpp"
#include "display/MapScan.hpp"
#include "display/Mollweide.hpp"
#include "du/ShadowingCalculator.hpp"

namespace ZARN::Display {

/// A mark for each PMT, in their order.
///
/// @param pmts      positions, mm
/// @param verdicts  of ScanMap with these PMTs
/// @param from      the point of view, mm
std::vector<MapMark> MarksOf(const std::vector<TVector3>& pmts,
                             const MapVerdicts& verdicts, const TVector3& from);

/// The pixels of a map of all directions.
///
/// @param pixels    numbers of those that were judged (JudgedPixels)
/// @param verdicts  of ScanMap with the ends of these pixels, for one event
MapPixels PixelsOf(const MapGrid& grid,
                   const std::vector<std::uint32_t>& pixels,
                   const MapVerdicts& verdicts);

/// The tolerances of a panel for which none are given: 17 from 10 to 300 mm,
/// evenly spread, but the nearest of the inner ones is replaced by
/// @p tolerance. A tolerance outside of that range becomes its end.
std::vector<double> PanelTolerances(double tolerance);

/// What the tables give each component.
std::array<eComponentState, DU::kNumberOfComponents> ComponentStatesOf(
    const DU::ShadowingCalculator& shadowing);

}  // namespace ZARN::Display

#pragma once

#include "display/Drawing.hpp"
#include "display/MapContent.hpp"
#include "display/MapLayout.hpp"
#include "display/MapLook.hpp"
#include "display/Palette.hpp"
#include "display/TextRuler.hpp"

namespace ZARN::Display {

// Sizes of words, units.
inline constexpr Font kTitleFont = {22.0, eWeight::kBold};
inline constexpr Font kSubtitleFont = {14.0};
inline constexpr Font kHeadingFont = {12.5, eWeight::kBold};
inline constexpr Font kPanelTitleFont = {14.0, eWeight::kBold};
inline constexpr Font kLabelFont = {13.0};
inline constexpr Font kNoteFont = {12.0};
inline constexpr Font kAxisFont = {11.5};

/// What every part of a sky map is drawn from.
struct MapScene {
  const MapContent& content;
  const MapLayout& layout;
  const Palette& palette;
  const Theme& theme;
  const TextRuler& ruler;

  /// Whether directions are areas of one colour, not marks.
  bool HasAreas() const;
  eMapShape Shape() const {
    return HasAreas() ? eMapShape::kArea : eMapShape::kMark;
  }
  /// The place of a point of the map, units.
  Point PlaceOf(const MapPoint& point) const;
};

/// Above this number of PMTs, each pixel shows the nearest one.
inline constexpr std::size_t kMostShapes = 20000;

/// The ellipse around the map, as a polygon.
std::vector<Point> MakeEdge(const MapScene& scene);

// The parts, in the order of drawing.

/// Pixels of every direction, or of more PMTs than marks can show.
Group DrawPixels(const MapScene& scene);
/// Parallels, meridians and the edge.
Group DrawGraticule(const MapScene& scene);
/// PMTs.
Group DrawMarks(const MapScene& scene);
/// The event and the degrees of the graticule.
Group DrawMapWords(const MapScene& scene);
/// Title, subtitle and caption.
Group DrawHeader(const MapScene& scene);
Group DrawLegend(const MapScene& scene);
Group DrawTolerancePanel(const MapScene& scene);
Group DrawChanges(const MapScene& scene);

}  // namespace ZARN::Display

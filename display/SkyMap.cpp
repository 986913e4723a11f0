#include "display/SkyMap.hpp"

#include <cmath>
#include <stdexcept>

#include "display/MapScene.hpp"
#include "display/MapWords.hpp"

namespace ZARN::Display {
namespace {

void Require(bool condition, const char* text) {
  if (!condition) throw std::invalid_argument(text);
}

void Check(const MapContent& content) {
  if (content.pixels) {
    const MapPixels& pixels = *content.pixels;
    const std::size_t size = pixels.columns * pixels.rows;
    Require(size > 0 && pixels.verdicts.size() == size,
            "a map of pixels needs a verdict for each of its pixels");
    Require(!content.IsComparison() || pixels.before.size() == size,
            "a comparison needs two verdicts for each pixel");
    Require(content.marks.empty(), "a map has marks or pixels, not both");
    Require(!content.HasSeveralEvents(), "a map of pixels has one event");
  }
  Require(!content.IsComparison() || !content.HasSeveralEvents(),
          "a comparison has one event");
  if (content.panel) {
    const auto& tolerances = content.panel->tolerances;
    Require(tolerances.size() >= 2 &&
                tolerances.size() == content.panel->counts.size(),
            "a tolerance panel needs counts at two tolerances or more");
    Require(std::isfinite(tolerances.back() - tolerances.front()),
            "the tolerances of a panel must be finite");
    for (std::size_t i = 1; i < tolerances.size(); ++i) {
      Require(tolerances[i] > tolerances[i - 1],
              "the tolerances of a panel must increase");
    }
  }
}

eMapColumn ColumnOf(const MapContent& content) {
  return content.panel || content.comparison ? eMapColumn::kShown
                                             : eMapColumn::kNone;
}

}  // namespace

MapGrid FindMapGrid(const MapStyle& style, eMapColumn column) {
  return GridOf(LayOutMap(style, column));
}

Drawing DrawSkyMap(const MapContent& content, const MapStyle& style) {
  Check(content);
  const MapLayout layout = LayOutMap(style, ColumnOf(content));
  const Palette& palette = GetPalette();
  const TextRuler ruler;
  const MapScene scene = {content, layout, palette, palette.Of(style.theme),
                          ruler};
  Drawing drawing;
  drawing.width = layout.width;
  drawing.height = layout.height;
  drawing.scale = layout.scale;
  drawing.background = scene.theme.view;
  drawing.title = MakePlain(TitleOf(content));
  drawing.description = MakePlain(DescriptionOf(content));
  if (scene.HasAreas()) drawing.groups.push_back(DrawPixels(scene));
  drawing.groups.push_back(DrawGraticule(scene));
  if (!scene.HasAreas()) drawing.groups.push_back(DrawMarks(scene));
  drawing.groups.push_back(DrawMapWords(scene));
  drawing.groups.push_back(DrawHeader(scene));
  drawing.groups.push_back(DrawLegend(scene));
  if (content.comparison) {
    drawing.groups.push_back(DrawChanges(scene));
  } else if (content.panel) {
    drawing.groups.push_back(DrawTolerancePanel(scene));
  }
  return drawing;
}

}  // namespace ZARN::Display

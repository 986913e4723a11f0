#include "display/MapLayout.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace ZARN::Display {
namespace {

constexpr double kMargin = 32.0;
constexpr double kHeader = 70.0;        // below the margin: title, subtitle
constexpr double kBelowMap = 190.0;     // caption and legend, three rows
constexpr double kCaption = 30.0;       // the caption alone
constexpr double kLegendWidth = 768.0;  // three columns
constexpr double kLegendColumn = 256.0;
constexpr double kLegendHeight = 340.0;  // in one column
constexpr double kGap = 40.0;
constexpr double kPanelWidth = 344.0;
constexpr double kPanelHeight = 420.0;
// Above the map is a part of the room that it leaves.
constexpr double kShareAbove = 0.3;
constexpr double kMostAbove = 60.0;
constexpr double kNoteHeight = 130.0;

// An arrangement: the smallest picture that it fits, and the room that the
// rest leaves to the map.
struct Arrangement {
  double leastWidth;
  double leastHeight;
  double besideMap;
  double belowMap;
  eLegendPlace legendPlace;
  bool isColumnBelow;
};

constexpr Arrangement kColumnBeside = {
    1200.0, 700.0, kGap + kPanelWidth, kBelowMap, eLegendPlace::kBelow, false};
constexpr Arrangement kColumnBelow = {
    832.0, 1130.0, 0.0, kBelowMap + kGap + kPanelHeight, eLegendPlace::kBelow,
    true};
constexpr Arrangement kLegendBelow = {
    832.0, 600.0, 0.0, kBelowMap, eLegendPlace::kBelow, false};
constexpr Arrangement kLegendBeside = {
    1200.0, 640.0, kGap + kLegendColumn, kCaption, eLegendPlace::kBeside,
    false};

MapLayout LayOut(const MapStyle& style, const Arrangement& arrangement) {
  MapLayout layout;
  layout.scale = std::min(style.width / arrangement.leastWidth,
                          style.height / arrangement.leastHeight);
  layout.width = style.width / layout.scale;
  layout.height = style.height / layout.scale;
  layout.legendPlace = arrangement.legendPlace;
  layout.header = {kMargin, kMargin, layout.width - 2.0 * kMargin, kHeader};
  const double roomX = layout.header.width - arrangement.besideMap;
  const double roomY =
      layout.height - 2.0 * kMargin - kHeader - arrangement.belowMap;
  layout.map.width = std::min(roomX, 2.0 * roomY);
  layout.map.height = 0.5 * layout.map.width;
  layout.map.x = kMargin + 0.5 * (roomX - layout.map.width);
  layout.map.y =
      layout.header.Bottom() +
      std::min(kMostAbove, kShareAbove * (roomY - layout.map.height));
  return layout;
}

void PlaceRest(const Arrangement& arrangement, eMapColumn column,
               MapLayout& layout) {
  const Box& map = layout.map;
  if (arrangement.legendPlace == eLegendPlace::kBeside) {
    layout.legend = {
        layout.width - kMargin - kLegendColumn,
        std::max(layout.header.Bottom(), map.MiddleY() - 0.5 * kLegendHeight),
        kLegendColumn, kLegendHeight};
  } else {
    layout.legend = {std::clamp(map.MiddleX() - 0.5 * kLegendWidth, kMargin,
                                layout.width - kMargin - kLegendWidth),
                     map.Bottom() + kCaption, kLegendWidth,
                     kBelowMap - kCaption};
  }
  if (column == eMapColumn::kNone) return;
  if (arrangement.isColumnBelow) {
    layout.panel = {kMargin, layout.legend.Bottom() + 0.5 * kGap, kPanelWidth,
                    kPanelHeight};
    layout.note = {layout.panel.Right() + 2.0 * kGap, layout.panel.y + 7.0,
                   kPanelWidth - kGap, kNoteHeight};
    return;
  }
  layout.panel = {layout.width - kMargin - kPanelWidth, map.y - 7.0,
                  kPanelWidth, std::max(kPanelHeight, map.height + 44.0)};
  layout.note = {layout.panel.x, layout.panel.Bottom() + 24.0, kPanelWidth,
                 kNoteHeight};
}

void CheckSide(const char* name, double side) {
  if (side >= kSmallestMapSide && side <= kLargestMapSide) return;
  throw std::invalid_argument(
      std::string("the ") + name + " of a sky map must be " +
      std::to_string(static_cast<int>(kSmallestMapSide)) + " to " +
      std::to_string(static_cast<int>(kLargestMapSide)) + " pixels");
}

}  // namespace

MapLayout LayOutMap(const MapStyle& style, eMapColumn column) {
  CheckSide("width", style.width);
  CheckSide("height", style.height);
  const bool hasColumn = column == eMapColumn::kShown;
  const Arrangement& one = hasColumn ? kColumnBeside : kLegendBelow;
  const Arrangement& other = hasColumn ? kColumnBelow : kLegendBeside;
  MapLayout layout = LayOut(style, one);
  const MapLayout second = LayOut(style, other);
  const bool isOtherLarger =
      second.map.width * second.scale > layout.map.width * layout.scale;
  if (isOtherLarger) layout = second;
  PlaceRest(isOtherLarger ? other : one, column, layout);
  return layout;
}

MapGrid GridOf(const MapLayout& layout) {
  constexpr double kMostColumns = 4000.0;
  const double columns =
      std::min(kMostColumns, 2.0 * layout.map.width * layout.scale);
  const auto rows = static_cast<std::size_t>(std::lround(0.5 * columns));
  return {2 * rows, rows};
}

}  // namespace ZARN::Display

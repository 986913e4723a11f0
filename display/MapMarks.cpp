// PMTs as marks, the graticule, and the words on a map.

#include <algorithm>
#include <cmath>

#include "display/MapScene.hpp"
#include "display/MapWords.hpp"
#include "du/geometry/Constants.hpp"

namespace ZARN::Display {

using DU::kPi;

namespace {

constexpr double kRadiansPerDegree = kPi / 180.0;
constexpr int kPointsOfLine = 72;

// A direction in degrees; azimuth +-180 are the two sides of the map.
MapPoint PointAt(double azimuth, double latitude) {
  MapPoint point =
      ProjectDirection(TVector3(std::cos(latitude * kRadiansPerDegree), 0.0,
                                std::sin(latitude * kRadiansPerDegree)));
  const double halfWidth = std::sqrt(std::max(0.0, 1.0 - point.y * point.y));
  point.x = -azimuth / 90.0 * halfWidth;
  return point;
}

std::vector<Point> MakeMeridian(const MapScene& scene, double azimuth) {
  std::vector<Point> line;
  for (int i = 0; i <= kPointsOfLine; ++i) {
    const double y =
        std::sin(kPi * (static_cast<double>(i) / kPointsOfLine - 0.5));
    const double halfWidth = std::sqrt(std::max(0.0, 1.0 - y * y));
    line.push_back(scene.PlaceOf({-azimuth / 90.0 * halfWidth, y}));
  }
  return line;
}

std::string DegreesOf(int degrees) { return WordOf(degrees) + "\u00B0"; }

// The order of drawing: the rare lie on top.
std::vector<eMapLook> DrawingOrder() {
  std::vector<eMapLook> order = {eMapLook::kClear, eMapLook::kUnchanged,
                                 eMapLook::kNoPath};
  for (const auto component : DU::kShadowingComponents) {
    order.push_back(LookOf(component));
  }
  order.push_back(eMapLook::kClearNow);
  for (std::size_t step = 0; step < kShareSteps; ++step) {
    order.push_back(LookOfStep(step));
  }
  return order;
}

bool HasEventMark(const MapContent& content) {
  return content.view == eMapView::kCentre && content.events.size() == 1 &&
         HasDirection(content.events.front());
}

constexpr double kEventRing = 7.0;
constexpr Font kEventFont = {12.5, eWeight::kBold};
constexpr char kEventWord[] = "event";

// Where the word beside the event begins: to its right, or left of it where
// the map ends.
Point PlaceEventWord(const MapScene& scene, const Point& event) {
  const double width = scene.ruler.WidthOf(kEventWord, kEventFont);
  const double right = event.x + kEventRing + 5.0;
  const bool fits = right + width <= scene.layout.map.Right();
  return {fits ? right : event.x - kEventRing - 5.0 - width, event.y + 4.0};
}

void AddEvent(const MapScene& scene, const Point& event, Group& group) {
  const Theme& theme = scene.theme;
  Shapes ring;
  ring.positions = {event};
  ring.outline = MakeCircle(kEventRing);
  ring.fill = theme.view;
  ring.stroke = Stroke{theme.view, 5.0};
  group.items.emplace_back(ring);
  ring.stroke = Stroke{theme.text, 2.0};
  group.items.emplace_back(ring);
  Shapes dot;
  dot.positions = {event};
  dot.outline = MakeCircle(2.0);
  dot.fill = theme.text;
  group.items.emplace_back(std::move(dot));
  group.items.emplace_back(Text{kEventWord, PlaceEventWord(scene, event),
                                kEventFont, theme.text, eAnchor::kStart,
                                Stroke{theme.view, 4.0}});
}

}  // namespace

bool MapScene::HasAreas() const {
  return content.pixels || content.marks.size() > kMostShapes;
}

Point MapScene::PlaceOf(const MapPoint& point) const {
  const Box& map = layout.map;
  return {map.x + 0.25 * (point.x + 2.0) * map.width,
          map.y + 0.5 * (1.0 - point.y) * map.height};
}

std::vector<Point> MakeEdge(const MapScene& scene) {
  std::vector<Point> edge;
  constexpr int kPoints = 240;
  for (int i = 0; i < kPoints; ++i) {
    const double angle = 2.0 * kPi * i / kPoints;
    edge.push_back(scene.PlaceOf({2.0 * std::cos(angle), std::sin(angle)}));
  }
  return edge;
}

Group DrawGraticule(const MapScene& scene) {
  Group group = {"graticule", {}, {}};
  constexpr double kOverPixels = 0.16;
  Lines lines;
  lines.stroke = {scene.theme.hairline, 1.0};
  if (scene.HasAreas()) {
    lines.stroke.colour = scene.theme.text;
    lines.stroke.colour.opacity = kOverPixels;
  }
  for (const int latitude : {-60, -30, 0, 30, 60}) {
    lines.lines.push_back({scene.PlaceOf(PointAt(180.0, latitude)),
                           scene.PlaceOf(PointAt(-180.0, latitude))});
  }
  for (const int azimuth : {-120, -60, 0, 60, 120}) {
    lines.lines.push_back(MakeMeridian(scene, azimuth));
  }
  group.items.emplace_back(std::move(lines));
  Shapes edge;
  edge.outline = MakeEdge(scene);
  edge.stroke = Stroke{scene.theme.noPath, 1.0};
  group.items.emplace_back(std::move(edge));
  return group;
}

Group DrawMarks(const MapScene& scene) {
  Group group = {"pmts", {}, {}};
  const auto& marks = scene.content.marks;
  const Box& map = scene.layout.map;
  const double share =
      std::sqrt(0.25 * kPi * map.width * map.height /
                static_cast<double>(std::max<std::size_t>(marks.size(), 1)));
  const double size =
      std::min(scene.palette.shapeSize * share, scene.palette.largestSize);
  std::array<std::vector<Point>, kMapLooks> positions;
  for (const MapMark& mark : marks) {
    if (!HasDirection(mark.direction)) continue;
    positions[static_cast<std::size_t>(LookOf(scene.content, mark))].push_back(
        scene.PlaceOf(ProjectDirection(mark.direction)));
  }
  for (const eMapLook look : DrawingOrder()) {
    auto& places = positions[static_cast<std::size_t>(look)];
    if (places.empty()) continue;
    group.items.emplace_back(
        MakeMarks(scene.palette, scene.theme, look, size, std::move(places)));
  }
  return group;
}

Group DrawMapWords(const MapScene& scene) {
  Group group = {"degrees", {}, {}};
  const Theme& theme = scene.theme;
  const bool hasEvent = HasEventMark(scene.content);
  const Point event =
      hasEvent ? scene.PlaceOf(ProjectDirection(scene.content.events.front()))
               : Point();
  constexpr double kRoom = 22.0;  // around the event
  const double wordEnd = hasEvent
                             ? PlaceEventWord(scene, event).x +
                                   scene.ruler.WidthOf(kEventWord, kEventFont)
                             : 0.0;
  for (const int latitude : {-60, -30, 0, 30, 60}) {
    const Point end = scene.PlaceOf(PointAt(180.0, latitude));
    const bool isCovered = hasEvent && std::abs(end.y - event.y) < kRoom &&
                           event.x - kRoom < end.x;
    if (isCovered) continue;
    group.items.emplace_back(Text{DegreesOf(latitude),
                                  {end.x - 7.0, end.y + 4.0},
                                  kAxisFont,
                                  theme.secondText,
                                  eAnchor::kEnd,
                                  std::nullopt});
  }
  for (const int azimuth : {-120, -60, 0, 60, 120}) {
    const Point at = scene.PlaceOf(PointAt(azimuth, -45.0));
    const bool isCovered = hasEvent && std::abs(at.y - event.y) < kRoom &&
                           at.x > event.x - 2.0 * kRoom &&
                           at.x < wordEnd + kRoom;
    if (isCovered) continue;
    group.items.emplace_back(Text{DegreesOf(azimuth),
                                  {at.x, at.y + 4.0},
                                  kAxisFont,
                                  theme.secondText,
                                  eAnchor::kMiddle,
                                  Stroke{theme.view, 4.0}});
  }
  if (hasEvent) AddEvent(scene, event, group);
  return group;
}

}  // namespace ZARN::Display

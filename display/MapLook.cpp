#include "display/MapLook.hpp"

#include <algorithm>
#include <cmath>

#include "du/geometry/Constants.hpp"

namespace ZARN::Display {

using DU::kPi;

namespace {

constexpr double kSwatch = 16.0;      // side of the square of an area
constexpr double kSwatchMark = 12.0;  // size of a mark in a legend
constexpr double kHatchWidth = 0.8;

// Sizes relative to a component's shape.
constexpr double kRing = 0.78;
constexpr double kShareDot = 0.88;
constexpr double kUnchangedDot = 0.36;

bool IsComponent(eMapLook look) {
  return look > eMapLook::kClear && look <= eMapLook::kNeckBoss;
}

std::size_t IndexOf(eMapLook component) {
  return static_cast<std::size_t>(component) - 1;
}

std::vector<Point> Scaled(std::vector<Point> points, double factor) {
  for (Point& point : points) point = {point.x * factor, point.y * factor};
  return points;
}

std::vector<Point> MakeBox(const Box& box) {
  return {{box.x, box.y},
          {box.Right(), box.y},
          {box.Right(), box.Bottom()},
          {box.x, box.Bottom()}};
}

// A plus sign, which no component has.
std::vector<Point> MakePlus(double size) {
  const double arm = 0.54 * size;
  const double half = 0.15 * size;
  return {{-half, -arm}, {half, -arm}, {half, -half}, {arm, -half},
          {arm, half},   {half, half}, {half, arm},   {-half, arm},
          {-half, half}, {-arm, half}, {-arm, -half}, {-half, -half}};
}

std::vector<Point> OutlineOf(const Palette& palette, eMapLook look,
                             double size) {
  if (IsComponent(look)) {
    return Scaled(palette.looks[IndexOf(look)].shape, size);
  }
  switch (look) {
    case eMapLook::kClear:
      return MakeCircle(0.5 * size * palette.clearSize / palette.shapeSize);
    case eMapLook::kNoPath:
      return MakeCircle(0.5 * size * kRing);
    case eMapLook::kUnchanged:
      return MakeCircle(0.5 * size * kUnchangedDot);
    case eMapLook::kClearNow:
      return MakePlus(size);
    default:
      return MakeCircle(0.5 * size * kShareDot);
  }
}

// Lines across a box.
Lines MakeHatch(const Box& box, eMapLook look, const Colour& colour) {
  Lines hatch;
  hatch.stroke = {colour, kHatchWidth};
  const double step = HatchSpacing(look) * std::sqrt(2.0);
  for (double c = 0.5 * step; c < box.width + box.height; c += step) {
    // Points of the box with x + y = c, seen from its top left.
    const double first = std::max(0.0, c - box.height);
    const double last = std::min(c, box.width);
    const auto place = [&](double x) {
      const double right = HatchSlope(look) > 0.0 ? x : box.width - x;
      return Point{box.x + right, box.y + c - x};
    };
    hatch.lines.push_back({place(first), place(last)});
  }
  return hatch;
}

}  // namespace

eMapLook LookOf(DU::eVerdict verdict) {
  return DU::HasPath(verdict) ? static_cast<eMapLook>(verdict)
                              : eMapLook::kNoPath;
}

bool IsChange(DU::eVerdict before, DU::eVerdict after) {
  return LookOf(before) != LookOf(after);
}

eMapLook LookOfChanged(DU::eVerdict verdict) {
  return verdict == DU::eVerdict::kClear ? eMapLook::kClearNow
                                         : LookOf(verdict);
}

eMapLook LookOfChange(DU::eVerdict before, DU::eVerdict after) {
  if (!IsChange(before, after)) return eMapLook::kUnchanged;
  return LookOfChanged(after);
}

eMapLook LookOfShare(std::uint64_t shadowed, std::uint64_t paths) {
  if (paths == 0) return eMapLook::kNoPath;
  // Whole numbers: 1 of 5 events begins the second step.
  const std::uint64_t fifths = shadowed * kShareSteps / paths;
  const std::size_t step =
      std::min<std::size_t>(static_cast<std::size_t>(fifths), kShareSteps - 1);
  return LookOfStep(step);
}

eMapLook LookOf(const MapContent& content, const MapMark& mark) {
  if (content.IsComparison()) return LookOfChange(mark.before, mark.verdict);
  if (content.HasSeveralEvents()) return LookOfShare(mark.shadowed, mark.paths);
  return LookOf(mark.verdict);
}

std::string NameOf(const Palette& palette, eMapLook look) {
  if (IsComponent(look)) return palette.looks[IndexOf(look)].name;
  switch (look) {
    case eMapLook::kNoPath:
      return palette.noPath;
    case eMapLook::kUnchanged:
      return "Not changed";
    default:
      return palette.clear;
  }
}

Colour ColourOf(const Theme& theme, eMapLook look, eMapShape shape) {
  if (IsComponent(look)) return theme.components[IndexOf(look)];
  switch (look) {
    case eMapLook::kNoPath:
      return theme.noPath;
    case eMapLook::kClearNow:
      return theme.text;
    case eMapLook::kClear:
    case eMapLook::kUnchanged:
      return shape == eMapShape::kMark ? theme.clear : theme.clearArea;
    case eMapLook::kOutside:
      return theme.view;
    default:
      return theme.share[static_cast<std::size_t>(look) -
                         static_cast<std::size_t>(eMapLook::kFirstShare)];
  }
}

std::vector<Point> MakeCircle(double radius) {
  // The sagitta stays below a fortieth of a unit for marks of any size.
  const int corners = radius < 3.0 ? 12 : 32;
  std::vector<Point> circle;
  for (int i = 0; i < corners; ++i) {
    const double angle = 2.0 * kPi * (i + 0.5) / corners;
    circle.push_back({radius * std::cos(angle), radius * std::sin(angle)});
  }
  return circle;
}

Shapes MakeMarks(const Palette& palette, const Theme& theme, eMapLook look,
                 double size, std::vector<Point> positions) {
  Shapes marks;
  marks.outline = OutlineOf(palette, look, size);
  marks.positions = std::move(positions);
  const Colour colour = ColourOf(theme, look, eMapShape::kMark);
  if (look == eMapLook::kNoPath) {
    marks.stroke = Stroke{colour, std::clamp(0.16 * size, 0.6, 1.4)};
  } else {
    marks.fill = colour;
  }
  return marks;
}

double HatchSpacing(eMapLook look) {
  return look == eMapLook::kClearNow ? 4.0 : 6.0;
}

double HatchSlope(eMapLook look) {
  return look == eMapLook::kClearNow ? -1.0 : 1.0;
}

std::vector<Item> MakeSwatch(const Palette& palette, const Theme& theme,
                             eMapLook look, eMapShape shape,
                             eComponentState state, const Point& centre) {
  constexpr double kLine = 1.3;
  const Colour colour = ColourOf(theme, look, shape);
  Shapes swatch;
  std::vector<Item> items;
  if (shape == eMapShape::kMark) {
    swatch = MakeMarks(palette, theme, look, kSwatchMark, {centre});
  } else {
    const Box box = {centre.x - 0.5 * kSwatch, centre.y - 0.5 * kSwatch,
                     kSwatch, kSwatch};
    swatch.outline = MakeBox(box);
    if (IsHatched(look)) {
      items.emplace_back(MakeHatch(box, look, colour));
      swatch.stroke = Stroke{colour, kHatchWidth};
    } else {
      swatch.fill = colour;
    }
  }
  if (state != eComponentState::kTested) {
    swatch.fill.reset();
    swatch.stroke = Stroke{colour, kLine};
  }
  items.emplace_back(std::move(swatch));
  return items;
}

}  // namespace ZARN::Display

// The pixels of a map: every direction, or many PMTs.

#include <algorithm>
#include <cmath>

#include "display/MapScene.hpp"

namespace ZARN::Display {
namespace {

// The look of every pixel.
struct LookGrid {
  std::size_t columns;
  std::size_t rows;
  std::vector<eMapLook> looks;

  eMapLook At(std::size_t column, std::size_t row) const {
    return looks[row * columns + column];
  }
};

LookGrid LooksOf(const MapContent& content) {
  const MapPixels& pixels = *content.pixels;
  LookGrid grid = {pixels.columns, pixels.rows, {}};
  grid.looks.reserve(pixels.verdicts.size());
  for (std::size_t i = 0; i < pixels.verdicts.size(); ++i) {
    grid.looks.push_back(
        content.IsComparison()
            ? LookOfChange(pixels.before[i], pixels.verdicts[i])
            : LookOf(pixels.verdicts[i]));
  }
  return grid;
}

// The order in which squares cover each other, the last on top: what is clear,
// what has no path, components in the order tested.
int RankOf(eMapLook look) {
  if (look == eMapLook::kOutside) return 0;
  if (look == eMapLook::kClear || look == eMapLook::kUnchanged) return 1;
  return look == eMapLook::kNoPath ? 2 : 3 + static_cast<int>(look);
}

// A square around a pixel, as far as it lies in the grid.
void DrawSquare(LookGrid& grid, double column, double row, double side,
                eMapLook look) {
  const auto first = [&](double centre, std::size_t size) {
    const double edge = std::round(centre - 0.5 * side);
    return static_cast<std::size_t>(
        std::clamp(edge, 0.0, static_cast<double>(size) - side));
  };
  const std::size_t left = first(column, grid.columns);
  const std::size_t top = first(row, grid.rows);
  const auto length = static_cast<std::size_t>(side);
  for (std::size_t r = top; r < top + length; ++r) {
    for (std::size_t c = left; c < left + length; ++c) {
      eMapLook& pixel = grid.looks[r * grid.columns + c];
      if (RankOf(look) >= RankOf(pixel)) pixel = look;
    }
  }
}

LookGrid SquaresOf(const MapScene& scene) {
  const MapGrid size = GridOf(scene.layout);
  LookGrid grid = {size.columns, size.rows, {}};
  grid.looks.assign(grid.columns * grid.rows, eMapLook::kOutside);
  const auto columns = static_cast<double>(grid.columns);
  const auto rows = static_cast<double>(grid.rows);
  constexpr double kEllipse = 0.78539816339744831;  // its share of the box
  const double side =
      std::sqrt(kEllipse * columns * rows /
                static_cast<double>(scene.content.marks.size()));
  for (const MapMark& mark : scene.content.marks) {
    if (!HasDirection(mark.direction)) continue;
    const MapPoint point = ProjectDirection(mark.direction);
    DrawSquare(grid, 0.25 * (point.x + 2.0) * columns,
               0.5 * (1.0 - point.y) * rows,
               std::max(1.0, std::round(scene.palette.shapeSize * side)),
               LookOf(scene.content, mark));
  }
  return grid;
}

struct Sum {
  unsigned red = 0;
  unsigned green = 0;
  unsigned blue = 0;

  void Add(const Colour& colour, unsigned weight) {
    red += colour.red * weight;
    green += colour.green * weight;
    blue += colour.blue * weight;
  }
  // The weights of a pixel and its neighbours add up to 16.
  std::uint32_t Mean() const {
    constexpr unsigned kHalf = 8;
    return ((red + kHalf) / 16U) << 16U | ((green + kHalf) / 16U) << 8U |
           ((blue + kHalf) / 16U);
  }
};

using Colours = std::array<Colour, kMapLooks>;

Colours ColoursOf(const MapScene& scene) {
  Colours colours;
  for (std::size_t i = 0; i < kMapLooks; ++i) {
    const auto look = static_cast<eMapLook>(i);
    const bool isGround = scene.content.pixels && IsHatched(look);
    colours[i] = isGround ? scene.theme.view
                          : ColourOf(scene.theme, look, eMapShape::kArea);
  }
  return colours;
}

// Pixels of half a unit, each the mean of itself (a quarter) and its
// neighbours: as smooth as pixels reduced by two, but twice as fine. Plain
// means, as everything else that is drawn has at its edges.
Image Smooth(const LookGrid& grid, const Colours& colours, const Box& box) {
  constexpr std::array<unsigned, 3> kWeights = {1, 2, 1};
  Image image = {box, grid.columns, grid.rows, {}};
  image.pixels.resize(grid.looks.size());
  std::array<std::uint32_t, kMapLooks> plain = {};
  for (std::size_t i = 0; i < kMapLooks; ++i) {
    Sum sum;
    sum.Add(colours[i], 16U);
    plain[i] = sum.Mean();
  }
  for (std::size_t row = 0; row < grid.rows; ++row) {
    const std::array<std::size_t, 3> rows = {row > 0 ? row - 1 : row, row,
                                             std::min(row + 1, grid.rows - 1)};
    for (std::size_t column = 0; column < grid.columns; ++column) {
      const std::array<std::size_t, 3> columns = {
          column > 0 ? column - 1 : column, column,
          std::min(column + 1, grid.columns - 1)};
      const eMapLook own = grid.At(column, row);
      bool isPlain = true;
      for (const std::size_t r : rows) {
        for (const std::size_t c : columns) isPlain &= grid.At(c, r) == own;
      }
      auto& pixel = image.pixels[row * grid.columns + column];
      if (isPlain) {
        pixel = plain[static_cast<std::size_t>(own)];
        continue;
      }
      Sum sum;
      for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
          const eMapLook look = grid.At(columns[j], rows[i]);
          sum.Add(colours[static_cast<std::size_t>(look)],
                  kWeights[i] * kWeights[j]);
        }
      }
      pixel = sum.Mean();
    }
  }
  return image;
}

// The edge of hatched areas, half a pixel to each side.
void DrawEdges(const LookGrid& grid, const Theme& theme, Image& image) {
  const auto draw = [&](std::size_t a, std::size_t b) {
    const eMapLook first = grid.looks[a];
    const eMapLook second = grid.looks[b];
    if (first == second || first == eMapLook::kOutside ||
        second == eMapLook::kOutside) {
      return;
    }
    for (const eMapLook look : {second, first}) {
      if (!IsHatched(look)) continue;
      Sum sum;
      sum.Add(ColourOf(theme, look, eMapShape::kArea), 16U);
      image.pixels[look == first ? a : b] = sum.Mean();
    }
  };
  for (std::size_t row = 0; row < grid.rows; ++row) {
    for (std::size_t column = 0; column < grid.columns; ++column) {
      const std::size_t at = row * grid.columns + column;
      if (column + 1 < grid.columns) draw(at, at + 1);
      if (row + 1 < grid.rows) draw(at, at + grid.columns);
    }
  }
}

// Lines over all areas of one look.
Lines HatchAreas(const LookGrid& grid, const MapScene& scene, eMapLook look) {
  const Box& map = scene.layout.map;
  Lines hatch;
  hatch.stroke = {ColourOf(scene.theme, look, eMapShape::kArea), 0.8};
  const double slope = HatchSlope(look);
  const double pixel = map.width / static_cast<double>(grid.columns);
  const auto isInside = [&](double x, double y) {
    const auto column = static_cast<std::size_t>(x / pixel);
    const auto row = static_cast<std::size_t>(y / map.height *
                                              static_cast<double>(grid.rows));
    return x >= 0.0 && y >= 0.0 && column < grid.columns && row < grid.rows &&
           grid.At(column, row) == look;
  };
  const double step = HatchSpacing(look) * std::sqrt(2.0);
  for (double c = 0.5 * step; c < map.width + map.height; c += step) {
    double first = -1.0;  // x where a line has begun
    for (double x = std::max(0.0, c - map.height); x <= c + pixel;
         x += 0.5 * pixel) {
      const double right = slope > 0.0 ? x : map.width - x;
      const bool isIn = x <= map.width && isInside(right, c - x);
      if (isIn && first < 0.0) first = x;
      if (isIn || first < 0.0) continue;
      const auto place = [&](double along) {
        return Point{map.x + (slope > 0.0 ? along : map.width - along),
                     map.y + c - along};
      };
      hatch.lines.push_back({place(first), place(x)});
      first = -1.0;
    }
  }
  return hatch;
}

}  // namespace

Group DrawPixels(const MapScene& scene) {
  Group group = {"pixels", {}, MakeEdge(scene)};
  const bool hasAll = scene.content.pixels.has_value();
  const LookGrid grid = hasAll ? LooksOf(scene.content) : SquaresOf(scene);
  Image image = Smooth(grid, ColoursOf(scene), scene.layout.map);
  if (hasAll) DrawEdges(grid, scene.theme, image);
  group.items.emplace_back(std::move(image));
  if (hasAll) {
    for (const auto look : {eMapLook::kNoPath, eMapLook::kClearNow}) {
      Lines hatch = HatchAreas(grid, scene, look);
      if (!hatch.lines.empty()) group.items.emplace_back(std::move(hatch));
    }
  }
  return group;
}

}  // namespace ZARN::Display

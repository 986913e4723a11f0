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

// Which of two PMTs in one pixel is seen: what is clear, what has no path,
// components in the order tested, the last on top.
int RankOf(eMapLook look) {
  if (look == eMapLook::kOutside) return 0;
  if (look == eMapLook::kClear || look == eMapLook::kUnchanged) return 1;
  return look == eMapLook::kNoPath ? 2 : 3 + static_cast<int>(look);
}

// Spread the looks of some pixels to those without one, the nearest first. Four
// and eight neighbours in turn, so that what spreads is nearly round.
void Spread(LookGrid& grid, std::vector<std::size_t> border, int mostSteps) {
  const auto columns = static_cast<long>(grid.columns);
  const auto rows = static_cast<long>(grid.rows);
  for (int step = 0; step < mostSteps && !border.empty(); ++step) {
    std::vector<std::size_t> next;
    for (const std::size_t at : border) {
      const long column = static_cast<long>(at) % columns;
      const long row = static_cast<long>(at) / columns;
      for (const long y : {-1L, 0L, 1L}) {
        for (const long x : {-1L, 0L, 1L}) {
          const bool isCorner = x != 0 && y != 0;
          if ((isCorner && step % 2 == 0) || column + x < 0 ||
              column + x >= columns || row + y < 0 || row + y >= rows) {
            continue;
          }
          const auto to =
              static_cast<std::size_t>((row + y) * columns + column + x);
          if (grid.looks[to] != eMapLook::kOutside) continue;
          grid.looks[to] = grid.looks[at];
          next.push_back(to);
        }
      }
    }
    border = std::move(next);
  }
}

// The look of the nearest PMT, as far as PMTs are apart.
LookGrid NearestOf(const MapScene& scene) {
  const MapGrid size = GridOf(scene.layout);
  LookGrid grid = {size.columns, size.rows, {}};
  grid.looks.assign(grid.columns * grid.rows, eMapLook::kOutside);
  std::vector<std::size_t> border;
  const auto pixelOf = [](double share, std::size_t pixels) {
    const double pixel = share * static_cast<double>(pixels);
    return std::min(static_cast<std::size_t>(std::max(pixel, 0.0)), pixels - 1);
  };
  for (const MapMark& mark : scene.content.marks) {
    if (!HasDirection(mark.direction)) continue;
    const MapPoint point = ProjectDirection(mark.direction);
    const std::size_t at =
        pixelOf(0.5 * (1.0 - point.y), grid.rows) * grid.columns +
        pixelOf(0.25 * (point.x + 2.0), grid.columns);
    eMapLook& pixel = grid.looks[at];
    if (pixel == eMapLook::kOutside) border.push_back(at);
    const eMapLook look = LookOf(scene.content, mark);
    if (RankOf(look) > RankOf(pixel)) pixel = look;
  }
  const double share = static_cast<double>(grid.looks.size()) /
                       static_cast<double>(scene.content.marks.size());
  Spread(grid, std::move(border),
         static_cast<int>(std::ceil(std::sqrt(share))));
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

Colours ColoursOf(const Theme& theme) {
  Colours colours;
  for (std::size_t i = 0; i < kMapLooks; ++i) {
    const auto look = static_cast<eMapLook>(i);
    colours[i] =
        IsHatched(look) ? theme.view : ColourOf(theme, look, eMapShape::kArea);
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
    if (x < 0.0 || y < 0.0) return false;
    const auto column = static_cast<std::size_t>(x / pixel);
    const auto row = static_cast<std::size_t>(y / map.height *
                                              static_cast<double>(grid.rows));
    return column < grid.columns && row < grid.rows &&
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
  const LookGrid grid =
      scene.content.pixels ? LooksOf(scene.content) : NearestOf(scene);
  Image image = Smooth(grid, ColoursOf(scene.theme), scene.layout.map);
  DrawEdges(grid, scene.theme, image);
  group.items.emplace_back(std::move(image));
  for (const auto look : {eMapLook::kNoPath, eMapLook::kClearNow}) {
    Lines hatch = HatchAreas(grid, scene, look);
    if (!hatch.lines.empty()) group.items.emplace_back(std::move(hatch));
  }
  return group;
}

}  // namespace ZARN::Display

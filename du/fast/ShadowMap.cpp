#include "du/fast/ShadowMap.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "du/geometry/OctahedralDirection.hpp"

namespace ZARN::DU {
namespace {

/// The first squares are so small that their balls say something.
constexpr int kFirstSquares = 4;

/// Sizes of squares: a map of as many cells as can be counted has no more.
constexpr std::size_t kMostLevels = 15;

/// A square of cells: its first row and column, and how many on a side; and the
/// directions of its corners, row by row.
struct Square {
  int row;
  int column;
  int size;
  std::array<Point, 4> corners;
};

/// In single precision a point near an edge may be taken for one in the
/// neighbouring cell, by as much as its place is off. A step e of both u and v
/// is one of at most sqrt(6) e on the octahedron, whose middle is nowhere
/// nearer than 1 / sqrt(3): below sqrt(18) = 4.25 times e on the sphere, in
/// radii.
constexpr double kCellError = 5.0 * kPlaceError;

/// Of one test no more stretches are kept than this.
constexpr std::size_t kMostStretches = std::size_t{1} << 22U;

/// What is open in single cells, of one test.
struct OpenCells {
  std::vector<std::pair<std::uint32_t, Stretch>> ofCells;
  StretchLists lists{kMostStretches};
};

/// Fills the codes, one square after the other.
class MapPainter {
 public:
  MapPainter(double radius, const ShadowMap::Tests& tests, int cells,
             std::vector<ShadowMap::Code>& codes)
      : radius_(radius), tests_(tests), cells_(cells), codes_(codes) {}

  /// @return what is left open
  std::array<OpenCells, kMappedTests> PaintAll() {
    Open open;
    for (std::size_t i = 0; i < kMappedTests; ++i) {
      if (tests_[i] == nullptr) continue;
      open.answers[i] = eAnswer::kUnsure;
      open.items[i] = tests_[i]->AllItems();
    }
    const int size = cells_ / kFirstSquares;
    for (int row = 0; row < cells_; row += size) {
      for (int column = 0; column < cells_; column += size) {
        Paint({row,
               column,
               size,
               {CornerAt(row, column), CornerAt(row, column + size),
                CornerAt(row + size, column),
                CornerAt(row + size, column + size)}},
              open, 0);
      }
    }
    return std::move(openCells_);
  }

  std::size_t UnsureCells() const { return unsureCells_; }

 private:
  /// What is known of a square, and what could still block some of it.
  struct Open {
    std::array<eAnswer, kMappedTests> answers = {};
    std::array<BallTest::Items, kMappedTests> items;
  };

  /// Paint a square that lies in a larger one of which @p outer is known.
  void Paint(const Square& square, const Open& outer, std::size_t level) {
    Open& inside = levels_[level];
    const Ball ball = BallAround(square);
    bool isSure = true;
    for (std::size_t i = 0; i < kMappedTests; ++i) {
      eAnswer answer = outer.answers[i];
      if (answer == eAnswer::kUnsure) {
        answer = tests_[i]->Judge(ball, outer.items[i], inside.items[i]);
      }
      inside.answers[i] = answer;
      isSure = isSure && answer != eAnswer::kUnsure;
    }
    if (isSure || square.size == 1) {
      Fill(square, inside.answers);
      if (!isSure) KeepOpen(square, inside);
      return;
    }
    const int half = square.size / 2;
    const int row = square.row + half;
    const int column = square.column + half;
    const Point above = CornerAt(square.row, column);
    const Point left = CornerAt(row, square.column);
    const Point middle = CornerAt(row, column);
    const Point right = CornerAt(row, square.column + square.size);
    const Point below = CornerAt(square.row + square.size, column);
    const auto& corners = square.corners;
    const std::array<Square, 4> quarters = {
        {{square.row, square.column, half, {corners[0], above, left, middle}},
         {square.row, column, half, {above, corners[1], middle, right}},
         {row, square.column, half, {left, middle, corners[2], below}},
         {row, column, half, {middle, right, below, corners[3]}}}};
    for (const Square& quarter : quarters) {
      Paint(quarter, inside, level + 1);
    }
  }

  /// The direction of the corner before a row and a column.
  Point CornerAt(int row, int column) const {
    const double step = 2.0 / cells_;
    return DirectionAt(column * step - 1.0, row * step - 1.0);
  }

  /// A ball that holds every point that falls into a cell of the square.
  Ball BallAround(const Square& square) const {
    Point sum;
    for (const Point& corner : square.corners) {
      sum = {sum.x + corner.x, sum.y + corner.y, sum.z + corner.z};
    }
    const Point middle = Scaled(sum, 0.25);
    double farthest2 = 0.0;
    for (const Point& corner : square.corners) {
      farthest2 = std::max(farthest2, SquaredDistance(corner, middle));
    }
    Ball ball = {Scaled(middle, radius_), std::sqrt(farthest2) * radius_};
    ball.radius += ShadowMap::kShell + kCellError * radius_;
    return ball;
  }

  void Fill(const Square& square,
            const std::array<eAnswer, kMappedTests>& answers) {
    unsigned code = 0;
    for (std::size_t i = kMappedTests; i-- > 0;) {
      code = code * 3 + static_cast<unsigned>(answers[i]);
    }
    for (int row = square.row; row < square.row + square.size; ++row) {
      const auto begin =
          codes_.begin() + std::ptrdiff_t{row} * cells_ + square.column;
      std::fill(begin, begin + square.size, static_cast<ShadowMap::Code>(code));
    }
  }

  /// Keep what can still block in a single cell.
  void KeepOpen(const Square& cell, const Open& open) {
    ++unsureCells_;
    for (std::size_t i = 0; i < kMappedTests; ++i) {
      // A test without entries has nothing to list.
      if (open.answers[i] != eAnswer::kUnsure || open.items[i].empty()) {
        continue;
      }
      auto& [ofCells, lists] = openCells_[i];
      tests_[i]->AppendEntries(open.items[i], lists);
      ofCells.emplace_back(
          static_cast<std::uint32_t>(cell.row * cells_ + cell.column),
          lists.EndList());
    }
  }

  double radius_;
  const ShadowMap::Tests& tests_;
  int cells_;
  std::vector<ShadowMap::Code>& codes_;
  std::array<Open, kMostLevels> levels_;  // one for each size of square
  std::array<OpenCells, kMappedTests> openCells_;
  std::size_t unsureCells_ = 0;
};

}  // namespace

ShadowMap::ShadowMap(double radius, const Tests& tests, int cells) {
  constexpr double kSmallest = 10.0;
  constexpr double kLargest = 1e5;
  if (!(radius >= kSmallest && radius <= kLargest)) return;
  cells_ = cells;
  lowest2_ = (radius - kShell) * (radius - kShell);
  highest2_ = (radius + kShell) * (radius + kShell);
  const auto count =
      static_cast<std::size_t>(cells) * static_cast<std::size_t>(cells);
  codes_.assign(count + 1, kNothingKnown);
  MapPainter painter(radius, tests, cells, codes_);
  const auto open = painter.PaintAll();
  unsureShare_ =
      static_cast<double>(painter.UnsureCells()) / static_cast<double>(count);
  for (std::size_t i = 0; i < kMappedTests; ++i) {
    open_[i] = CellItems(count, open[i].ofCells, open[i].lists.All());
  }
}

}  // namespace ZARN::DU

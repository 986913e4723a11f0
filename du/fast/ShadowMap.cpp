#include "du/fast/ShadowMap.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "du/geometry/OctahedralDirection.hpp"

namespace ZARN::DU {
namespace {

/// Larger first squares would always be unsure.
constexpr int kFirstSquares = 4;

/// The number of sizes of squares: enough for as many cells as an int counts.
constexpr std::size_t kMostLevels = 15;

/// A square of cells: its first row and column, the number of cells on a side,
/// and the directions of its corners, row by row.
struct Square {
  int row;
  int column;
  int size;
  std::array<Point, 4> corners;
};

/// In single precision a point can be assigned to the neighbouring cell if it
/// is nearer to the edge than the error of its place. A step e of both u and v
/// is a step of at most sqrt(6) e on the octahedron. The octahedron is at least
/// 1 / sqrt(3) away from its centre, so the step on the sphere is at most
/// sqrt(18) e = 4.25 e, in radii.
constexpr double kCellError = 5.0 * kPlaceError;

/// The largest number of stretches that are kept for one test.
constexpr std::size_t kMostStretches = std::size_t{1} << 22U;

/// Adds the answers of one test to the codes of all cells, and keeps the items
/// that are open in unsure cells.
class MapPainter {
 public:
  /// @param codes  with the answer kClear of this test everywhere
  MapPainter(double radius, const BallTest& test, ShadowMap::Code digit,
             int cells, std::vector<ShadowMap::Code>& codes)
      : radius_(radius),
        test_(test),
        digit_(digit),
        cells_(cells),
        codes_(codes) {}

  void PaintAll() {
    const BallTest::Items all = test_.AllItems();
    const int size = cells_ / kFirstSquares;
    for (int row = 0; row < cells_; row += size) {
      for (int column = 0; column < cells_; column += size) {
        Paint({row,
               column,
               size,
               {CornerAt(row, column), CornerAt(row, column + size),
                CornerAt(row + size, column),
                CornerAt(row + size, column + size)}},
              all, 0);
      }
    }
  }

  /// The open entries of all unsure cells; none if the test has no entries.
  CellItems Open() const {
    const auto count =
        static_cast<std::size_t>(cells_) * static_cast<std::size_t>(cells_);
    return {count, ofCells_, lists_.All()};
  }

 private:
  /// Paint a square; in the larger one around it the items @p outer are open.
  void Paint(const Square& square, const BallTest::Items& outer,
             std::size_t level) {
    BallTest::Items& open = open_[level];
    const eAnswer answer = test_.Judge(BallAround(square), outer, open);
    if (answer == eAnswer::kClear) return;
    if (answer == eAnswer::kBlocks || square.size == 1) {
      Fill(square, answer);
      if (answer == eAnswer::kUnsure && !open.empty()) KeepOpen(square, open);
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
    const auto paint = [&](int firstRow, int firstColumn,
                           const std::array<Point, 4>& cornersOfQuarter) {
      Paint({firstRow, firstColumn, half, cornersOfQuarter}, open, level + 1);
    };
    paint(square.row, square.column, {corners[0], above, left, middle});
    paint(square.row, column, {above, corners[1], middle, right});
    paint(row, square.column, {left, middle, corners[2], below});
    paint(row, column, {middle, right, below, corners[3]});
  }

  /// The direction of the corner before a row and a column.
  Point CornerAt(int row, int column) const {
    const double step = 2.0 / cells_;
    return DirectionAt(column * step - 1.0, row * step - 1.0);
  }

  /// A ball that contains every point that is assigned to a cell of the square.
  Ball BallAround(const Square& square) const {
    const auto& corners = square.corners;
    const Point middle =
        Scaled({corners[0].x + corners[3].x, corners[0].y + corners[3].y,
                corners[0].z + corners[3].z},
               0.5);
    // The last corner is as far away as the first.
    double farthest2 = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
      farthest2 = std::max(farthest2, SquaredDistance(corners[i], middle));
    }
    return {Scaled(middle, radius_),
            (std::sqrt(farthest2) + kCellError) * radius_ + ShadowMap::kShell};
  }

  void Fill(const Square& square, eAnswer answer) {
    const auto added =
        static_cast<ShadowMap::Code>(digit_ * static_cast<unsigned>(answer));
    for (int row = square.row; row < square.row + square.size; ++row) {
      ShadowMap::Code* const begin =
          codes_.data() + std::ptrdiff_t{row} * cells_ + square.column;
      for (int i = 0; i < square.size; ++i) begin[i] += added;
    }
  }

  /// Keep the items that can block in a single cell.
  void KeepOpen(const Square& cell, const BallTest::Items& open) {
    test_.AppendEntries(open, lists_);
    ofCells_.emplace_back(
        static_cast<std::uint32_t>(cell.row * cells_ + cell.column),
        lists_.EndList());
  }

  double radius_;
  const BallTest& test_;
  ShadowMap::Code digit_;
  int cells_;
  std::vector<ShadowMap::Code>& codes_;
  // Of the current square of each size.
  std::array<BallTest::Items, kMostLevels> open_;
  std::vector<std::pair<std::uint32_t, Stretch>> ofCells_;
  StretchLists lists_{kMostStretches};
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
  codes_.assign(count + 1, 0);
  Code digit = 1;
  for (std::size_t i = 0; i < kMappedTests; ++i, digit *= 3) {
    if (tests[i] == nullptr) continue;
    MapPainter painter(radius, *tests[i], digit, cells, codes_);
    painter.PaintAll();
    open_[i] = painter.Open();
  }
  codes_.back() = kNothingKnown;
}

}  // namespace ZARN::DU

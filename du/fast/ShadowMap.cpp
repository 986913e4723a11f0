#include "du/fast/ShadowMap.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "du/geometry/QuarteredBox.hpp"

namespace ZARN::DU {
namespace {

/// The number of sizes of squares: enough for as many cells as an int counts.
constexpr std::size_t kMostLevels = 15;

/// A square of cells: its first row and column, and the number of cells on a
/// side.
struct Square {
  int row;
  int column;
  int size;
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
  MapPainter(double radius, const BoxTest& test, ShadowMap::Code digit,
             int cells, std::vector<ShadowMap::Code>& codes)
      : radius_(radius),
        test_(test),
        digit_(digit),
        cells_(cells),
        codes_(codes) {}

  void PaintAll() {
    const BoxTest::Items all = test_.AllItems();
    // The largest power of 2 in the number of cells, if not all of them.
    const int size = std::min(cells_ & -cells_, cells_ / 2);
    for (int row = 0; row < cells_; row += size) {
      for (int column = 0; column < cells_; column += size) {
        Divide({row, column, size}, all, 0);
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
  /// Paint the quarters of a square for which @p items are open.
  void Divide(const Square& square, const BoxTest::Items& items,
              std::size_t level) {
    auto& open = open_[level];
    const auto answers = test_.JudgeQuarters(BoxAround(square), items, open);
    const int half = square.size / 2;
    for (std::size_t i = 0; i < answers.size(); ++i) {
      if (answers[i] == eAnswer::kClear) continue;
      const Square quarter = {square.row + (i / 2 == 0 ? 0 : half),
                              square.column + (i % 2 == 0 ? 0 : half), half};
      if (answers[i] == eAnswer::kUnsure && half > 1) {
        Divide(quarter, open[i], level + 1);
        continue;
      }
      Fill(quarter, answers[i]);
      if (answers[i] == eAnswer::kUnsure && !open[i].empty()) {
        KeepOpen(quarter, open[i]);
      }
    }
  }

  /// Contains every point that is assigned to a cell of the square.
  QuarteredBox BoxAround(const Square& square) const {
    const double perCell = 2.0 / cells_;
    const double half = square.size / 2.0;
    return DU::BoxAround({(square.column + half) * perCell - 1.0,
                          (square.row + half) * perCell - 1.0, half * perCell},
                         {radius_, ShadowMap::kShell, kCellError * radius_});
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
  void KeepOpen(const Square& cell, const BoxTest::Items& open) {
    test_.AppendEntries(open, lists_);
    ofCells_.emplace_back(
        static_cast<std::uint32_t>(cell.row * cells_ + cell.column),
        lists_.EndList());
  }

  double radius_;
  const BoxTest& test_;
  ShadowMap::Code digit_;
  int cells_;
  std::vector<ShadowMap::Code>& codes_;
  // Of the current square of each size.
  std::array<BoxTest::OfQuarters<BoxTest::Items>, kMostLevels> open_;
  std::vector<std::pair<std::uint32_t, Stretch>> ofCells_;
  StretchLists lists_{kMostStretches};
};

}  // namespace

ShadowMap::ShadowMap(double radius, const Tests& tests, int cells) {
  if (!(radius >= kSmallestRadius && radius <= kLargestRadius)) return;
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

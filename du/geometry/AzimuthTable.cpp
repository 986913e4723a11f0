#include "du/geometry/AzimuthTable.hpp"

#include <cmath>
#include <utility>

#include "du/geometry/Constants.hpp"

namespace ZARN::DU {
namespace {

/// A range of azimuth in units of cells; may extend past both ends of the
/// table.
struct CellRange {
  double first;
  double last;
};

/// The position of an azimuth in units of cells. Whole turns are kept.
double CellsAt(double phi, int cells) {
  const double turns = std::floor((phi + kHalfPi) / kTwoPi);
  const double x = std::cos(phi);
  const double y = std::sin(phi);
  const double ascent = y / (std::abs(x) + std::abs(y));
  const double around = x < 0 ? 3.0 - ascent : ascent + 1.0;
  return (turns + around / 4.0) * cells;
}

CellRange CellsAround(double phi, double halfWidth, int cells) {
  return {CellsAt(phi - halfWidth, cells), CellsAt(phi + halfWidth, cells)};
}

/// Call @p work with each cell in the range, wrapping around the circle.
template <class Work>
void ForEachCell(double first, double last, int cells, const Work& work) {
  for (double at = first; at <= last && at < first + cells; ++at) {
    const double turns = std::floor(at / cells);
    work(static_cast<std::size_t>(at - turns * cells));
  }
}

}  // namespace

AzimuthTable::AzimuthTable(const std::vector<AzimuthRange>& ranges, int cells)
    : answers_(static_cast<std::size_t>(cells), eAnswer::kClear),
      begins_(answers_.size() + 1, 0) {
  std::vector<std::pair<std::size_t, std::uint32_t>> touched;
  for (std::uint32_t i = 0; i < ranges.size(); ++i) {
    const AzimuthRange& range = ranges[i];
    const double widened = range.halfWidth + kMargin;
    if (!(widened >= 0.0)) continue;
    const auto touch = [&](std::size_t cell) { touched.emplace_back(cell, i); };
    if (widened >= kPi) {
      ForEachCell(0, cells - 1, cells, touch);
    } else {
      const CellRange all = CellsAround(range.phi, widened, cells);
      ForEachCell(std::floor(all.first), std::floor(all.last), cells, touch);
    }
    const double narrowed = range.halfWidth - kMargin;
    if (!range.isSure || !(narrowed > 0.0)) continue;
    const auto block = [&](std::size_t cell) {
      answers_[cell] = eAnswer::kBlocks;
    };
    if (narrowed >= kPi) {
      ForEachCell(0, cells - 1, cells, block);
    } else {
      const CellRange all = CellsAround(range.phi, narrowed, cells);
      ForEachCell(std::ceil(all.first), std::floor(all.last) - 1, cells, block);
    }
  }

  for (const auto& [cell, range] : touched) {
    if (answers_[cell] == eAnswer::kBlocks) continue;
    answers_[cell] = eAnswer::kUnsure;
    ++begins_[cell + 1];
  }
  for (std::size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];
  candidates_.resize(begins_.back());
  std::vector<std::uint32_t> next(begins_.begin(), begins_.end() - 1);
  for (const auto& [cell, range] : touched) {
    if (answers_[cell] == eAnswer::kUnsure) candidates_[next[cell]++] = range;
  }
}

}  // namespace ZARN::DU

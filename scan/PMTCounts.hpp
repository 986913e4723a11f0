#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "du/Verdict.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::Scan {

/// Counts the verdicts on the light to each PMT, row by row. One byte per PMT
/// and verdict, so that counting is fast and each thread can have its own:
/// after some rows the counts must be moved to larger ones.
class PMTCounts {
 public:
  explicit PMTCounts(std::size_t pmts);

  /// Add a row, one verdict for each PMT. Reasons why there is no path are not
  /// counted. Requires that IsFull is false.
  void Add(const DU::eVerdict* row);

  bool IsFull() const { return rows_ == kMostRows; }

  /// Add the counts to @p totals, one for each PMT, and begin again.
  void MoveTo(std::vector<VerdictCounts>& totals);

 private:
  static constexpr std::size_t kMostRows = 255;

  std::array<std::vector<std::uint8_t>, DU::kNumberOfComponents + 1> counts_;
  std::size_t rows_ = 0;
};

}  // namespace ZARN::Scan

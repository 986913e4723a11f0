#include "scan/PMTCounts.hpp"

namespace ZARN::Scan {

PMTCounts::PMTCounts(std::size_t pmts) {
  for (std::vector<std::uint8_t>& counts : counts_) counts.resize(pmts);
}

void PMTCounts::Add(const DU::eVerdict* row) {
  for (std::size_t component = 0; component < counts_.size(); ++component) {
    const auto verdict = static_cast<DU::eVerdict>(component);
    std::uint8_t* const counts = counts_[component].data();
    const std::size_t pmts = counts_[component].size();
    for (std::size_t pmt = 0; pmt < pmts; ++pmt) {
      counts[pmt] = static_cast<std::uint8_t>(counts[pmt] +
                                              (row[pmt] == verdict ? 1 : 0));
    }
  }
  ++rows_;
}

void PMTCounts::MoveTo(std::vector<VerdictCounts>& totals) {
  for (std::size_t component = 0; component < counts_.size(); ++component) {
    const auto verdict = static_cast<DU::eShadowingComponent>(component);
    for (std::size_t pmt = 0; pmt < totals.size(); ++pmt) {
      totals[pmt].Add(verdict, counts_[component][pmt]);
      counts_[component][pmt] = 0;
    }
  }
  rows_ = 0;
}

}  // namespace ZARN::Scan

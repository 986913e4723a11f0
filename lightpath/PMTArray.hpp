#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "TVector3.h"

namespace ZARN::DU {

/// The positions of many PMTs, prepared once for calculations that join each of
/// many events to all of them.
class PMTArray {
 public:
  PMTArray() = default;
  /// @param positions  mm, any values, also not finite ones
  explicit PMTArray(std::vector<TVector3> positions)
      : positions_(std::move(positions)) {}

  std::size_t Count() const { return positions_.size(); }
  const TVector3& At(std::size_t pmt) const { return positions_[pmt]; }

 private:
  std::vector<TVector3> positions_;
};

}  // namespace ZARN::DU

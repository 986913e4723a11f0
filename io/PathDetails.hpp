#pragma once

#include <string>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "io/PairColumns.hpp"

namespace ZARN::IO {

/// What columns tell of a judged light path besides the verdict.
struct PathDetails {
  DU::CriticalTolerances critical;
  /// Name of the item by which the component of the verdict blocks; empty if
  /// none does, and for components without items.
  std::string item;
};

/// Finds the details that some columns need, and no others: each takes much
/// longer than a verdict.
class DetailFinder {
 public:
  /// @param calculator  must outlive this; BeginOfRun was called
  DetailFinder(const DU::ShadowingCalculator& calculator,
               const std::vector<const PairColumn*>& columns);

  bool IsNeeded() const { return needsCritical_ || needsItem_; }

  /// Thread-safe.
  ///
  /// @param by  the verdict on the path
  void Find(const DU::LightPath& path, DU::eShadowingComponent by,
            PathDetails& details) const;

 private:
  const DU::ShadowingCalculator& calculator_;
  bool needsCritical_;
  bool needsItem_;
};

}  // namespace ZARN::IO

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "TVector3.h"
#include "display/PageItems.hpp"
#include "display/PathTrace.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/Verdict.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::Display {

/// What a page tells of light paths, one number of each for every pair.
/// Numbers are as display/web/src/data/page.ts says.
struct PathColumns {
  std::vector<float> angles;
  std::vector<std::uint16_t> items;
  std::vector<float> limits;
  std::vector<std::uint8_t> limitBy;

  void Clear();
};

/// A light path that its angle does not give exactly enough.
struct StoredPath {
  std::size_t event;
  std::size_t pmt;
  DU::eLight kind;
  PathPoints path;
};

/// Finds what a page tells of light paths.
class PathDetailsForPage {
 public:
  /// @param shadowing  must outlive this; BeginOfRun was called
  /// @param items      must outlive this
  PathDetailsForPage(const DU::ShadowingCalculator& shadowing,
                     const PageItems& items)
      : shadowing_(shadowing), items_(items) {}

  /// Append what a row needs. Thread-safe.
  ///
  /// @param lightPath     of this thread; BeginOfRun was called
  /// @param event         number of the event, for stored paths
  /// @param verdicts      one for each PMT
  /// @param checkForStop  called often, if not null; may throw
  void AppendRow(DU::LightPathCalculator& lightPath, std::size_t event,
                 const TVector3& position, const std::vector<TVector3>& pmts,
                 const DU::eVerdict* verdicts, DU::eLight kind,
                 const std::function<void()>& checkForStop,
                 PathColumns& columns, std::vector<StoredPath>& stored) const;

 private:
  void AppendPath(const DU::LightPath& path, DU::eVerdict verdict,
                  PathColumns& columns) const;

  const DU::ShadowingCalculator& shadowing_;
  const PageItems& items_;
};

}  // namespace ZARN::Display

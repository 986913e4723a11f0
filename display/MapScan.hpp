#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "TVector3.h"
#include "display/MapContent.hpp"
#include "display/MapPoints.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/Verdict.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::Display {

/// One set of tables, read by calculators whose BeginOfRun was called and that
/// outlive the scan.
struct MapTables {
  const DU::ShadowingCalculator* shadowing;
  const DU::LightPathCalculator* lightPath;
};

struct MapScanSettings {
  std::size_t threads = 1;  ///< at least one; does not change results
  /// The first tables of a comparison, of one event.
  std::optional<MapTables> before = std::nullopt;
  /// Count at these, too, mm, finite.
  std::vector<double> tolerances = {};
  /// Called often, on every thread; may throw to end the scan.
  std::function<void()> checkForStop = nullptr;
  /// Called from time to time on the caller's thread, with the number of pairs
  /// judged so far.
  std::function<void(std::uint64_t pairs)> onProgress = nullptr;
};

/// What a map shows of the light from some events to all targets.
struct MapVerdicts {
  // By target. For one event:
  std::vector<DU::eVerdict> verdicts;
  std::vector<DU::eVerdict> before;  ///< only on a comparison
  // For several, the number of light paths and of those that are shadowed:
  std::vector<std::uint64_t> paths;
  std::vector<std::uint64_t> shadowed;

  MapCounts counts;  ///< over all events
  /// On a comparison: every pair of different verdicts that occurs, the most
  /// frequent first. kTotalReflection stands for all reasons why there is no
  /// path.
  std::vector<MapChange> changes;
  /// Over all events, at each of the tolerances.
  std::vector<Scan::VerdictCounts> atTolerances;
};

/// Judge the light from each event to each target.
///
/// The verdicts are those of FindVerdicts. Also a single event is judged on all
/// threads: the targets are divided into parts.
///
/// @param events  mm, any values; one or more, one for a comparison
/// @throws what checkForStop and onProgress throw
MapVerdicts ScanMap(const MapTables& tables,
                    const std::vector<TVector3>& events,
                    const MapPoints& targets, const MapScanSettings& settings);

}  // namespace ZARN::Display

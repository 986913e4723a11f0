#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "TVector3.h"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "scan/RowScan.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::Scan {

/// Counts the verdicts at several tolerances in one scan: those of a scan at
/// each of them, for each event, each PMT and over all.
///
///     ToleranceCounts counts(shadowing, lightPath, pmts, {tolerances});
///     settings.onBlock = [&](const RowBlock& rows) { counts.Judge(rows); };
///     RowScan(shadowing, lightPath, pmts, settings).Run(events, sink);
///
/// The critical tolerances of a light path give its verdicts at all tolerances
/// where every component blocks more as the tolerance grows. At any other one
/// the path is judged by a calculator with that tolerance.
class ToleranceCounts {
 public:
  struct Settings {
    std::vector<double> tolerances;  ///< mm, finite
    std::size_t slots = 1;           ///< RowScan::SlotsFor the scan's threads
    bool withPMTCounts = false;      ///< count for each PMT
    /// As in RowScan.
    std::function<void()> checkForStop = nullptr;
  };

  /// @param shadowing  must outlive this; BeginOfRun was called
  /// @param lightPath  BeginOfRun was called
  /// @param pmts       those of the scan
  ToleranceCounts(const DU::ShadowingCalculator& shadowing,
                  const DU::LightPathCalculator& lightPath,
                  std::vector<TVector3> pmts, Settings settings);

  const std::vector<double>& Tolerances() const { return settings_.tolerances; }

  /// Count the light paths of a block. Thread-safe for different slots.
  ///
  /// After an exception, also of the scan, some blocks are not or only partly
  /// counted: use a new object for the next scan.
  ///
  /// @throws what checkForStop throws
  void Judge(const RowBlock& block);

  /// For each tolerance the counts of an event of a block, after Judge and
  /// until the next block in its slot.
  const VerdictCounts* OfEvent(const RowBlock& block, std::size_t event) const {
    return slots_[block.slot].counts.data() + event * Tolerances().size();
  }
  /// For each tolerance the counts of a PMT in all blocks; only if asked for.
  const VerdictCounts* OfPMT(std::size_t pmt) const {
    return perPMT_.data() + pmt * Tolerances().size();
  }
  /// For each tolerance the counts of all blocks.
  const std::vector<VerdictCounts>& OfAll() const { return all_; }

 private:
  /// What belongs to one of the blocks in work.
  struct Slot {
    DU::LightPathCalculator lightPath;
    std::vector<VerdictCounts> counts;  // of each event, at each tolerance
    /// Of one path after the other, at each tolerance.
    std::vector<DU::eShadowingComponent> verdicts;
    std::vector<std::size_t> pmts;  // of these paths
  };

  void AddPath(Slot& slot, std::size_t pmt, VerdictCounts* counts) const;
  void MoveToPMTs(Slot& slot);

  const DU::ShadowingCalculator& shadowing_;
  const std::vector<TVector3> pmts_;
  const Settings settings_;
  /// Calculators for the tolerances at which a component is not monotonic.
  std::vector<std::optional<DU::ShadowingCalculator>> plain_;
  std::vector<Slot> slots_;
  std::vector<VerdictCounts> perPMT_;
  std::vector<VerdictCounts> all_;
  std::mutex guard_;  // of perPMT_ and all_
};

}  // namespace ZARN::Scan

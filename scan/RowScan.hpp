#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "TVector3.h"
#include "du/ShadowingCalculator.hpp"
#include "du/Smearing.hpp"
#include "du/Verdict.hpp"
#include "du/VerdictRows.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/LightPathType.hpp"
#include "lightpath/PMTArray.hpp"
#include "scan/OrderedWork.hpp"
#include "scan/PMTCounts.hpp"
#include "scan/Smearing.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::Scan {

/// Some consecutive events, and for each of them a row of verdicts: one for
/// every PMT, or for some consecutive PMTs.
struct RowBlock {
  /// No other block that is in work has this number; less than
  /// RowScan::SlotsFor. For what a caller keeps with a block.
  std::size_t slot = 0;
  std::uint64_t firstEvent = 0;  ///< number of events before this block
  std::vector<TVector3> events;  ///< positions, mm
  std::size_t pmts = 0;          ///< length of a row
  /// Number of PMTs before the first of a row; a RowScan judges all of them.
  std::size_t firstPMT = 0;

  // Row after row; empty unless asked for (RowScan::Settings).
  std::vector<DU::eVerdict> direct;
  std::vector<DU::eVerdict> reflected;
  std::vector<std::uint8_t> types;  ///< eLightPathType of the direct light

  std::vector<SmearedCount> smeared;           ///< of the direct light
  std::vector<SmearedCount> smearedReflected;  ///< of the reflected light

  std::vector<VerdictCounts> counts;  ///< of each event, over all its rows
  std::uint64_t withoutPath = 0;      ///< pairs without direct light

  const DU::eVerdict* Direct(std::size_t event) const {
    return direct.data() + event * pmts;
  }
  /// Null if reflections were not asked for.
  const DU::eVerdict* Reflected(std::size_t event) const {
    return reflected.empty() ? nullptr : reflected.data() + event * pmts;
  }
  /// All zero if smearing was not asked for.
  SmearedCount Smeared(std::size_t event, std::size_t pmt) const {
    return smeared.empty() ? SmearedCount() : smeared[event * pmts + pmt];
  }
  SmearedCount SmearedReflected(std::size_t event, std::size_t pmt) const {
    return smearedReflected.empty() ? SmearedCount()
                                    : smearedReflected[event * pmts + pmt];
  }
  DU::eLightPathType DirectType(std::size_t event, std::size_t pmt) const {
    return static_cast<DU::eLightPathType>(types[event * pmts + pmt]);
  }
};

/// Judges the light from each of many events to all PMTs, on several threads.
///
///     ZARN::Scan::RowScan scan(shadowing, lightPath, pmts, {threads});
///     scan.Run(events, [](const ZARN::Scan::RowBlock& rows) { ... });
///
/// The verdicts are those of FindShadowing for the paths of CalcByPosition. The
/// results come in the order of the events and do not depend on the number of
/// threads. Memory does not grow with the number of events.
///
/// To cancel a scan, throw from one of the callbacks; to show progress, use the
/// sink. Use a scan from one thread at a time.
class RowScan {
 public:
  struct Settings {
    std::size_t threads = 1;       ///< at least one
    bool withReflections = false;  ///< judge reflected light too
    bool withTypes = false;        ///< keep the types of the paths
    bool withPMTCounts = false;    ///< count for each PMT
    /// Judge positions around each event, too; its own verdicts stay those of
    /// its position.
    std::optional<DU::Smearing> smearing = std::nullopt;
    /// A block has so many pairs at most, unless one row is longer: enough that
    /// taking a block costs next to nothing, few enough to spread the work
    /// evenly.
    std::size_t pairsPerBlock = 1UL << 13U;
    /// Called often, on every thread that judges; may throw to end the scan.
    std::function<void()> checkForStop = nullptr;
    /// Called with each block on the thread that judged it, so for several
    /// blocks at the same time.
    std::function<void(const RowBlock& block)> onBlock = nullptr;
  };

  /// Takes the results, block by block in the order of the events, on the
  /// caller's thread.
  using Sink = std::function<void(const RowBlock& block)>;

  /// Where events come from, for scans of more events than fit into memory.
  class Source {
   public:
    virtual ~Source() = default;
    /// Fill in the events of a block, at least one and at most @p most; false
    /// after the last event.
    virtual bool Next(RowBlock& block, std::size_t most) = 0;
  };

  /// @param shadowing  must outlive the scan; BeginOfRun was called
  /// @param lightPath  must outlive the scan; BeginOfRun was called
  RowScan(const DU::ShadowingCalculator& shadowing,
          const DU::LightPathCalculator& lightPath, DU::PMTArray pmts,
          Settings settings);

  /// Number of blocks that can be in work at the same time: while one thread
  /// waits for the oldest block, others can continue.
  static std::size_t SlotsFor(std::size_t threads) {
    return threads == 1 ? 1 : 2 * threads;
  }

  /// Judge all events of @p source. If a callback throws, the work ends and
  /// the exception leaves; the scan can then be used again.
  void Run(Source& source, const Sink& sink);
  /// The same for events in memory.
  void Run(const std::vector<TVector3>& events, const Sink& sink);

  /// For each PMT the counts of the last Run; empty unless asked for.
  const std::vector<VerdictCounts>& CountsPerPMT() const { return perPMT_; }

 private:
  void RunBlocks(Source& source, const Sink& sink);
  void Drain();
  void Judge(RowBlock& block);
  void JudgeRows(const TVector3& event, const DU::VerdictRows& rows) const;
  void JudgeSmeared(RowBlock& block, std::size_t worker);
  void Count(RowBlock& block, std::size_t worker);
  void CountForPMTs(const DU::eVerdict* row, PMTCounts& counts);

  const DU::ShadowingCalculator& shadowing_;
  const DU::LightPathCalculator& lightPath_;
  const DU::PMTArray pmts_;
  const Settings settings_;
  std::vector<RowBlock> free_;  // by slot, when not in work
  std::vector<PMTCounts> countsOfWorker_;
  /// Verdicts on one smeared position, direct and then reflected.
  std::vector<std::vector<DU::eVerdict>> rowsOfWorker_;
  std::vector<VerdictCounts> perPMT_;
  std::mutex perPMTGuard_;
  std::atomic<bool> isStopping_ = false;  // skip what has not started
  OrderedWork<RowBlock> work_;
};

}  // namespace ZARN::Scan

#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <vector>

#include "TVector3.h"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "scan/OrderedWork.hpp"

namespace ZARN::Scan {

/// All pairs of an event and a PMT, numbered from 0: first the first event with
/// each PMT, then the second, and so on.
struct Pairs {
  const std::vector<TVector3>& events;  ///< positions, mm
  const std::vector<TVector3>& pmts;

  std::size_t Count() const { return events.size() * pmts.size(); }
  std::size_t EventOf(std::size_t pair) const { return pair / pmts.size(); }
  std::size_t PMTOf(std::size_t pair) const { return pair % pmts.size(); }
};

/// The verdict on one path from an event to a PMT.
struct PairVerdict {
  std::size_t pair = 0;
  /// kUninitialised if there is no path.
  DU::eLightPathType type = DU::kUninitialised;
  DU::eShadowingComponent by = DU::eShadowingComponent::kNone;

  bool HasPath() const { return type != DU::kUninitialised; }
};

/// The results for some consecutive pairs.
struct PairChunk {
  /// For each pair the verdict on the direct path, directly followed by that on
  /// the reflected path if there is one.
  std::vector<PairVerdict> verdicts;
  /// The light path of each verdict that has one; see Settings::withPaths.
  std::vector<DU::LightPath> paths;
};

/// Computes and judges the light paths of pairs of an event and a PMT on
/// several threads.
///
///     ZARN::Scan::PairScan scan(shadowing, lightPath, {threads});
///     const ZARN::Scan::Pairs pairs = {events, pmts};
///     for (const auto& chunk : scan.FindVerdicts(pairs, 0, pairs.Count())) ...
///
/// Use a scan from one thread at a time. The results do not depend on the
/// number of threads.
class PairScan {
 public:
  /// Pairs per chunk (the last may be smaller): few enough to spread the work
  /// evenly, enough that taking a chunk costs next to nothing.
  static constexpr std::size_t kChunkSize = 256;

  struct Settings {
    std::size_t threads = 1;       ///< at least one
    bool withReflections = false;  ///< judge reflected light too
    bool withPaths = false;        ///< keep the light paths
    /// Called with each chunk and its number within the FindVerdicts call, on
    /// the thread that judged it, so for several chunks at the same time.
    /// FindVerdicts throws what it throws.
    std::function<void(std::size_t number, const PairChunk& chunk)> onChunk =
        nullptr;
  };

  /// @param shadowing  must outlive the scan; BeginOfRun was called
  /// @param lightPath  copied for each thread; BeginOfRun was called
  PairScan(const DU::ShadowingCalculator& shadowing,
           const DU::LightPathCalculator& lightPath, Settings settings);

  /// Judge the pairs from @p begin up to @p end. Memory grows with their
  /// number; judge a large number in several calls.
  ///
  /// @return chunks in the order of the pairs; valid until the next call
  const std::vector<PairChunk>& FindVerdicts(const Pairs& pairs,
                                             std::size_t begin,
                                             std::size_t end);

 private:
  /// The work of one thread on one chunk.
  struct Part {
    const Pairs* pairs;
    std::size_t begin;
    std::size_t end;
    std::size_t number;  // of its chunk
  };

  void FindVerdictsOfPart(const Part& part, DU::LightPathCalculator& lightPath);
  void Take(std::size_t pair, const DU::LightPathCalculator& lightPath,
            PairChunk& chunk) const;

  const DU::ShadowingCalculator& shadowing_;
  Settings settings_;
  std::vector<DU::LightPathCalculator> lightPaths_;  // one for each thread
  std::vector<PairChunk> chunks_;
  std::atomic<bool> isStopping_ = false;  // skip what has not started
  OrderedWork<Part> work_;
};

}  // namespace ZARN::Scan

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

/// Every event of a list with every PMT of another: the pairs are numbered from
/// 0 in the order of the events, and for each event of the PMTs.
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
  /// kUninitialised where there is no path.
  DU::eLightPathType type = DU::kUninitialised;
  DU::eShadowingComponent by = DU::eShadowingComponent::kNone;

  bool HasPath() const { return type != DU::kUninitialised; }
};

/// What was found for some pairs in a row.
struct PairChunk {
  /// A direct verdict for each pair, with a reflected one directly after it
  /// where there is one.
  std::vector<PairVerdict> verdicts;
  /// The light path of each verdict that has one, where they are asked for.
  std::vector<DU::LightPath> paths;
};

/// Computes and judges the light paths of pairs of an event and a PMT, on
/// several threads.
///
///     ZARN::Scan::PairScan scan(shadowing, lightPath, {threads});
///     const ZARN::Scan::Pairs pairs = {events, pmts};
///     for (const auto& chunk : scan.FindVerdicts(pairs, 0, pairs.Count())) ...
///
/// A scan serves one thread. What it finds does not depend on the number of
/// threads.
class PairScan {
 public:
  /// How many pairs a chunk has, but for the last: small enough to share out
  /// evenly, large enough that taking one is free.
  static constexpr std::size_t kChunkSize = 256;

  struct Settings {
    std::size_t threads = 1;       ///< at least one
    bool withReflections = false;  ///< judge reflected light, too
    bool withPaths = false;        ///< keep the light paths
    /// Called with each chunk and its number among those of a call of
    /// FindVerdicts, on the thread that judged it and so for several chunks at
    /// once. What it throws leaves from that call.
    std::function<void(std::size_t number, const PairChunk& chunk)> onChunk =
        nullptr;
  };

  /// @param shadowing  must outlive the scan; its run has begun
  /// @param lightPath  as each thread begins with it; its run has begun
  PairScan(const DU::ShadowingCalculator& shadowing,
           const DU::LightPathCalculator& lightPath, Settings settings);

  /// Judge the pairs from @p begin up to @p end. Memory grows with their
  /// number: of very many, judge some after the other.
  ///
  /// @return chunks in the order of the pairs; valid until the next call
  const std::vector<PairChunk>& FindVerdicts(const Pairs& pairs,
                                             std::size_t begin,
                                             std::size_t end);

 private:
  /// What one thread does at a time.
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
  std::atomic<bool> isStopping_ = false;  // what has not begun is left out
  OrderedWork<Part> work_;
};

}  // namespace ZARN::Scan

#pragma once

#include <cstddef>

#include "du/fast/BatchKernel.hpp"
#include "du/fast/BatchTables.hpp"
#include "du/fast/PathLists.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "lightpath/Kernels.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {

/// Verdicts on many paths at a time, by the arithmetic of ShadowingFilter in
/// single precision: a register holds twice as many paths, and the bands are so
/// wide that about one path in fifty stays open and is left to the filter
/// itself.
///
/// Paths are processed in blocks of kBatchPaths. They are sorted by type into
/// arrays of water segments, and loops without branches (BatchKernel) find for
/// each segment a cell of the shadow map and a cell of an azimuth table. Small
/// tables (BatchTables) hold the verdict for each pair of answers. If only the
/// map is unsure, the filter's exact tests of that cell decide.
///
/// Holds no reference to what it was made from. Judge is thread-safe.
class ShadowingBatch {
 public:
  explicit ShadowingBatch(const ShadowingFilter& filter);

  /// Write the verdict on each of @p count paths. Paths of unusual types are
  /// left open.
  ///
  /// @param filter  the one that this was made from
  /// @param count  up to kBatchPaths
  void Judge(const ShadowingFilter& filter, const PathsInRecords& paths,
             std::size_t count, BatchVerdict* verdicts) const;
  void Judge(const ShadowingFilter& filter, const PathsInColumns& paths,
             std::size_t count, BatchVerdict* verdicts) const;

  /// Join an event to PMTs by straight paths (BatchKernel::join).
  void Join(const TVector3& event, const RayPMTs& pmts, WaterBlock& block,
            std::size_t count) const {
    kernel_->join(event.X(), event.Y(), event.Z(), pmts, block, count);
  }
  /// Copy the segments of rays to a block (BatchKernel::copyRays).
  void CopyRays(const RayBlock& rays, double radius, bool areTwo,
                CrossingBlock& block, std::size_t count) const {
    kernel_->copyRays(rays, radius, areTwo, block, count);
  }
  /// Find the cells of @p count segments that cross the vessel.
  void Cross(CrossingBlock& block, std::size_t count) const {
    kernel_->cross(tables_.Geometry(), block, count);
  }
  /// Find the rope answers of @p count paths in water, and the verdicts on
  /// them.
  void PassWater(WaterBlock& block, std::size_t count,
                 BatchVerdict* verdicts) const;
  /// The verdicts on segments of a block, from their cells alone.
  ///
  /// @param areFirst  of their paths
  void FindVerdicts(const ShadowingFilter& filter, const CrossingBlock& block,
                    std::size_t begin, std::size_t count, bool areFirst,
                    BatchVerdict* verdicts) const {
    tables_.OnCrossings(block, begin, count, filter.Map().Codes().data(),
                        areFirst, verdicts);
  }

  /// The verdict on a segment of a block from its cells, or where only that of
  /// the map is unsure from @p findAtCrossing(cell, knownRopes).
  ///
  /// @param isFirst  of its path
  template <class FindAtCrossing>
  BatchVerdict VerdictOn(const ShadowingFilter& filter,
                         const CrossingBlock& block, std::size_t place,
                         bool isFirst,
                         const FindAtCrossing& findAtCrossing) const {
    const RopeAnswer ropes = tables_.RopesAt(block.rope.at[place]);
    const int cell = block.cell.at[place];
    const auto inMap = static_cast<std::size_t>(cell);
    ZARN_ASSERT(inMap <= filter.Map().OffMap(), cell, filter.Map().OffMap());
    const BatchVerdict verdict =
        tables_.OnCrossing(ropes, filter.Map().At(inMap), isFirst);
    if (verdict != kOpenVerdict || ropes.Answer() == eAnswer::kUnsure ||
        cell == tables_.Geometry().offMap) {
      return verdict;
    }
    // No rope below the ends blocks it; otherwise the verdict would not be
    // open.
    const bool isAboveEnds = !ropes.IsBelowEnds();
    return findAtCrossing(
        inMap, ShadowingFilter::KnownRopes{
                   isAboveEnds,
                   isAboveEnds && ropes.Answer() == eAnswer::kBlocks, isFirst});
  }

  /// Use this kernel, which must be available. The default is the widest.
  void UseKernel(eKernel kernel);

 private:
  template <class Paths>
  class Block;

  const BatchKernel* kernel_;
  BatchTables tables_;
};

}  // namespace ZARN::DU

#pragma once

#include <cstddef>
#include <vector>

#include "du/fast/BatchKernel.hpp"
#include "du/fast/BatchTables.hpp"
#include "du/fast/PathLists.hpp"
#include "du/fast/ShadowingFilter.hpp"

namespace ZARN::DU {

/// Kinds of processors that a batch kernel exists for.
enum class eKernel { kBaseline, kAVX2, kAVX512 };

/// The kernels that this processor can run, the narrowest first.
std::vector<eKernel> AvailableKernels();

/// A first verdict on many paths at a time, by the arithmetic of
/// ShadowingFilter in single precision: twice as many paths in a register, and
/// bands so wide that about one path in fifty stays open and is left to the
/// filter itself.
///
/// Paths are taken kBatchPaths at a time: sorted by type into arrays of water
/// segments, judged by loops without branches (BatchKernel), and put together
/// by small tables (BatchTables): each cell of the shadow map and of the
/// azimuth tables gives a number, and the verdict stands where both lead. Where
/// only the map is unsure, the filter's exact tests of that cell decide.
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

  /// Use a certain kernel, one of those available. The widest is the default.
  void UseKernel(eKernel kernel);

 private:
  template <class Paths>
  class Block;

  const BatchKernel* kernel_;
  BatchTables tables_;
};

}  // namespace ZARN::DU

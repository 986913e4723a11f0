#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "du/fast/BatchKernel.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"

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
/// by small tables: each cell of the shadow map and of the azimuth tables gives
/// a number, and the verdict stands where both lead. Where only the map is
/// unsure, the filter's exact tests of that cell decide.
///
/// Holds no reference to what it was made from; several threads may ask.
class ShadowingBatch {
 public:
  /// What Judge says of a path that it leaves open.
  static constexpr std::uint8_t kOpen = 255;

  explicit ShadowingBatch(const ShadowingFilter& filter);

  /// Write the verdict on each of @p count paths, as a number of
  /// eShadowingComponent, or kOpen. Paths of unusual types are left open.
  ///
  /// @param filter  the one that this was made from
  /// @param count  up to kBatchPaths
  void Judge(const ShadowingFilter& filter, const LightPath* paths,
             std::size_t count, std::uint8_t* verdicts) const;
  /// @param first  of the paths in the arrays
  void Judge(const ShadowingFilter& filter, const LightPathArrays& paths,
             std::size_t first, std::size_t count,
             std::uint8_t* verdicts) const;

  /// Use a certain kernel, one of those available. The widest is the default.
  void UseKernel(eKernel kernel);

 private:
  /// What an answer about ropes is, for a crossing: the ropes that it can meet
  /// and what they do. Those below the ends of the hold-down ropes have
  /// kBelowEnds set.
  enum eRopes : std::uint8_t {
    kClear = static_cast<std::uint8_t>(eAnswer::kClear),
    kUnsure = static_cast<std::uint8_t>(eAnswer::kUnsure),
    kBlocks = static_cast<std::uint8_t>(eAnswer::kBlocks),
    kNothingKnown,
    kBelowEnds
  };
  static constexpr std::size_t kRopes = 8;
  using CrossingVerdicts = std::array<std::array<std::uint8_t, 256>, kRopes>;

  template <class Paths>
  void JudgeBlock(const ShadowingFilter& filter, const Paths& paths,
                  std::size_t count, std::uint8_t* verdicts) const;
  int Append(const AzimuthTable& table, std::uint8_t flag);
  int Append(std::uint8_t answer);
  void MakeCrossingVerdicts();
  void MakeWaterVerdicts(const ShadowingFilter& filter);

  const BatchKernel* kernel_;
  BatchGeometry geometry_ = {};
  std::vector<std::uint8_t> ropes_;       // the azimuth tables, end to end
  CrossingVerdicts firstVerdicts_ = {};   // of a path's first segment
  CrossingVerdicts secondVerdicts_ = {};  // the pipes do not count
  std::array<std::uint8_t, 256> waterVerdicts_ = {};
};

}  // namespace ZARN::DU

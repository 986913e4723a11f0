#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ZARN::DU {

// This header goes into code that is compiled for several processors: it holds
// no function, and includes nothing that does.

/// How many paths are taken at a time: all that belongs to them stays in the
/// first cache.
inline constexpr std::size_t kBatchPaths = 256;

template <class Number, std::size_t kCount>
struct alignas(64) Lane {
  Number at[kCount];  // NOLINT(*-avoid-c-arrays): std::array is a function call
};

/// Water segments at the vessel, in single precision, and what is found.
struct CrossingBlock {
  static constexpr std::size_t kMost = 2 * kBatchPaths;
  template <class Number>
  using Values = Lane<Number, kMost>;

  Values<float> pointX, pointY, pointZ;
  Values<float> directionX, directionY, directionZ;
  Values<int> cell;  ///< of the shadow map's codes
  Values<int> rope;  ///< of the rope answers
};

/// Paths in water, in single precision, and what is found.
struct WaterBlock {
  static constexpr std::size_t kMost = kBatchPaths;
  template <class Number>
  using Values = Lane<Number, kMost>;

  Values<float> startX, startY;
  Values<float> endX, endY;
  Values<float> directionX, directionY, directionZ;
  /// Of the rope answers: of the hold-down ropes' test, where the path enters
  /// their cylinder and leaves it, and the same of the support ropes' test.
  Values<int> entered, left, seenEntered, seenLeft;
};

/// What the kernels know of a geometry.
struct BatchGeometry {
  float lowest2;  ///< of the map's shell
  float highest2;
  int mapCells;  ///< along a side
  int offMap;    ///< the cell for points off the shell

  /// Heights that decide which ropes a segment can meet, each with a margin for
  /// single precision to both sides.
  float belowEnds, aboveEnds;
  float belowFeet, aboveFeet;

  /// Where the ropes stand, and up to which height they are tested, squared;
  /// NaN, which leaves everything open, where algebra cannot judge it. The
  /// hold-down ropes are seen by their own test and by the support ropes' one.
  float ropesRadius2, supportRadius2;
  float holdDownHeight2, supportHeight2, seenHeight2;
  float lowestSine, highestSine;  ///< of the hold-down ropes seen in space

  int azimuthCells;
  /// Where the rope answers of each table begin.
  int holdDownTable, supportTable, seenTable, seenInSpaceTable;
  /// The answers that no table gives.
  int noRope, noRopeBelow, open;
};

/// The work on a block; one set for each kind of processor.
struct BatchKernel {
  void (*cross)(const BatchGeometry& geometry, CrossingBlock& block,
                std::size_t count);
  void (*passWater)(const BatchGeometry& geometry, WaterBlock& block,
                    std::size_t count);
};

extern const BatchKernel kBaselineKernel;
#ifdef __x86_64__
extern const BatchKernel kAVX2Kernel;
extern const BatchKernel kAVX512Kernel;
#endif

}  // namespace ZARN::DU

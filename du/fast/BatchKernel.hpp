#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "lightpath/RayKernel.hpp"

namespace ZARN::DU {

// This header is included by code that is compiled for several processors, so
// it has no functions and includes no header that has.

/// The number of paths in a block. All their data stays in the level 1 cache.
inline constexpr std::size_t kBatchPaths = 256;

template <class Number, std::size_t kCount>
struct alignas(64) Lane {
  Number at[kCount];  // NOLINT(*-avoid-c-arrays): std::array is a function call
};

/// Water segments that start at the vessel, in single precision, and the
/// results for them.
struct CrossingBlock {
  static constexpr std::size_t kMost = 2 * kBatchPaths;
  template <class Number>
  using Values = Lane<Number, kMost>;

  Values<float> pointX, pointY, pointZ;
  Values<float> directionX, directionY, directionZ;
  Values<int> cell;  ///< index into the shadow map
  Values<int> rope;  ///< index of a rope answer
};

/// Paths in water, in single precision, and the results for them.
struct WaterBlock {
  static constexpr std::size_t kMost = kBatchPaths;
  template <class Number>
  using Values = Lane<Number, kMost>;

  Values<float> startX, startY;
  Values<float> endX, endY;
  Values<float> directionX, directionY, directionZ;
  /// Indexes of rope answers: of the hold-down ropes' test, where the path
  /// enters their cylinder and where it leaves it, and the same of the support
  /// ropes' test.
  Values<int> entered, left, seenEntered, seenLeft;
};

/// What the kernels need of a geometry.
struct BatchGeometry {
  float lowest2;  ///< squared radii of the map's shell, mm^2
  float highest2;
  int mapCells;  ///< along a side
  int offMap;    ///< the cell for points outside the shell

  /// Heights that decide which ropes a segment can meet, each with a margin for
  /// single precision to both sides.
  float belowEnds, aboveEnds;
  float belowFeet, aboveFeet;

  /// Squared radii of the rope cylinders, and squared heights up to which the
  /// tests look. NaN, which leaves everything open, if algebra cannot judge the
  /// ropes. The hold-down ropes are also seen by the support ropes' test.
  float ropesRadius2, supportRadius2;
  float holdDownHeight2, supportHeight2, seenHeight2;
  float lowestSine, highestSine;  ///< of seenInSpaceTable

  int azimuthCells;
  /// The index of the first rope answer of each table.
  int holdDownTable, supportTable, seenTable, seenInSpaceTable;
  /// The indexes of the answers outside the tables.
  int noRope, noRopeBelow, open;
};

/// The functions that process a block; one set for each kind of processor.
struct BatchKernel {
  /// Join an event to PMTs by straight paths. A path that is shorter than 1 mm
  /// may be wrong.
  ///
  /// @param x,y,z  of the event, mm
  void (*join)(double x, double y, double z, const RayPMTs& pmts,
               WaterBlock& block, std::size_t count);
  /// Copy the last segments of rays to a block, and from @p count on, if
  /// @p areTwo, their first ones. The point of a ray that is not known well
  /// enough for the bands is not a number: then nothing is known about it.
  ///
  /// @param radius  of the vessel, mm
  /// @param count  up to kBatchPaths
  void (*copyRays)(const RayBlock& rays, double radius, bool areTwo,
                   CrossingBlock& block, std::size_t count);
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

#include "du/fast/BatchKernel.hpp"

#include "du/geometry/AzimuthCell.hpp"
#include "du/geometry/CylinderCrossing.hpp"
#include "du/geometry/CylinderSide.hpp"
#include "du/geometry/OctahedralPlace.hpp"

// Compiled once for each kind of processor; ZARN_KERNEL names the result. The
// loops have no branches and no calls, so the compiler vectorises them for as
// many paths as the registers of the processor hold. All versions round in the
// same way, path by path.

namespace ZARN::DU {
namespace {

using Crossing = CylinderCrossing<float>;

void Join(double eventX, double eventY, double eventZ, const RayPMTs& p,
          WaterBlock& block, std::size_t count) {
  const RayPMTs pmts = p;
  for (std::size_t i = 0; i < count; ++i) {
    const double radius = 1.0 / pmts.inverseRadius[i];
    const double endX = radius * pmts.x[i];
    const double endY = radius * pmts.y[i];
    const double x = endX - eventX;
    const double y = endY - eventY;
    const double z = radius * pmts.z[i] - eventZ;
    const double length2 = x * x + y * y + z * z;
    const double inverse = 1.0 / __builtin_sqrt(length2 > 0.0 ? length2 : 1.0);
    block.startX.at[i] = static_cast<float>(eventX);
    block.startY.at[i] = static_cast<float>(eventY);
    block.endX.at[i] = static_cast<float>(endX);
    block.endY.at[i] = static_cast<float>(endY);
    block.directionX.at[i] = static_cast<float>(inverse * x);
    block.directionY.at[i] = static_cast<float>(inverse * y);
    block.directionZ.at[i] = static_cast<float>(inverse * z);
  }
}

using Coordinates = RayBlock::Lane<double>;

/// @param bounds  of the points, in radii, and of the directions, rad
void CopySegments(const Coordinates& bounds, double radius,
                  const Coordinates& pointX, const Coordinates& pointY,
                  const Coordinates& pointZ, const Coordinates& directionX,
                  const Coordinates& directionY, const Coordinates& directionZ,
                  CrossingBlock& block, std::size_t begin, std::size_t count) {
  constexpr double kError = CrossingBands<float>::kPathError;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = directionX.at[i];
    const double y = directionY.at[i];
    const double bound = bounds.at[i];
    // The bands allow a turn of the flattened direction.
    const bool isKnown =
        (bound < kError) & (bound * bound < kError * kError * (x * x + y * y));
    const double scale = isKnown ? radius : __builtin_nan("");
    block.pointX.at[begin + i] = static_cast<float>(scale * pointX.at[i]);
    block.pointY.at[begin + i] = static_cast<float>(scale * pointY.at[i]);
    block.pointZ.at[begin + i] = static_cast<float>(scale * pointZ.at[i]);
    block.directionX.at[begin + i] = static_cast<float>(x);
    block.directionY.at[begin + i] = static_cast<float>(y);
    block.directionZ.at[begin + i] = static_cast<float>(directionZ.at[i]);
  }
}

void CopyRays(const RayBlock& rays, double radius, bool areTwo,
              CrossingBlock& block, std::size_t count) {
  CopySegments(rays.bound, radius, rays.pointX, rays.pointY, rays.pointZ,
               rays.directionX, rays.directionY, rays.directionZ, block, 0,
               count);
  if (!areTwo) return;
  CopySegments(rays.bound, radius, rays.firstX, rays.firstY, rays.firstZ,
               rays.backX, rays.backY, rays.backZ, block, count, count);
}

/// The index of an answer: one of a rope table if the crossing is as low as the
/// ropes, else one outside the tables.
[[gnu::always_inline]] inline int RopeAt(const BatchGeometry& geometry,
                                         const Crossing& crossing,
                                         float height2, int table, int none) {
  const bool isLow = IsWithinHeight(crossing, height2);
  const bool isHigh = IsAboveHeight(crossing, height2);
  // The cell is computed for every path; if it is not needed, from a harmless
  // position.
  const int cell = AzimuthCell(
      isLow ? crossing.x : 1.0F, isLow ? crossing.y : 0.0F,
      static_cast<float>(geometry.azimuthCells) / 4.0F, geometry.azimuthCells);
  return isLow ? table + cell : isHigh ? none : geometry.open;
}

// The loops use a copy of the geometry: the compiler must assume that writing a
// result changes what is behind a reference.

void Cross(const BatchGeometry& geometry, CrossingBlock& block,
           std::size_t count) {
  const BatchGeometry g = geometry;
  const float half = static_cast<float>(g.mapCells) / 2.0F;
  for (std::size_t i = 0; i < count; ++i) {
    const float x = block.pointX.at[i];
    const float y = block.pointY.at[i];
    const float z = block.pointZ.at[i];
    const float r2 = x * x + y * y + z * z;
    const bool isOnShell = (r2 > g.lowest2) & (r2 < g.highest2);
    const auto place = PlaceOf(isOnShell ? x : 1.0F, isOnShell ? y : 0.0F,
                               isOnShell ? z : 0.0F);
    const int cell = CellAlong(place.v, half, g.mapCells) * g.mapCells +
                     CellAlong(place.u, half, g.mapCells);
    block.cell.at[i] = isOnShell ? cell : g.offMap;
  }
  for (std::size_t i = 0; i < count; ++i) {
    const float z = block.pointZ.at[i];
    const bool isBelowEnds = z < g.belowEnds;
    const bool isAboveFeet = z > g.aboveFeet;
    // Near a limit, or where both kinds of ropes are possible, it is not known
    // which ones to test.
    const bool isKnown = (isBelowEnds | (z > g.aboveEnds)) &
                         (isAboveFeet | (z < g.belowFeet)) &
                         !(isBelowEnds & isAboveFeet);
    const auto crossing = CrossCylinder(
        block.pointX.at[i], block.pointY.at[i], block.directionX.at[i],
        block.directionY.at[i], block.directionZ.at[i],
        isBelowEnds ? g.ropesRadius2 : g.supportRadius2);
    const int none = isBelowEnds ? g.noRopeBelow : g.noRope;
    const int rope =
        RopeAt(g, crossing, isBelowEnds ? g.holdDownHeight2 : g.supportHeight2,
               isBelowEnds ? g.holdDownTable : g.supportTable, none);
    block.rope.at[i] = !isKnown                    ? g.open
                       : isBelowEnds | isAboveFeet ? rope
                                                   : none;
  }
}

/// The hold-down ropes, in their own test and in the test of the support ropes,
/// which uses the same cylinder with other limits.
void PassHoldDownRopes(const BatchGeometry& geometry, WaterBlock& block,
                       std::size_t count) {
  const BatchGeometry g = geometry;
  for (std::size_t i = 0; i < count; ++i) {
    const float startX = block.startX.at[i];
    const float startY = block.startY.at[i];
    const float endX = block.endX.at[i];
    const float endY = block.endY.at[i];
    const float vx = block.directionX.at[i];
    const float vy = block.directionY.at[i];
    const float vz = block.directionZ.at[i];
    const float start2 = startX * startX + startY * startY;
    const float end2 = endX * endX + endY * endY;
    const auto passage =
        PassageOf(start2, end2, startX * endX + startY * endY, g.ropesRadius2);
    const bool isStartIn = IsInside(start2, g.ropesRadius2);
    const bool isStartOut = IsOutside(start2, g.ropesRadius2);
    const bool isEndIn = IsInside(end2, g.ropesRadius2);
    const bool isEndOut = IsOutside(end2, g.ropesRadius2);
    const bool areBothMet = isStartOut & isEndOut & IsMeeting(passage);
    const bool areBothMissed = isStartOut & isEndOut & IsPassingBeside(passage);
    const bool isEntered = areBothMet | (isStartIn & isEndOut);
    const bool isLeft = areBothMet | (isEndIn & isStartOut);
    const bool isClear = areBothMissed | (isStartIn & isEndIn);
    const bool isSeenClear = areBothMissed | isStartIn | isEndIn;

    const auto entering =
        CrossCylinder(startX, startY, vx, vy, vz, g.ropesRadius2);
    const int entered =
        RopeAt(g, entering, g.holdDownHeight2, g.holdDownTable, g.noRope);
    const int seen = RopeAt(g, entering, g.seenHeight2, g.seenTable, g.noRope);
    const int enteredOrNone = isClear | isLeft ? g.noRope : g.open;
    const int seenOrNone = isSeenClear ? g.noRope : g.open;
    block.entered.at[i] = isEntered ? entered : enteredOrNone;
    block.seenEntered.at[i] = areBothMet ? seen : seenOrNone;

    const auto leaving =
        CrossCylinder(endX, endY, -vx, -vy, -vz, g.ropesRadius2);
    const int left =
        RopeAt(g, leaving, g.holdDownHeight2, g.holdDownTable, g.noRope);
    const int seenLeft =
        RopeAt(g, leaving, g.seenHeight2, g.seenInSpaceTable, g.noRope);
    const float height = leaving.Height();
    const float distance = SquareRoot(leaving.x * leaving.x +
                                      leaving.y * leaving.y + height * height);
    constexpr float kLeastCosine2 = CrossingBands<float>::kLeastCosine2InSpace;
    const bool isBeside = (leaving.along2 > kLeastCosine2 * leaving.scale) &
                          ((height < g.lowestSine * distance) |
                           (height > g.highestSine * distance));
    const int beside = seenLeft == g.open ? g.open : g.noRope;
    const int seenOrBeside = isBeside ? beside : seenLeft;
    block.left.at[i] = isLeft ? left : g.noRope;
    block.seenLeft.at[i] = areBothMet ? seenOrBeside : g.noRope;
  }
}

/// The support ropes if one end is inside their cylinder; if both ends are
/// outside, the hold-down ropes as the support ropes' test uses them.
void PassSupportRopes(const BatchGeometry& geometry, WaterBlock& block,
                      std::size_t count) {
  const BatchGeometry g = geometry;
  for (std::size_t i = 0; i < count; ++i) {
    const float startX = block.startX.at[i];
    const float startY = block.startY.at[i];
    const float endX = block.endX.at[i];
    const float endY = block.endY.at[i];
    const float start2 = startX * startX + startY * startY;
    const float end2 = endX * endX + endY * endY;
    const bool isStartIn = IsInside(start2, g.supportRadius2);
    const bool isStartOut = IsOutside(start2, g.supportRadius2);
    const bool isEndIn = IsInside(end2, g.supportRadius2);
    const bool isEndOut = IsOutside(end2, g.supportRadius2);
    const bool isCrossed = (isStartIn & isEndOut) | (isStartOut & isEndIn);
    const bool areBothIn = isStartIn & isEndIn;
    const bool areBothOut = isStartOut & isEndOut;
    const float sense = isStartIn ? 1.0F : -1.0F;
    const auto crossing = CrossCylinder(
        isStartIn ? startX : endX, isStartIn ? startY : endY,
        sense * block.directionX.at[i], sense * block.directionY.at[i],
        sense * block.directionZ.at[i], g.supportRadius2);
    const int support =
        RopeAt(g, crossing, g.supportHeight2, g.supportTable, g.noRope);
    const int seenEntered = block.seenEntered.at[i];
    const int seenLeft = block.seenLeft.at[i];
    const int noneOrOpen = areBothIn ? g.noRope : g.open;
    const int seenOrNot = areBothOut ? seenEntered : noneOrOpen;
    block.seenEntered.at[i] = isCrossed ? support : seenOrNot;
    block.seenLeft.at[i] = areBothOut ? seenLeft : g.noRope;
  }
}

void PassWater(const BatchGeometry& geometry, WaterBlock& block,
               std::size_t count) {
  PassHoldDownRopes(geometry, block, count);
  PassSupportRopes(geometry, block, count);
}

}  // namespace

extern const BatchKernel ZARN_KERNEL;
const BatchKernel ZARN_KERNEL = {Join, CopyRays, Cross, PassWater};

}  // namespace ZARN::DU

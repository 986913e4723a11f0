#include "du/fast/RopeDirections.hpp"

#include <algorithm>
#include <cmath>

#include "du/geometry/Constants.hpp"
#include "du/geometry/CylinderCrossing.hpp"
#include "du/geometry/OrdinaryLength.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {
namespace {

using eCrossings = RopeDirections::eCrossings;

// What the bands and margins have to cover.
using Bands = CrossingBands<double>;
using BandsInSingle = CrossingBands<float>;
static_assert(RopeDirections::kAngleBand > 2 * Bands::kAzimuthError);
static_assert(RopeDirections::kAngleBandInSpace > 2 * Bands::kSpaceError);
static_assert(RopeDirections::kAngleBandBounded >
              2 * BoundedBands::kAzimuthError);
static_assert(RopeDirections::kHeightMargin >
              1.2 * double{BandsInSingle::kSpaceError});
static_assert(AzimuthTable::kMargin > double{BandsInSingle::kAzimuthError} +
                                          kAzimuthCellError +
                                          RopeDirections::kRangeError);

/// Whether a rope can be judged by products and by its azimuth.
bool IsOrdinary(const TVector3& rope) {
  return HasOrdinaryLength(rope) &&
         rope.Perp() > RopeDirections::kLeastSine * rope.Mag();
}

double AngleBand(eCrossings crossings) {
  return crossings == eCrossings::kFlattened
             ? RopeDirections::kAngleBand
             : RopeDirections::kAngleBandInSpace;
}

/// Azimuths at which a rope can block a crossing, with an error of at most
/// kRangeError.
AzimuthRange RangeOf(const TVector3& rope, double angleTolerance,
                     eCrossings crossings) {
  AzimuthRange range = {rope.Phi(), -1.0, true};
  if (!(angleTolerance > 0.0)) {
    // Angles are not negative, so none is below the tolerance.
    range.halfWidth = -1.0;
  } else if (angleTolerance >= kHalfPi) {
    // This is more than half of all directions; not worth a better bound.
    range.halfWidth = kTwoPi;
    range.isSure = false;
  } else if (crossings == eCrossings::kFlattened) {
    // A spherical triangle with a right angle at the horizon below the rope.
    const double ratio = std::cos(angleTolerance) * rope.Mag() / rope.Perp();
    range.halfWidth = ratio < 1.0 ? std::acos(ratio) : 0.0;
  } else {
    // The cap around the rope, seen from the axis. It is widened by the error
    // of the angle, which is wider in azimuth the steeper the rope is.
    const double widened =
        std::min(angleTolerance + AngleBand(crossings), kHalfPi);
    const double ratio = std::sin(widened) * rope.Mag() / rope.Perp();
    range.halfWidth = ratio < 1.0 ? std::asin(ratio) : kTwoPi;
    range.isSure = false;
  }
  return range;
}

}  // namespace

RopeDirections::RopeDirections(const std::vector<TVector3>& ropes,
                               double angleTolerance, eCrossings crossings,
                               int cells) {
  std::vector<AzimuthRange> ranges;
  const bool areOrdinary = std::all_of(ropes.begin(), ropes.end(), IsOrdinary);
  if (!areOrdinary || std::isinf(angleTolerance)) {
    // One range over all azimuths, with a rope that no product can judge.
    directions_.emplace_back(0, 0, 0);
    table_ = AzimuthTable({{0.0, kTwoPi, false}}, cells);
    return;
  }
  for (const TVector3& rope : ropes) {
    directions_.push_back(rope.Unit());
    ranges.push_back(RangeOf(rope, angleTolerance, crossings));
  }
  limits_ = CosineLimits(angleTolerance, AngleBand(crossings));
  boundedLimits_ = CosineLimits(angleTolerance, kAngleBandBounded);
  SetHeightLimits(angleTolerance);
  table_ = AzimuthTable(ranges, cells);
}

RopeDirections::CosineLimits::CosineLimits(double angleTolerance, double band) {
  const double near = angleTolerance - band;
  const double far = angleTolerance + band;
  // All directions are nearer than an angle above pi.
  if (near > 0.0) {
    surelyNear = near > kPi ? -2.0 : std::cos(near) + kCosineBand;
  }
  if (far < kPi) surelyFar = std::cos(far) - kCosineBand;
}

void RopeDirections::SetHeightLimits(double angleTolerance) {
  double lowest = kHalfPi;
  double highest = -kHalfPi;
  for (const TVector3& direction : directions_) {
    const double height = kHalfPi - direction.Theta();
    lowest = std::min(lowest, height);
    highest = std::max(highest, height);
  }
  const double widened = std::abs(angleTolerance) + kHeightMargin;
  if (lowest - widened > -kHalfPi) lowestSine_ = std::sin(lowest - widened);
  if (highest + widened < kHalfPi) highestSine_ = std::sin(highest + widened);
}

eAnswer RopeDirections::Judge(double x, double y, double z) const {
  return Judge(x, y, z, limits_);
}

eAnswer RopeDirections::JudgeBounded(double x, double y) const {
  return Judge(x, y, 0.0, boundedLimits_);
}

eAnswer RopeDirections::Judge(double x, double y, double z,
                              const CosineLimits& limits) const {
  ZARN_ASSERT(std::isfinite(x + y + z) && (x != 0.0 || y != 0.0), x, y, z);
  const int cell = table_.CellOf(x, y);
  eAnswer answer = table_.At(cell);
  if (answer != eAnswer::kUnsure) return answer;
  const double length = std::sqrt(x * x + y * y + z * z);
  answer = eAnswer::kClear;
  const std::uint32_t* const end = table_.EndCandidates(cell);
  for (const std::uint32_t* i = table_.BeginCandidates(cell); i != end; ++i) {
    const TVector3& rope = directions_[*i];
    const double product = x * rope.X() + y * rope.Y() + z * rope.Z();
    if (product > limits.surelyNear * length) return eAnswer::kBlocks;
    if (!(product < limits.surelyFar * length)) answer = eAnswer::kUnsure;
  }
  return answer;
}

}  // namespace ZARN::DU

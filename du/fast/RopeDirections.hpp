#pragma once

#include <vector>

#include "TVector3.h"
#include "du/geometry/Answer.hpp"
#include "du/geometry/AzimuthTable.hpp"

namespace ZARN::DU {

/// The directions of ropes as seen from the centre. A crossing is blocked if
/// its angle to any of them is small enough:
///
///     angleTolerance > crossing.Angle(rope)      for any rope
///
/// This needs no arc cosine: the cosine of the angle is compared with that of
/// the tolerance, and within kAngleBand and kCosineBand of the limit the answer
/// is unsure. Before that, an AzimuthTable finds the few ropes that can be
/// near; for crossings in the horizontal plane it mostly finds the answer.
class RopeDirections {
 public:
  /// Which crossings are judged.
  enum class eCrossings {
    kFlattened,  ///< with z = 0
    kInSpace     ///< anywhere
  };

  /// An angle nearer to the tolerance than this is left open, rad: at least
  /// twice the error of a crossing found by algebra (CrossingBands), flattened
  /// or with its height.
  static constexpr double kAngleBand = 1e-9;
  static constexpr double kAngleBandInSpace = 2e-6;
  /// The same for a flattened crossing of a path that is known within
  /// BoundedBands.
  static constexpr double kAngleBandBounded = 5e-6;
  /// A cosine nearer to that of the tolerance than this is left open. The error
  /// of the formula's angle is at most 14 u in its cosine, u = 2^-53: scalar
  /// product and lengths 10, arc cosine 4 (which need not even be monotonic).
  /// The products here have 10 roundings and the cosine of the tolerance one.
  /// This is 36 times their sum.
  static constexpr double kCosineBand = 1e-13;

  /// Bound on the error of a rope's azimuths in the table, rad.
  ///
  /// For flattened crossings, a rope whose angle to the axis has the sine q
  /// blocks azimuths up to acos(cos(tolerance) / q) from its own. With
  /// u = 2^-53:
  ///
  /// - the last bit of the formula's angle, which is near pi / 2 or less, is
  ///   2 u, and the rest of its error is 8 u q in its cosine: divided by q,
  ///   2 u / q + 8 u;
  /// - the error of the quotient here is at most 12 u;
  /// - an error e of a cosine changes its arc cosine by less than
  ///   1.1 sqrt(2 e), most where the arc cosine is 0.
  ///
  /// With q >= kLeastSine, e is 2.3e-10 and the error of the azimuth at most
  /// 2.4e-5. For crossings in space the range is that of a tolerance widened by
  /// more than the angle's error, and holds for any q; its own error is at most
  /// 5e-8.
  static constexpr double kRangeError = 1e-4;
  /// The least sine of the angle between a rope and the axis. Steeper ropes are
  /// left to the formula.
  static constexpr double kLeastSine = 1e-6;

  RopeDirections() = default;
  /// @param ropes  any; if one has zero length, is not finite, or is steeper
  ///               than kLeastSine, every answer is unsure
  /// @param angleTolerance  rad, any
  /// @param cells  of the azimuth table: a multiple of 4, or 1
  RopeDirections(const std::vector<TVector3>& ropes, double angleTolerance,
                 eCrossings crossings, int cells);

  /// By how much the ropes' heights are widened, as angles above the horizon,
  /// rad: more than the error of a crossing in single precision, kSpaceError of
  /// CrossingBands.
  static constexpr double kHeightMargin = 0.025;

  /// Whether a rope blocks a crossing.
  ///
  /// @param x,y,z  finite and not all zero, x and y not both zero; mm
  eAnswer Judge(double x, double y, double z) const;

  /// As Judge, for a flattened crossing with an error of up to
  /// kAngleBandBounded.
  eAnswer JudgeBounded(double x, double y) const;

  const AzimuthTable& Table() const { return table_; }

  /// The ropes' heights lie between these sines of the angle above the horizon,
  /// widened by the tolerance and by kHeightMargin: beyond them nothing is
  /// blocked. (-2 and 2 if there is no such limit.)
  double LowestSine() const { return lowestSine_; }
  double HighestSine() const { return highestSine_; }

 private:
  /// The cosines above which a rope surely blocks, and below which it surely
  /// does not.
  struct CosineLimits {
    CosineLimits() = default;
    CosineLimits(double angleTolerance, double band);

    double surelyNear = 2.0;
    double surelyFar = -2.0;
  };

  eAnswer Judge(double x, double y, double z, const CosineLimits& limits) const;
  void SetHeightLimits(double angleTolerance);

  std::vector<TVector3> directions_;  // unit vectors
  CosineLimits limits_;
  CosineLimits boundedLimits_;
  double lowestSine_ = -2.0;
  double highestSine_ = 2.0;
  AzimuthTable table_;
};

}  // namespace ZARN::DU

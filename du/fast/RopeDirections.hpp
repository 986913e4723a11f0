#pragma once

#include <vector>

#include "TVector3.h"
#include "du/geometry/Answer.hpp"
#include "du/geometry/AzimuthTable.hpp"

namespace ZARN::DU {

/// The directions of ropes as seen from the centre, and how near in angle a
/// crossing must be to one of them to be blocked:
///
///     angleTolerance > crossing.Angle(rope)      for any rope
///
/// Without an arc cosine: the cosine of the angle is compared with that of the
/// tolerance, and what lies within kAngleBand and kCosineBand of the limit is
/// unsure. Before that, an AzimuthTable finds the few ropes that can be near,
/// and for crossings in the horizontal plane mostly the answer.
class RopeDirections {
 public:
  /// Which crossings are asked about.
  enum class eCrossings {
    kFlattened,  ///< with z = 0
    kInSpace     ///< anywhere
  };

  /// How near to the tolerance an angle is left open, rad: at least twice the
  /// error of a crossing found by algebra (CrossingBands), flattened or with
  /// its height.
  static constexpr double kAngleBand = 1e-9;
  static constexpr double kAngleBandInSpace = 1e-6;
  /// How near to the tolerance's cosine a cosine is left open. The formula's
  /// angle is right to 14 u in its cosine, u = 2^-53: scalar product and
  /// lengths 10, arc cosine 4 (it need not even fall from one double to the
  /// next). The products here have 10 roundings and the cosine of the tolerance
  /// one. This is 36 times their sum.
  static constexpr double kCosineBand = 1e-13;

  /// How right a rope's azimuths in the table are, rad.
  ///
  /// Flattened, a rope whose angle to the axis has the sine q blocks azimuths
  /// up to acos(cos(tolerance) / q). With u = 2^-53:
  ///
  /// - the formula's angle, near pi / 2 or less, is right to its last bit, 2 u,
  ///   and its cosine otherwise to 8 u q: over q, 2 u / q + 8 u;
  /// - the quotient here is right to 12 u;
  /// - an error e of a cosine moves its arc cosine by less than 1.1 sqrt(2 e),
  ///   the most where the arc cosine is 0.
  ///
  /// With q >= kLeastSine, e is 2.3e-10 and the azimuth right to 2.4e-5. In
  /// space the range is that of a tolerance widened by more than the angle's
  /// error, and holds for any q; it is itself right to 5e-8.
  static constexpr double kRangeError = 1e-4;
  /// Of the angle between a rope and the axis. Steeper ropes are left to the
  /// formula.
  static constexpr double kLeastSine = 1e-6;

  RopeDirections() = default;
  /// @param ropes  any; one of zero length, not finite, or steeper than
  ///               kLeastSine makes all unsure
  /// @param angleTolerance  rad, any
  /// @param cells  of the azimuth table: a multiple of 4, or 1
  RopeDirections(const std::vector<TVector3>& ropes, double angleTolerance,
                 eCrossings crossings, int cells);

  /// By how much the ropes' heights are widened, as angles above the horizon,
  /// rad: more than the error of a crossing in single precision, kSpaceError of
  /// CrossingBands.
  static constexpr double kHeightMargin = 0.025;

  /// What the ropes do to a crossing.
  ///
  /// @param x,y,z  finite and not all zero, x and y not both zero; mm
  eAnswer Judge(double x, double y, double z) const;

  const AzimuthTable& Table() const { return table_; }

  /// The ropes' heights lie within these sines of the angle above the horizon,
  /// widened by the tolerance and by kHeightMargin: beyond them nothing is
  /// blocked. (-2 and 2 where there is no such limit.)
  double LowestSine() const { return lowestSine_; }
  double HighestSine() const { return highestSine_; }

 private:
  void SetCosineLimits(double angleTolerance, eCrossings crossings);
  void SetHeightLimits(double angleTolerance);

  std::vector<TVector3> directions_;  // unit vectors
  double surelyNear_ = 2.0;           // cosines above it, of any rope
  double surelyFar_ = -2.0;           // cosines below it, of every rope
  double lowestSine_ = -2.0;
  double highestSine_ = 2.0;
  AzimuthTable table_;
};

}  // namespace ZARN::DU

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
/// tolerance. A crossing found by algebra (CylinderCrossing.hpp) is right to
/// 1.5e-10 of its distance, its height to 1.5e-7: what lies within 6 times that
/// angle of the limit is unsure. The arc cosine need not fall from one double
/// to the next, but its error, that of the cosine of the tolerance, and the few
/// roundings of either product are all below 1e-14 in the cosine; 10 times that
/// is added. Before that, an AzimuthTable finds the few ropes that can be near,
/// and for crossings in the horizontal plane mostly the answer.
class RopeDirections {
 public:
  /// Which crossings are asked about.
  enum class eCrossings {
    kFlattened,  ///< with z = 0
    kInSpace     ///< anywhere
  };

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

  /// Twice the largest error of a crossing's height in single precision, as the
  /// angle above the horizon, where the tangent to the crossing is below 100:
  /// 100 times that of its way, 1.1e-4 of its distance, and for the cosine 1.6
  /// % of the height itself; rad.
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
  void FindLimits(double angleTolerance, eCrossings crossings);
  void FindHeights(double angleTolerance);

  std::vector<TVector3> directions_;  // unit vectors
  double surelyNear_ = 2.0;           // cosines above it, of any rope
  double surelyFar_ = -2.0;           // cosines below it, of every rope
  double lowestSine_ = -2.0;
  double highestSine_ = 2.0;
  AzimuthTable table_;
};

}  // namespace ZARN::DU

#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "lightpath/RayBounds.hpp"
#include "lightpath/SweptAngle.hpp"

namespace ZARN::DU {

/// How much the swept angle at a t, its slope and the derivative of the slope
/// by cos(t) can differ between PMTs at several distances.
struct CurveSlack {
  double angle;
  double slope;
  double curve;
};

/// One ray of a RayCurve.
struct CurvePoint {
  double t = 0.0;
  double g = 0.0;
  // The derivatives of g by t.
  double slope = 0.0;
  double curve = 0.0;
  double third = 0.0;
  SweptAngle::Ray ray;
  bool isBeyond = false;  ///< a ray of the other family
};

/// Points of a curve in order of t, and the indexes of its folds among them.
/// Where the curve goes on beyond pi / 2, that t is there twice.
struct RayPoints {
  std::vector<CurvePoint> points;
  std::vector<std::size_t> folds;
};

/// The rays of a family, followed from the one through the centre.
///
/// G is the swept angle if it starts at 0, and pi minus it if it starts at pi.
/// If the event is where light grazes first, rays that start outwards and rays
/// that start inwards are one smooth curve: t then goes on beyond pi / 2, to
/// the other ray through the centre at pi.
class RayCurve {
 public:
  /// @param beyond  the family that continues this one; may be null
  RayCurve(const SweptAngle& rays, const SweptAngle* beyond, bool isOpposite);

  CurvePoint Central() const { return Point(0.0, rays_.Central(), false); }
  CurvePoint At(double t) const;
  double LastT() const;

  bool IsOpposite() const { return isOpposite_; }
  const SweptAngle& Rays() const { return rays_; }
  double OpticalLength(const CurvePoint& point) const;

  /// Bounds of the slope between two points, ordered by t.
  Range SlopesBetween(const CurvePoint& first, const CurvePoint& last) const;

  /// Follow the rays from the one through the centre to the last, and find
  /// where the slope is zero.
  ///
  /// @param slack  also of the PMTs at other distances
  /// @return nothing if the number of these folds, which must be the same for
  ///         all PMTs, cannot be proved
  std::optional<RayPoints> Follow(const CurveSlack& slack) const;

 private:
  CurvePoint Point(double t, const SweptAngle::Ray& ray, bool isBeyond) const;
  bool FollowFrom(const CurvePoint& from, const CurvePoint& last,
                  const CurveSlack& slack, int depth, RayPoints& found) const;
  CurvePoint FoldBetween(CurvePoint first, CurvePoint last) const;

  const SweptAngle& rays_;
  const SweptAngle* beyond_;
  bool isOpposite_;
};

}  // namespace ZARN::DU

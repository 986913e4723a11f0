#include "lightpath/RayCurve.hpp"

#include <algorithm>
#include <cmath>

#include "TMath.h"

namespace ZARN::DU {
namespace {

constexpr double kQuarter = 0.5 * TMath::Pi();

/// Steps in which each quarter turn of t is searched for folds, and how often a
/// step is halved.
constexpr int kSteps = 12;
constexpr int kMostHalvings = 7;

Range Widened(const Range& range, double slack) {
  return {range.Low - slack, range.High + slack};
}

}  // namespace

RayCurve::RayCurve(const SweptAngle& rays, const SweptAngle* beyond,
                   bool isOpposite)
    : rays_(rays), beyond_(beyond), isOpposite_(isOpposite) {}

double RayCurve::LastT() const {
  return beyond_ == nullptr ? kQuarter : TMath::Pi();
}

CurvePoint RayCurve::Point(double t, const SweptAngle::Ray& ray,
                           bool isBeyond) const {
  // Beyond pi / 2 the ray's own t decreases.
  const double even = isOpposite_ ? -1.0 : 1.0;
  const double odd = isBeyond ? -even : even;
  return {t,
          isOpposite_ ? TMath::Pi() - ray.Angle : ray.Angle,
          odd * ray.Slope,
          even * ray.Curve,
          odd * ray.Third,
          ray,
          isBeyond};
}

CurvePoint RayCurve::At(double t) const {
  if (t <= kQuarter || beyond_ == nullptr) return Point(t, rays_.At(t), false);
  return Point(t, beyond_->At(TMath::Pi() - t), true);
}

double RayCurve::OpticalLength(const CurvePoint& point) const {
  return (point.isBeyond ? *beyond_ : rays_).OpticalLength(point.ray);
}

Range RayCurve::SlopesBetween(const CurvePoint& first,
                              const CurvePoint& last) const {
  const bool isNegative = isOpposite_ != last.isBeyond;
  if (first.isBeyond == last.isBeyond) {
    const Range slopes = last.isBeyond ? DU::SlopesBetween(last.ray, first.ray)
                                       : DU::SlopesBetween(first.ray, last.ray);
    return isNegative ? Range{-slopes.High, -slopes.Low} : slopes;
  }
  const Range before =
      SlopesBetween(first, Point(kQuarter, rays_.At(kQuarter), false));
  const Range after =
      SlopesBetween(Point(kQuarter, beyond_->At(kQuarter), true), last);
  return {std::min(before.Low, after.Low), std::max(before.High, after.High)};
}

std::optional<RayPoints> RayCurve::Follow(const CurveSlack& slack) const {
  RayPoints found;
  constexpr std::size_t kUsual = 64;
  found.points.reserve(kUsual);
  found.points.push_back(Central());
  for (int step = 1; step <= kSteps; ++step) {
    const double t = kQuarter * step / kSteps;
    if (!FollowFrom(found.points.back(), Point(t, rays_.At(t), false), slack, 0,
                    found)) {
      return std::nullopt;
    }
  }
  if (beyond_ == nullptr) return found;
  found.points.push_back(Point(kQuarter, beyond_->At(kQuarter), true));
  for (int step = 1; step <= kSteps; ++step) {
    const double t = kQuarter * (1.0 + static_cast<double>(step) / kSteps);
    const CurvePoint next = step == kSteps
                                ? Point(TMath::Pi(), beyond_->Central(), true)
                                : Point(t, beyond_->At(TMath::Pi() - t), true);
    if (!FollowFrom(found.points.back(), next, slack, 0, found)) {
      return std::nullopt;
    }
  }
  return found;
}

/// Append the points after @p from up to @p last.
bool RayCurve::FollowFrom(const CurvePoint& from, const CurvePoint& last,
                          const CurveSlack& slack, int depth,
                          RayPoints& found) const {
  const CurvePoint first = from;  // appending moves the points
  if (Widened(SlopesBetween(first, last), slack.slope).IsSigned()) {
    found.points.push_back(last);
    return true;
  }
  const Range curves = last.isBeyond ? CurvesBetween(last.ray, first.ray)
                                     : CurvesBetween(first.ray, last.ray);
  // If the slope is monotonic, it has at most one zero.
  if (Widened(curves, slack.curve).IsSigned() &&
      std::min(std::abs(first.slope), std::abs(last.slope)) > slack.slope) {
    if ((first.slope > 0) != (last.slope > 0)) {
      found.folds.push_back(found.points.size());
      found.points.push_back(FoldBetween(first, last));
    }
    found.points.push_back(last);
    return true;
  }
  if (depth == kMostHalvings) return false;
  const CurvePoint middle = At(0.5 * (first.t + last.t));
  return FollowFrom(first, middle, slack, depth + 1, found) &&
         FollowFrom(middle, last, slack, depth + 1, found);
}

CurvePoint RayCurve::FoldBetween(CurvePoint first, CurvePoint last) const {
  constexpr double kExact = 1e-9;  // G is stationary: its error is the square
  CurvePoint at = first;
  while (std::abs(at.slope) > kExact * std::abs(at.curve) &&
         last.t - first.t > kExact) {
    const double t = at.curve != 0.0 ? at.t - at.slope / at.curve : first.t;
    at = At(t > first.t && t < last.t ? t : 0.5 * (first.t + last.t));
    ((at.slope > 0) == (first.slope > 0) ? first : last) = at;
  }
  return at;
}

}  // namespace ZARN::DU

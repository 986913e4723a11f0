#include "lightpath/SweptAngle.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ZARN::DU {
namespace {

/// The rotation applied @p times times, -2 to 2.
Rotor Repeated(const Rotor& turn, double times) {
  const Rotor once = times < 0 ? turn.Back() : turn;
  if (times == 0) return {};
  return std::abs(times) > 1 ? once * once : once;
}

/// Counts the sign changes of partial sums.
class SignChanges {
 public:
  void Add(double term) {
    sum_ += term;
    if (sum_ * last_ < 0) ++count_;
    if (sum_ != 0) last_ = sum_;
  }
  int Count() const { return count_; }

 private:
  double sum_ = 0.0;
  double last_ = 0.0;
  int count_ = 0;
};

/// From -pi to pi.
double AngleOf(const Rotor& turn) { return std::atan2(turn.Sine, turn.Cosine); }

}  // namespace

PerSite<double> ReachesOf(const ConcentricMedia& media, double eventRadius,
                          double pmtRadius) {
  const double inside = media.IndexIn(eMedium::kInnerAV);
  const double wall = media.IndexIn(eMedium::kAcrylic);
  const double water = media.IndexIn(eMedium::kWater);
  return {media.IndexIn(media.At(eventRadius)) * eventRadius,
          inside * media.InnerRadius,
          wall * media.InnerRadius,
          wall * media.OuterRadius,
          water * media.OuterRadius,
          water * pmtRadius};
}

SweptAngle::SweptAngle(const RayFamily& family, const PerSite<double>& reaches)
    : base_(family.Base),
      isBaseOdd_(std::cos(family.Base) < 0.0),
      startsInWater_(family.Type == kWaterThroughInnerAV ||
                     family.Type == kWaterThroughAV ||
                     family.Type == kWaterReflection),
      reaches_(reaches),
      highest_(std::numeric_limits<double>::infinity()) {
  for (std::size_t site = 0; site < reaches.size(); ++site) {
    turns_[site] = family.Turns[site];
    growing_[site] = std::max(turns_[site], 0.0);
    shrinking_[site] = std::max(-turns_[site], 0.0);
    if (turns_[site] != 0) highest_ = std::min(highest_, reaches[site]);
  }
  for (std::size_t site = 0; site < reaches.size(); ++site) {
    const double reach = reaches[site];
    const bool isOnTheWay = turns_[site] != 0;
    ratios_[site] = isOnTheWay ? highest_ / reach : 0.0;
    // 1 - ratio * ratio would lose the difference of two close reaches.
    rests_[site] =
        isOnTheWay ? (reach - highest_) / reach * (1.0 + ratios_[site]) : 1.0;
  }
  CountSigns();
}

void SweptAngle::CountSigns() {
  PerSite<std::size_t> byReach = {0, 1, 2, 3, 4, 5};
  for (std::size_t i = 1; i < byReach.size(); ++i) {
    for (std::size_t k = i;
         k > 0 && reaches_[byReach[k]] < reaches_[byReach[k - 1]]; --k) {
      std::swap(byReach[k], byReach[k - 1]);
    }
  }
  SignChanges ofSlope;
  SignChanges ofCurve;
  for (std::size_t i = 0; i < byReach.size();) {
    const double reach = reaches_[byReach[i]];
    double turns = 0.0;
    for (; i < byReach.size() && reaches_[byReach[i]] == reach; ++i) {
      turns += turns_[byReach[i]];
    }
    ofSlope.Add(turns);
    ofCurve.Add(turns * (reach - highest_) * (reach + highest_));
  }
  mostExtrema_ = ofSlope.Count();
  mostInflections_ = ofCurve.Count();
}

SweptAngle::Ray SweptAngle::Central() const {
  Ray ray;
  ray.Angle = base_;
  PerSite<double> curves = {};
  for (std::size_t site = 0; site < ratios_.size(); ++site) {
    curves[site] = ratios_[site] * rests_[site];
    ray.Cosines[site] = 1.0;
    ray.Sines[site] = 0.0;
  }
  AddUpSlopes(ray, ratios_, curves);
  ray.Third = -ray.CurveByCosine();
  return ray;
}

SweptAngle::Ray SweptAngle::At(double t) const {
  const double sine = std::sin(t);
  const double cosine = std::cos(t);
  Ray ray;
  ray.T = t;
  PerSite<double> slopes;  // of the angles to the radius, by t
  PerSite<double> curves;  // of the slopes, by cos(t)
  PerSite<double> thirds;
  for (std::size_t site = 0; site < ratios_.size(); ++site) {
    const double projected = ratios_[site] * cosine;
    const double across = ratios_[site] * sine;
    const double squared = rests_[site] + projected * projected;
    const double root = std::sqrt(squared);
    ray.Cosines[site] = root;
    ray.Sines[site] = across;
    slopes[site] = projected / root;
    curves[site] = ratios_[site] * rests_[site] / (squared * root);
    thirds[site] = curves[site] * (1.0 + 3.0 * across * across / squared);
  }
  AddUpSlopes(ray, slopes, curves);
  double third = 0.0;
  for (std::size_t site = 0; site < ratios_.size(); ++site) {
    third += turns_[site] * thirds[site];
  }
  ray.Curve = -sine * ray.CurveByCosine();
  ray.Third = -cosine * third;

  // Two factors, each of which stays between -pi and pi.
  const auto turnAt = [&](eSite site) {
    return Repeated(ray.AngleToRadius(site), turns_[IndexOf(site)]);
  };
  Rotor inWater = turnAt(eSite::kOuterFromWater) * turnAt(eSite::kPMT);
  Rotor inVessel =
      turnAt(eSite::kInnerFromInside) *
      (turnAt(eSite::kInnerFromWall) * turnAt(eSite::kOuterFromWall));
  Rotor& atStart = startsInWater_ ? inWater : inVessel;
  atStart = atStart * turnAt(eSite::kEvent);
  ray.Angle = base_ + AngleOf(inWater) + AngleOf(inVessel);
  return ray;
}

void SweptAngle::AddUpSlopes(Ray& ray, const PerSite<double>& slopes,
                             const PerSite<double>& curves) const {
  for (std::size_t site = 0; site < slopes.size(); ++site) {
    ray.Growing += growing_[site] * slopes[site];
    ray.Shrinking += shrinking_[site] * slopes[site];
    ray.GrowingCurve += growing_[site] * curves[site];
    ray.ShrinkingCurve += shrinking_[site] * curves[site];
  }
  ray.Slope = ray.Growing - ray.Shrinking;
}

double SweptAngle::OpticalLength(const Ray& ray) const {
  // From a sphere outwards, the optical length to the point of the line nearest
  // to the centre is reach times cosine; a segment is the difference of two of
  // these.
  double sum = 0.0;
  for (std::size_t site = 0; site < turns_.size(); ++site) {
    sum -= turns_[site] * reaches_[site] * ray.Cosines[site];
  }
  return sum;
}

}  // namespace ZARN::DU

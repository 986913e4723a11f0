#include "lightpath/RaySearch.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "TMath.h"
#include "lightpath/Householder.hpp"
#include "lightpath/RayBounds.hpp"
#include "lightpath/RayFamilies.hpp"

namespace ZARN::DU {
namespace {

using Ray = SweptAngle::Ray;

/// Limit of the rounding error of a swept angle, rad (some thirty operations on
/// numbers up to 2 pi; at 10 m it is 4e-11 mm).
constexpr double kZeroRounding = 4e-15;

enum class eWanted { kAll, kShortest };

/// Lower bound of a function between two points @p width apart, given its
/// values @p first and @p last there: its slope is at least slopes.Low and at
/// most slopes.High.
double LeastBetween(double first, double last, const Range& slopes,
                    double width) {
  return (slopes.High * first - slopes.Low * last +
          slopes.Low * slopes.High * width) /
         (slopes.High - slopes.Low);
}

/// Finds the rays of one family that sweep a given angle.
///
/// The range of t is divided until the swept angle is monotonic or convex or
/// concave in each piece. The signs at the ends of a piece then tell how many
/// solutions it has. Each solution is computed with derivatives, and kept
/// between two rays with only this solution between them.
template <class OnFound>
class FamilySearch {
 public:
  FamilySearch(const RayFamily& family, const PerSite<double>& reaches,
               double lowest, eWanted wanted, const OnFound& onFound)
      : family_(family),
        angle_(family, reaches),
        wanted_(wanted),
        onFound_(onFound) {
    if (lowest > angle_.Highest()) return;
    startsAtCentre_ = lowest == 0.0;
    first_ = startsAtCentre_ ? angle_.Central() : At(angle_.TOf(lowest));
    last_ = At(0.5 * TMath::Pi());
    isEmpty_ = false;
  }

  void Find(const Sweep& target) {
    if (isEmpty_) return;
    target_ = target;
    // One family begins where another ends: rounding must not lose the ray
    // between them.
    const bool isFirst =
        !startsAtCentre_ && std::abs(Miss(first_)) <= kZeroRounding;
    const bool isLast = std::abs(Miss(last_)) <= kZeroRounding;
    if (isFirst) Tell(first_);
    if (isLast) Tell(last_);
    Search(first_, last_);
  }

  /// Report the last ray of the family as the solution.
  void TakeLast() { Tell(last_); }

  int Evaluations() const { return evaluations_; }

 private:
  Ray At(double t) {
    ++evaluations_;
    return angle_.At(t);
  }
  double Miss(const Ray& ray) const { return ray.Angle - target_.Angle; }
  void Tell(const Ray& ray) {
    onFound_(JoiningRay{&family_, target_, angle_.OpticalLength(ray), ray});
  }

  bool IsMonotonic(const Ray& first, const Ray& last) const {
    return SlopesBetween(first, last).IsSigned() || angle_.MostExtrema() == 0 ||
           (angle_.MostExtrema() == 1 && first.Slope * last.Slope > 0);
  }
  bool BendsOneWay(const Ray& first, const Ray& last) const {
    return CurvesBetween(first, last).IsSigned() ||
           angle_.MostInflections() == 0 ||
           (angle_.MostInflections() == 1 &&
            first.CurveByCosine() * last.CurveByCosine() > 0);
  }

  void Search(const Ray& first, const Ray& last);
  void SearchDip(Ray first, Ray last);
  void Solve(Ray first, Ray last);

  const RayFamily& family_;
  SweptAngle angle_;
  eWanted wanted_;
  const OnFound& onFound_;
  bool isEmpty_ = true;
  bool startsAtCentre_ = false;
  Ray first_;
  Ray last_;
  Sweep target_;
  int evaluations_ = 0;
};

bool AreNeighbours(const Ray& first, const Ray& last) {
  return last.T - first.T <= 2 * std::numeric_limits<double>::epsilon();
}

/// @p t if it is between two rays, else the midpoint.
double Between(const Ray& first, const Ray& last, double t) {
  return t > first.T && t < last.T ? t : 0.5 * (first.T + last.T);
}

/// A value of a function of t with its derivative.
struct Tangent {
  double T;
  double Value;
  double Derivative;
};

/// No usable guess: Between then bisects.
constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();

/// Estimate of a zero of a function: the cubic through two samples that gives t
/// as a function of the value. The result may be any number.
double InverseCubic(const Tangent& a, const Tangent& b) {
  if (a.Derivative == 0 || b.Derivative == 0) return kNowhere;
  const double rise = b.Value - a.Value;
  const double share = -a.Value / rise;
  const double rest = 1 - share;
  return rest * rest * (1 + 2 * share) * a.T +
         share * share * (3 - 2 * share) * b.T +
         rise * share * rest * (rest / a.Derivative - share / b.Derivative);
}

template <class OnFound>
void FamilySearch<OnFound>::Search(const Ray& first, const Ray& last) {
  const double before = Miss(first);
  const double after = Miss(last);
  const bool changesSign = (before < 0) != (after < 0);
  if (IsMonotonic(first, last)) {
    if (changesSign) Solve(first, last);
    return;
  }
  if (!changesSign) {
    const double sign = before < 0 ? -1.0 : 1.0;
    const Range slopes = SlopesBetween(first, last);
    const Range towards = sign > 0 ? slopes : Range{-slopes.High, -slopes.Low};
    if (LeastBetween(sign * before, sign * after, towards, last.T - first.T) >
        kZeroRounding) {
      return;
    }
  }
  if (BendsOneWay(first, last)) {
    const double bend = -(first.CurveByCosine() + last.CurveByCosine());
    if (changesSign) {
      Solve(first, last);
    } else if ((bend > 0) == (before > 0)) {
      SearchDip(first, last);
    }
    return;
  }
  if (AreNeighbours(first, last)) return;
  const Ray middle = At(0.5 * (first.T + last.T));
  Search(first, middle);
  Search(middle, last);
}

/// The swept angle is convex and at both ends above the target, or concave and
/// below: it reaches the target twice, once or never.
template <class OnFound>
void FamilySearch<OnFound>::SearchDip(Ray first, Ray last) {
  const double sign = Miss(first) < 0 ? -1.0 : 1.0;
  int probes = 0;
  while (sign * first.Slope < 0 && sign * last.Slope > 0) {
    const Range tangents = {sign * first.Slope, sign * last.Slope};
    if (LeastBetween(sign * Miss(first), sign * Miss(last), tangents,
                     last.T - first.T) > kZeroRounding) {
      return;
    }
    if (AreNeighbours(first, last)) break;
    // Bisect sometimes, so that both ends move.
    const bool isHalfway = ++probes % 4 == 0;
    const double turning = InverseCubic({first.T, first.Slope, first.Curve},
                                        {last.T, last.Slope, last.Curve});
    const Ray middle = At(Between(first, last, isHalfway ? kNowhere : turning));
    if (sign * Miss(middle) < 0) {
      // d(optical length) = invariant * d(swept angle). So of two solutions
      // around a minimum of the angle the first is shorter, around a maximum
      // the last.
      if (wanted_ == eWanted::kAll || sign > 0) Solve(first, middle);
      if (wanted_ == eWanted::kAll || sign < 0) Solve(middle, last);
      return;
    }
    (sign * middle.Slope < 0 ? first : last) = middle;
  }
  const Ray& nearest = sign * Miss(first) < sign * Miss(last) ? first : last;
  if (std::abs(Miss(nearest)) <= kZeroRounding) Tell(nearest);
}

/// Estimate of the zero of the miss.
double NextFrom(const Ray& ray, double miss) {
  return NextByHouseholder(ray.T, miss, ray.Slope, ray.Curve, ray.Third);
}

template <class OnFound>
void FamilySearch<OnFound>::Solve(Ray first, Ray last) {
  const double rise = Miss(last) - Miss(first);
  double t = 0.0;
  if (first.Slope * rise > 0 && last.Slope * rise > 0) {
    t = InverseCubic({first.T, Miss(first), first.Slope},
                     {last.T, Miss(last), last.Slope});
  } else {
    const Ray& steeper =
        std::abs(first.Slope) > std::abs(last.Slope) ? first : last;
    t = NextFrom(steeper, Miss(steeper));
  }
  double step = last.T - first.T;
  while (true) {
    const Ray ray = At(Between(first, last, t));
    const double miss = Miss(ray);
    if (std::abs(miss) <= kZeroRounding || AreNeighbours(first, last)) {
      Tell(ray);
      return;
    }
    ((miss < 0) == (Miss(first) < 0) ? first : last) = ray;
    t = NextFrom(ray, miss);
    // Bisect if the steps do not shrink quickly.
    const double stepBefore = step;
    step = std::abs(t - ray.T);
    if (!(step < 0.5 * stepBefore)) {
      t = 0.5 * (first.T + last.T);
      step = last.T - first.T;
    }
  }
}

template <class OnFound>
int SearchFamily(const RayFamily& family, const PerSite<double>& reaches,
                 double angle, eWanted wanted, const OnFound& onFound) {
  const double lowest =
      StaysInWall(family) ? reaches[IndexOf(eSite::kInnerFromWall)] : 0.0;
  FamilySearch<OnFound> search(family, reaches, lowest, wanted, onFound);
  search.Find({angle, false});
  search.Find({2 * TMath::Pi() - angle, true});
  search.Find({2 * TMath::Pi() + angle, false});
  return search.Evaluations();
}

template <class OnFound>
int SearchAll(const ConcentricMedia& media, const PathEnds& ends,
              eWanted wanted, const OnFound& onFound) {
  const PerSite<double> reaches =
      ReachesOf(media, ends.EventRadius, ends.PMTRadius);
  int evaluations = 0;
  const auto search = [&](const auto&... families) {
    ((evaluations +=
      SearchFamily(families, reaches, ends.Angle, wanted, onFound)),
     ...);
  };
  switch (media.At(ends.EventRadius)) {
    case eMedium::kInnerAV:
      search(Families::kOutwardFromInside, Families::kInwardFromInside);
      break;
    case eMedium::kAcrylic:
      search(Families::kOutwardFromWall, Families::kAlongWallFromWall,
             Families::kInwardFromWall);
      break;
    case eMedium::kWater:
      search(Families::kAlongWallFromWater, Families::kInwardFromWater);
      break;
  }
  return evaluations;
}

}  // namespace

ShortestRay FindShortestRay(const ConcentricMedia& media,
                            const PathEnds& ends) {
  ShortestRay shortest;
  shortest.Evaluations =
      SearchAll(media, ends, eWanted::kShortest, [&](const JoiningRay& found) {
        JoiningRay& best = shortest.Joining;
        if (best.Family == nullptr ||
            found.OpticalLength < best.OpticalLength) {
          best = found;
        }
      });
  return shortest;
}

std::vector<JoiningRay> FindAllRays(const ConcentricMedia& media,
                                    const PathEnds& ends) {
  std::vector<JoiningRay> all;
  SearchAll(media, ends, eWanted::kAll,
            [&](const JoiningRay& found) { all.push_back(found); });
  return all;
}

JoiningRay FindReflectedRay(const ConcentricMedia& media,
                            const PathEnds& ends) {
  JoiningRay reflected;
  const auto keep = [&](const JoiningRay& found) { reflected = found; };
  FamilySearch search(Families::kReflected,
                      ReachesOf(media, ends.EventRadius, ends.PMTRadius), 0.0,
                      eWanted::kAll, keep);
  search.Find({ends.Angle, false});
  // The straight line touches the vessel, exactly or within rounding.
  if (reflected.Family == nullptr) search.TakeLast();
  return reflected;
}

}  // namespace ZARN::DU

#include "lightpath/RayRange.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "TMath.h"

namespace ZARN::DU {
namespace {

/// Whether the turns for which the kernels are compiled are those of a family.
constexpr bool HasTurns(const RayFamily& family, eRayFamily compiled) {
  for (std::size_t site = 0; site < kNearSites; ++site) {
    if (family.Turns[site] !=
        kNearTurns[static_cast<std::size_t>(compiled)][site]) {
      return false;
    }
  }
  return family.Turns[IndexOf(eSite::kPMT)] == -1;
}
static_assert(HasTurns(Families::kOutwardFromInside,
                       eRayFamily::kOutwardJoined));
static_assert(HasTurns(Families::kOutwardFromInside,
                       eRayFamily::kOutwardFromInside));
static_assert(HasTurns(Families::kInwardFromInside,
                       eRayFamily::kInwardFromInside));
static_assert(HasTurns(Families::kOutwardFromWall,
                       eRayFamily::kOutwardFromWall));
static_assert(HasTurns(Families::kInwardFromWall, eRayFamily::kInwardFromWall));
static_assert(HasTurns(Families::kInwardFromWater,
                       eRayFamily::kInwardFromWater));
static_assert(HasTurns(Families::kReflected, eRayFamily::kReflected));

/// H of one ray with its derivatives by the table's coordinate.
struct Sample {
  double y;
  double place;
  double value;
  double first;
  double second;
  bool hasSecond;
};

/// The coordinate of a table: the cosine y of G, or the root of its distance
/// from the fold at which the piece ends.
class Coordinate {
 public:
  Coordinate(const RayPiece& piece, double lastG)
      : isFolded_(piece.isFolded),
        fold_(isFolded_ ? std::cos(piece.End().g) : -1.0),
        begin_(Of(std::max(std::cos(lastG), fold_))),
        end_(Of(1.0)) {}

  double Of(double y) const {
    return isFolded_ ? std::sqrt(std::max(y - fold_, 0.0)) : y;
  }
  double YOf(double place) const {
    return isFolded_ ? fold_ + place * place : place;
  }
  bool IsFolded() const { return isFolded_; }
  double Fold() const { return fold_; }
  double Begin() const { return begin_; }  ///< at the last G
  double End() const { return end_; }      ///< at the centre

 private:
  bool isFolded_;
  double fold_;
  double begin_;
  double end_;
};

/// The polynomial between two samples that has their values and derivatives.
class Quintic {
 public:
  Quintic(const Sample& from, const Sample& to)
      : begin_(from.place), width_(to.place - from.place) {
    a_[0] = from.value;
    a_[1] = width_ * from.first;
    a_[2] = 0.5 * width_ * width_ * from.second;
    double rest = to.value - a_[0] - a_[1];
    double slope = width_ * to.first - a_[1];
    double curve = width_ * width_ * to.second;
    // A missing second derivative is that of the polynomial of degree 4.
    if (!from.hasSecond) a_[2] = 6.0 * rest - 3.0 * slope + 0.5 * curve;
    rest -= a_[2];
    slope -= 2.0 * a_[2];
    curve -= 2.0 * a_[2];
    if (!to.hasSecond) curve = 6.0 * slope - 12.0 * rest;
    a_[3] = 10.0 * rest - 4.0 * slope + 0.5 * curve;
    a_[4] = -15.0 * rest + 7.0 * slope - curve;
    a_[5] = 6.0 * rest - 3.0 * slope + 0.5 * curve;
  }

  double ValueAt(double place) const {
    const double s = (place - begin_) / width_;
    return a_[0] +
           s * (a_[1] + s * (a_[2] + s * (a_[3] + s * (a_[4] + s * a_[5]))));
  }
  double DerivativeAt(double place) const {
    const double s = (place - begin_) / width_;
    const double rising = 3.0 * a_[3] + s * (4.0 * a_[4] + s * 5.0 * a_[5]);
    return (a_[1] + s * (2.0 * a_[2] + s * rising)) / width_;
  }

 private:
  double begin_;
  double width_;
  std::array<double, 6> a_;
};

/// H and its derivative by y at the centre. With the first and third
/// derivatives s and k of G there, t = G/s - k G^3 / (6 s^4) + ..., and
/// tan(a/2) = a/2 + a^3/24 + ...
Sample CentralSample(const CurvePoint& central) {
  const double s = central.slope;
  const double byG2 = -central.third / (6.0 * s * s * s * s) +
                      (1.0 / (s * s * s) - 1.0 / s) / 12.0;
  // G^2 = 2 (1 - y) + ...
  return {1.0, 0.0, 1.0 / s, -2.0 * byG2, 0.0, false};
}

/// H and its derivatives by y between both rays through the centre.
Sample InnerSample(const CurvePoint& point) {
  const double sineT = std::sin(point.t);
  const double cosT = std::cos(point.t);
  const double sineG = std::sin(point.g);
  const double y = std::cos(point.g);
  const double inverseT = 1.0 / sineT;
  const double inverseG = 1.0 / sineG;
  // The derivatives of t and of log(H) by G.
  const double t1 = 1.0 / point.slope;
  const double t2 = -point.curve * t1 * t1 * t1;
  const double ratio = t1 * inverseT;
  const double log1 = ratio - inverseG;
  const double log2 =
      t2 * inverseT - ratio * ratio * cosT + y * inverseG * inverseG;
  // tan(a / 2) = sin(a) / (1 + cos(a))
  const double value = sineT * (1.0 + y) / ((1.0 + cosT) * sineG);
  const double byG = value * log1;
  const double byG2 = value * (log2 + log1 * log1);
  return {y,
          0.0,
          value,
          -byG * inverseG,
          (byG2 - byG * y * inverseG) * inverseG * inverseG,
          true};
}

/// H at the fold that ends a piece, and its derivative by the root of y - fold:
/// G is a parabola of t there.
Sample FoldSample(const CurvePoint& fold) {
  const double value = std::tan(0.5 * fold.t) / std::tan(0.5 * fold.g);
  const double byPlace =
      -1.0 / std::sqrt(0.5 * std::sin(fold.g) * std::abs(fold.curve));
  return {std::cos(fold.g),
          0.0,
          value,
          value * byPlace / std::sin(fold.t),
          0.0,
          false};
}

/// Makes the cells of a piece.
class CellMaker {
 public:
  /// @param lastG  where the cells end
  CellMaker(const RayPiece& piece, double lastG, int count)
      : piece_(piece),
        coordinate_(piece, lastG),
        count_(count),
        step_((coordinate_.End() - coordinate_.Begin()) / count) {
    for (auto i = piece.points.rbegin(); i != piece.points.rend(); ++i) {
      Append(*i);
    }
  }

  RayRange Make() const;

 private:
  void Append(const CurvePoint& point);
  Sample SampleAt(const CurvePoint& point) const;
  void SetCubics(std::vector<RayCell>& cells) const;
  void SetBounds(std::vector<RayCell>& cells) const;
  double PlaceOf(std::size_t node) const {
    return coordinate_.Begin() + static_cast<double>(node) * step_;
  }

  const RayPiece& piece_;
  Coordinate coordinate_;
  int count_;
  double step_;
  // In order of the coordinate, from the end to the centre.
  std::vector<CurvePoint> points_;
  std::vector<Sample> samples_;
};

/// Append a point, and points before it if the last one is far away. Points are
/// denser near a fold, where slopes grow from zero.
void CellMaker::Append(const CurvePoint& point) {
  constexpr double kMostCells = 4.0;
  constexpr double kLeastTurn = 1e-3;
  const Sample sample = SampleAt(point);
  if (!points_.empty()) {
    const CurvePoint last = points_.back();
    const bool isUsed = sample.place > coordinate_.Begin();
    const double widest =
        coordinate_.IsFolded()
            ? std::clamp(0.25 * sample.place, step_, kMostCells * step_)
            : kMostCells * step_;
    if (isUsed && sample.place - samples_.back().place > widest &&
        last.t - point.t > kLeastTurn) {
      Append(piece_.curve.At(0.5 * (last.t + point.t)));
      Append(point);
      return;
    }
  }
  points_.push_back(point);
  samples_.push_back(sample);
}

Sample CellMaker::SampleAt(const CurvePoint& point) const {
  if (piece_.isFolded && point.t == piece_.End().t) return FoldSample(point);
  Sample sample = {};
  if (point.t == 0.0) {
    sample = CentralSample(point);
  } else if (point.t >= TMath::Pi()) {
    // The other ray through the centre: there 1 / H is the H of that side.
    const Sample other = CentralSample(point);
    sample = {-1.0,
              0.0,
              1.0 / other.value,
              other.first / (other.value * other.value),
              0.0,
              false};
  } else {
    sample = InnerSample(point);
  }
  sample.place = coordinate_.Of(sample.y);
  if (coordinate_.IsFolded()) {
    const double place = sample.place;
    sample.second = 2.0 * sample.first + 4.0 * place * place * sample.second;
    sample.first *= 2.0 * place;
  }
  return sample;
}

void CellMaker::SetCubics(std::vector<RayCell>& cells) const {
  std::size_t at = 0;
  Quintic between(samples_[0], samples_[1]);
  double value = 0.0;
  double slope = 0.0;
  for (std::size_t node = 0; node <= cells.size(); ++node) {
    const double place = PlaceOf(node);
    // Where both families meet, a sample is there twice.
    while (at + 2 < samples_.size() && (samples_[at + 1].place < place ||
                                        points_[at + 1].t == points_[at].t)) {
      ++at;
      between = Quintic(samples_[at], samples_[at + 1]);
    }
    const double nextValue = between.ValueAt(place);
    const double nextSlope = step_ * between.DerivativeAt(place);
    if (node > 0) {
      RayCell& cell = cells[node - 1];
      const double rise = nextValue - value;
      cell.h0 = static_cast<float>(value);
      cell.h1 = static_cast<float>(slope);
      cell.h2 = static_cast<float>(3.0 * rise - 2.0 * slope - nextSlope);
      cell.h3 = static_cast<float>(slope + nextSlope - 2.0 * rise);
    }
    value = nextValue;
    slope = nextSlope;
  }
}

/// Bounds of the inverse slope that hold wherever a ray to a PMT of the cell
/// can be, and its estimate.
///
/// The ray of a PMT at another distance is that of a G that differs by up to
/// the slack, and so does the estimate's by up to kWidest. So the bounds are
/// those of all points within this distance; that of their y is smaller. (Three
/// times the slack: beyond a fold, G could come back by twice the slack.) The
/// last t ends the range: the kernel does not trust an estimate beyond it.
void CellMaker::SetBounds(std::vector<RayCell>& cells) const {
  constexpr double kWidest = 2.0 * kLargestMiss;
  const double slack = piece_.slack.slope;
  const double reach = 3.0 * piece_.slack.angle + kWidest;
  std::vector<Range> slopes(points_.size() - 1);
  for (std::size_t i = 0; i < slopes.size(); ++i) {
    const Range range =
        points_[i].t == points_[i + 1].t
            ? Range{points_[i].slope, points_[i].slope}
            : piece_.curve.SlopesBetween(points_[i + 1], points_[i]);
    slopes[i] = {range.Low - slack, range.High + slack};
  }
  std::size_t begin = 0;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const double low = coordinate_.YOf(PlaceOf(i)) - reach;
    const double high = coordinate_.YOf(PlaceOf(i + 1)) + reach;
    while (begin + 1 < slopes.size() && samples_[begin + 1].y < low) ++begin;
    Range range = slopes[begin];
    for (std::size_t k = begin + 1; k < slopes.size() && samples_[k].y <= high;
         ++k) {
      range.Low = std::min(range.Low, slopes[k].Low);
      range.High = std::max(range.High, slopes[k].High);
    }
    if (range.Low > 0.0) {
      const double least = 1.0 / range.High;
      const double most = 1.0 / range.Low;
      // The middle and the spread are each rounded by half of this at most.
      constexpr double kRounding = std::numeric_limits<float>::epsilon();
      cells[i].inverseSlope = static_cast<float>(0.5 * (least + most));
      cells[i].spread =
          static_cast<float>(0.5 * (most - least) + kRounding * most);
    } else {
      cells[i].inverseSlope = 0.0F;
      cells[i].spread = std::numeric_limits<float>::infinity();
    }
  }
}

RayRange CellMaker::Make() const {
  RayRange range;
  range.type = FamilyOf(piece_.family).Type;
  range.cells.resize(static_cast<std::size_t>(count_));
  SetCubics(range.cells);
  SetBounds(range.cells);

  const SweptAngle& rays = piece_.curve.Rays();
  RayBranch& branch = range.branch;
  branch.family = piece_.family;
  branch.sense = piece_.curve.IsOpposite() ? -1.0 : 1.0;
  branch.isFolded = coordinate_.IsFolded();
  branch.fold = coordinate_.Fold();
  branch.first = coordinate_.Begin();
  branch.scale = 1.0 / step_;
  branch.count = count_;
  branch.cells = range.cells.data();
  branch.leastCosine =
      piece_.End().t >= TMath::Pi() ? -2.0 : std::cos(piece_.End().t);
  branch.sign = rays.IsBaseOdd() ? -1.0 : 1.0;
  for (std::size_t site = 0; site < kNearSites; ++site) {
    branch.ratios[site] = rays.Ratios()[site];
    branch.rests[site] = rays.Rests()[site];
  }
  branch.highest = rays.Ratios()[IndexOf(eSite::kPMT)] * piece_.pmtRadius;
  return range;
}

}  // namespace

const RayFamily& FamilyOf(eRayFamily family) {
  switch (family) {
    case eRayFamily::kOutwardJoined:
    case eRayFamily::kOutwardFromInside:
      return Families::kOutwardFromInside;
    case eRayFamily::kInwardFromInside:
      return Families::kInwardFromInside;
    case eRayFamily::kOutwardFromWall:
      return Families::kOutwardFromWall;
    case eRayFamily::kInwardFromWall:
      return Families::kInwardFromWall;
    case eRayFamily::kInwardFromWater:
      return Families::kInwardFromWater;
    case eRayFamily::kReflected:
      break;
  }
  return Families::kReflected;
}

RayRange MakeRayRange(const RayPiece& piece, double lastG, int count) {
  return CellMaker(piece, lastG, count).Make();
}

}  // namespace ZARN::DU

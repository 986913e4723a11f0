#include "lightpath/RayTable.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "TMath.h"
#include "lightpath/RayCurve.hpp"
#include "lightpath/RayFamilies.hpp"

namespace ZARN::DU {
namespace {

constexpr double kPi = TMath::Pi();

/// Directions so near to the end of a range are left open, rad: by far more
/// than the rounding of the angles.
constexpr double kMargin = 1e-6;

/// An event at the centre is as good as one that is this far away, mm.
constexpr double kNearestEvent = 1e-90;

}  // namespace

/// A range of PMT distances with the reach of each.
class RayTable::Reaches {
 public:
  Reaches(const ConcentricMedia& media, double eventRadius,
          const PMTRadii& pmts)
      : media_(media),
        pmts_(pmts),
        sites_(ReachesOf(media, eventRadius, pmts.middle)) {}

  const PerSite<double>& Sites() const { return sites_; }

  /// By how much rays that graze at @p highest differ. The angle at the PMT is
  /// arcsin(ratio sin(t)), ratio = highest / reach. Its derivative by the ratio
  /// is at most 1 / sqrt(1 - ratio^2), that of its slope by t at most the third
  /// power of that, and that of the slope's derivative by cos(t) at most 4
  /// times the fifth power.
  CurveSlack SlackOf(double highest) const {
    const double index = media_.IndexIn(eMedium::kWater);
    const auto ratio = [&](double radius) {
      return highest / (index * radius);
    };
    const double largest = ratio(pmts_.lowest);
    const double middle = ratio(pmts_.middle);
    const double most =
        std::max(largest - middle, middle - ratio(pmts_.highest));
    const double growth = 1.0 / std::sqrt((1.0 - largest) * (1.0 + largest));
    const double cube = growth * growth * growth;
    return {most * growth, most * cube, 4.0 * most * cube * growth * growth};
  }

  const PMTRadii& Radii() const { return pmts_; }

  /// By how much an optical length can differ.
  double LengthSlack() const {
    return media_.IndexIn(eMedium::kWater) *
           std::max(pmts_.highest - pmts_.middle, pmts_.middle - pmts_.lowest);
  }

 private:
  const ConcentricMedia& media_;
  PMTRadii pmts_;
  PerSite<double> sites_;
};

/// The rays from the one through the centre up to the last one that is used.
struct RayTable::Piece {
  RayCurve curve;
  eRayFamily family;
  CurveSlack slack;
  double pmtRadius;
  std::vector<CurvePoint> points;  // from the centre to the end
  bool isFolded;                   // at the end

  const CurvePoint& End() const { return points.back(); }
};

namespace {

using Piece = RayTable::Piece;
using Reaches = RayTable::Reaches;

const RayFamily& FamilyOf(eRayFamily family) {
  switch (family) {
    case eRayFamily::kOutwardJoined:
    case eRayFamily::kOutwardFromInside:
      return kOutwardFromInside;
    case eRayFamily::kInwardFromInside:
      return kInwardFromInside;
    case eRayFamily::kOutwardFromWall:
      return kOutwardFromWall;
    case eRayFamily::kInwardFromWall:
      return kInwardFromWall;
    case eRayFamily::kInwardFromWater:
      return kInwardFromWater;
    case eRayFamily::kReflected:
      break;
  }
  return kReflected;
}

/// The estimate of the t at which G has a value, from three derivatives
/// (Householder's method of order 3).
double NextFrom(const CurvePoint& point, double miss) {
  const double squared = point.slope * point.slope;
  const double divisor = 6 * point.slope * (squared - miss * point.curve) +
                         miss * miss * point.third;
  return point.t - 3 * miss * (2 * squared - miss * point.curve) / divisor;
}

/// The point of a piece with a value of G, starting the search from another
/// one. It ends within kMargin^2 of that value or, at a fold, as near as
/// possible.
CurvePoint PointAt(const Piece& piece, double g, const CurvePoint& start) {
  constexpr double kNear = 1e-8;
  constexpr int kMostSteps = 60;
  double first = 0.0;
  double last = piece.End().t;
  CurvePoint at = start;
  for (int step = 0; step < kMostSteps; ++step) {
    const double miss = at.g - g;
    if (std::abs(miss) <= kNear && at.t <= last) return at;
    (miss < 0.0 ? first : last) = std::clamp(at.t, first, last);
    double t = NextFrom(at, miss);
    // Near a fold G is a parabola.
    if (!(t > first && t < last) && piece.isFolded) {
      t = piece.End().t - (piece.End().t - at.t) *
                              std::sqrt(std::max(piece.End().g - g, 0.0) /
                                        std::max(piece.End().g - at.g, 1e-300));
    }
    if (!(t > first && t < last)) t = 0.5 * (first + last);
    at = piece.curve.At(t);
  }
  return at;
}

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
  Coordinate(const Piece& piece, double lastG)
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
  const double halfT = std::tan(0.5 * point.t);
  const double halfG = std::tan(0.5 * point.g);
  const double sineT = 2.0 * halfT / (1.0 + halfT * halfT);
  const double sineG = 2.0 * halfG / (1.0 + halfG * halfG);
  const double cosT = (1.0 - halfT * halfT) / (1.0 + halfT * halfT);
  const double y = (1.0 - halfG * halfG) / (1.0 + halfG * halfG);
  // The derivatives of t and of log(H) by G.
  const double t1 = 1.0 / point.slope;
  const double t2 = -point.curve * t1 * t1 * t1;
  const double log1 = t1 / sineT - 1.0 / sineG;
  const double log2 =
      t2 / sineT - t1 * t1 * cosT / (sineT * sineT) + y / (sineG * sineG);
  const double value = halfT / halfG;
  const double byG = value * log1;
  const double byG2 = value * (log2 + log1 * log1);
  return {
      y,   0.0, value, -byG / sineG, (byG2 - byG * y / sineG) / (sineG * sineG),
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
  CellMaker(const Piece& piece, double lastG, int count)
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

  const Piece& piece_;
  Coordinate coordinate_;
  int count_;
  double step_;
  // In order of the coordinate, from the end to the centre.
  std::vector<CurvePoint> points_;
  std::vector<Sample> samples_;
};

/// Append a point, and points before it if the last one is far away.
void CellMaker::Append(const CurvePoint& point) {
  constexpr double kMostCells = 4.0;
  constexpr double kLeastTurn = 1e-3;
  const Sample sample = SampleAt(point);
  if (!points_.empty()) {
    const CurvePoint last = points_.back();
    const bool isUsed = sample.place > coordinate_.Begin();
    if (isUsed && sample.place - samples_.back().place > kMostCells * step_ &&
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
  } else if (point.t >= kPi) {
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
  double value = 0.0;
  double slope = 0.0;
  for (std::size_t node = 0; node <= cells.size(); ++node) {
    const double place = PlaceOf(node);
    // Where both families meet, a sample is there twice.
    while (at + 2 < samples_.size() && (samples_[at + 1].place < place ||
                                        points_[at + 1].t == points_[at].t)) {
      ++at;
    }
    const Quintic between(samples_[at], samples_[at + 1]);
    const double nextValue = between.ValueAt(place);
    const double nextSlope = step_ * between.DerivativeAt(place);
    if (node > 0) {
      RayCell& cell = cells[node - 1];
      const double rise = nextValue - value;
      cell.h0 = value;
      cell.h1 = slope;
      cell.h2 = 3.0 * rise - 2.0 * slope - nextSlope;
      cell.h3 = slope + nextSlope - 2.0 * rise;
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
  constexpr double kWidest = 2e-5;  // larger than kLargestMiss
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
      cells[i].inverseSlope = 0.5 * (least + most);
      cells[i].spread = 0.5 * (most - least);
    } else {
      cells[i].inverseSlope = 0.0;
      cells[i].spread = std::numeric_limits<double>::infinity();
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
  branch.leastCosine = piece_.End().t >= kPi ? -2.0 : std::cos(piece_.End().t);
  branch.sign = rays.IsBaseOdd() ? -1.0 : 1.0;
  for (std::size_t site = 0; site < kNearSites; ++site) {
    branch.ratios[site] = rays.Ratios()[site];
    branch.rests[site] = rays.Rests()[site];
  }
  branch.highest = rays.Ratios()[IndexOf(eSite::kPMT)] * piece_.pmtRadius;
  return range;
}

/// The families from one event to one distance, as curves.
struct Curves {
  SweptAngle outward;
  SweptAngle inward;
  bool areJoined;  // the outward one goes on as the inward one
  RayCurve near;
  RayCurve far;

  Curves(const Curves&) = delete;
  Curves& operator=(const Curves&) = delete;
  Curves(eRayFamily nearFamily, eRayFamily farFamily,
         const PerSite<double>& reaches)
      : outward(FamilyOf(nearFamily), reaches),
        inward(FamilyOf(farFamily), reaches),
        areJoined(nearFamily == eRayFamily::kOutwardFromInside &&
                  outward.Highest() == reaches[IndexOf(eSite::kEvent)]),
        near(outward, areJoined ? &inward : nullptr, false),
        far(inward, nullptr, true) {}
};

/// A swept angle, with the error of its place.
struct Meeting {
  double angle;
  double margin;
};

/// The swept angle at which two overlapping pieces are equally long.
///
/// d(optical length) = invariant * d(swept angle). Where the invariants of the
/// near piece are larger than those of the far one, the difference of their
/// lengths grows with the angle, and is zero at most once.
std::optional<Meeting> MeetingOf(const Piece& near, const Piece& far,
                                 double lengthSlack) {
  const double first = kPi - far.End().g;
  const double last = near.End().g;
  CurvePoint onNear = PointAt(near, first, near.curve.Central());
  CurvePoint onFar = far.End();
  const double highest = near.curve.Rays().Highest();
  const double leastNear =
      highest * std::min(std::sin(onNear.t), std::sin(near.End().t));
  const double mostFar = far.curve.Rays().Highest() * std::sin(far.End().t);
  const double least = leastNear - mostFar;
  if (!(least > 1e-3 * highest) || far.End().t > 0.5 * kPi) return std::nullopt;
  const auto difference = [&] {
    return near.curve.OpticalLength(onNear) - far.curve.OpticalLength(onFar);
  };
  const auto margin = [&](double error) {
    return kMargin + (error + lengthSlack) / least;
  };
  double angle = first;
  double excess = difference();
  if (excess > 0.0) return Meeting{angle, margin(0.0)};
  constexpr int kMostSteps = 40;
  for (int step = 0; step < kMostSteps; ++step) {
    const double slope = highest * std::sin(onNear.t) -
                         far.curve.Rays().Highest() * std::sin(onFar.t);
    const double next = std::min(angle - excess / slope, last);
    const bool isLast = next == angle;
    angle = next;
    onNear = PointAt(near, angle, onNear);
    onFar = PointAt(far, kPi - angle, onFar);
    excess = difference();
    if (isLast || std::abs(excess) < 1e-7) break;
  }
  if (angle < last && std::abs(excess) > 1e-3) return std::nullopt;
  // PointAt ends within 1e-8 rad of the angle.
  return Meeting{
      angle, margin((angle < last ? std::abs(excess) : 0.0) + 4e-8 * highest)};
}

/// Both pieces of the direct light from inside the vessel or from its wall.
struct Pieces {
  Piece near;
  std::optional<Piece> far;
};

/// @return nothing if the number of rays to each direction is not proved
std::optional<Pieces> PiecesOf(const Curves& curves, eRayFamily nearFamily,
                               eRayFamily farFamily, const Reaches& reaches) {
  const CurveSlack slack = reaches.SlackOf(
      std::max(curves.outward.Highest(), curves.inward.Highest()));
  const double radius = reaches.Radii().middle;
  const auto piece = [&](const RayCurve& curve, eRayFamily family,
                         RayPoints found, std::size_t last) {
    found.points.resize(last + 1);
    const bool isFolded = !found.folds.empty() && found.folds[0] == last;
    return Piece{curve,   family, slack, radius, std::move(found.points),
                 isFolded};
  };
  const auto near = curves.near.Follow(slack);
  if (!near.has_value()) return std::nullopt;
  if (curves.areJoined && near->folds.empty()) {
    return Pieces{piece(curves.near, eRayFamily::kOutwardJoined, *near,
                        near->points.size() - 1),
                  std::nullopt};
  }
  const auto far = curves.far.Follow(slack);
  if (!far.has_value() || far->folds.size() > 1) return std::nullopt;
  const std::size_t lastFar =
      far->folds.empty() ? far->points.size() - 1 : far->folds[0];
  if (curves.areJoined) {
    // Between the folds no ray is the shortest.
    const std::size_t fold = near->folds[0];
    if (near->folds.size() != 2 || near->points[fold].g >= kPi ||
        far->folds.empty()) {
      return std::nullopt;
    }
    return Pieces{piece(curves.near, eRayFamily::kOutwardJoined, *near, fold),
                  piece(curves.far, farFamily, *far, lastFar)};
  }
  if (!near->folds.empty() || near->points.back().g >= kPi ||
      far->points.back().g <= 0.0) {
    return std::nullopt;
  }
  return Pieces{piece(curves.near, nearFamily, *near, near->points.size() - 1),
                piece(curves.far, farFamily, *far, lastFar)};
}

/// The largest angle between event and PMT at which the straight line misses
/// the vessel.
double TangentAngle(const ConcentricMedia& media, double eventRadius,
                    double pmtRadius) {
  return std::acos(media.OuterRadius / eventRadius) +
         std::acos(media.OuterRadius / pmtRadius);
}

bool IsEmptyFamily(const RayFamily& family, const PerSite<double>& reaches) {
  return SweptAngle(family, reaches).Highest() <
         reaches[IndexOf(eSite::kInnerFromWall)];
}

}  // namespace

const RayKernel& RayKernelOf([[maybe_unused]] eKernel kernel) {
#ifdef __x86_64__
  if (kernel == eKernel::kAVX512) return kAVX512RayKernel;
  if (kernel == eKernel::kAVX2) return kAVX2RayKernel;
#endif
  return kBaselineRayKernel;
}

RayTable::RayTable(eLight light, const ConcentricMedia& media,
                   double eventRadius, const PMTRadii& pmts, int cells)
    : cells_(cells) {
  if (!(pmts.lowest > media.OuterRadius * (1.0 + kMargin))) {
    return;
  }
  const Reaches reaches(media, std::max(eventRadius, kNearestEvent), pmts);
  if (light == eLight::kReflected) {
    SetReflected(media, eventRadius, reaches);
    return;
  }
  switch (media.At(eventRadius)) {
    case eMedium::kInnerAV:
      SetThrough(reaches, eRayFamily::kOutwardFromInside,
                 eRayFamily::kInwardFromInside);
      break;
    case eMedium::kAcrylic:
      if (!IsEmptyFamily(kAlongWallFromWall, reaches.Sites())) return;
      SetThrough(reaches, eRayFamily::kOutwardFromWall,
                 eRayFamily::kInwardFromWall);
      break;
    case eMedium::kWater:
      if (!IsEmptyFamily(kAlongWallFromWater, reaches.Sites())) return;
      SetFromWater(media, eventRadius, reaches);
      break;
  }
}

void RayTable::SetThrough(const Reaches& reaches, eRayFamily nearFamily,
                          eRayFamily farFamily) {
  const Curves curves(nearFamily, farFamily, reaches.Sites());
  const std::optional<Pieces> pieces =
      PiecesOf(curves, nearFamily, farFamily, reaches);
  if (!pieces.has_value()) return;
  const Piece& near = pieces->near;
  if (!pieces->far.has_value()) {
    SetNear(near, kPi, 0.0);
    return;
  }
  const Piece& far = *pieces->far;
  const double first = kPi - far.End().g;
  const double last = near.End().g;
  const double margin = kMargin + near.slack.angle;
  if (first > last) {
    SetNear(near, last, margin);
    SetFar(far, first, margin);
    SetEmpty(last, first, margin);
    return;
  }
  // Where the lengths of PMTs at several distances differ much, the
  // overlapping part is left open.
  constexpr double kMostSlack = 1e-5;
  const std::optional<Meeting> meeting =
      near.slack.angle < kMostSlack
          ? MeetingOf(near, far, reaches.LengthSlack())
          : std::nullopt;
  if (meeting.has_value()) {
    SetNear(near, meeting->angle, meeting->margin);
    SetFar(far, meeting->angle, meeting->margin);
  } else {
    SetNear(near, first, margin);
    SetFar(far, last, margin);
  }
}

void RayTable::SetFromWater(const ConcentricMedia& media, double eventRadius,
                            const Reaches& reaches) {
  const double first = TangentAngle(media, eventRadius, reaches.Radii().lowest);
  const double last = TangentAngle(media, eventRadius, reaches.Radii().highest);
  const SweptAngle inward(kInwardFromWater, reaches.Sites());
  const CurveSlack slack = reaches.SlackOf(inward.Highest());
  const RayCurve curve(inward, nullptr, true);
  auto found = curve.Follow(slack);
  if (!found.has_value() || found->folds.size() > 1 ||
      found->points.back().g <= 0.0) {
    return;
  }
  near_.emplace();
  near_->type = kWater;
  leastNear_ = std::cos(first - kMargin);
  const bool isFolded = !found->folds.empty();
  if (isFolded) found->points.resize(found->folds[0] + 1);
  const Piece far = {curve,
                     eRayFamily::kInwardFromWater,
                     slack,
                     reaches.Radii().middle,
                     std::move(found->points),
                     isFolded};
  const double begin = kPi - far.End().g;
  const double margin = kMargin + slack.angle;
  SetFar(far, std::max(begin, last), margin);
  if (begin > last) SetEmpty(last, begin, margin);
}

void RayTable::SetReflected(const ConcentricMedia& media, double eventRadius,
                            const Reaches& reaches) {
  if (media.At(eventRadius) != eMedium::kWater) {
    SetEmpty(-1.0, kPi + 1.0, 0.0);
    return;
  }
  const SweptAngle rays(kReflected, reaches.Sites());
  const CurveSlack slack = reaches.SlackOf(rays.Highest());
  const RayCurve curve(rays, nullptr, false);
  auto found = curve.Follow(slack);
  if (!found.has_value() || !found->folds.empty()) return;
  const Piece piece = {curve,
                       eRayFamily::kReflected,
                       slack,
                       reaches.Radii().middle,
                       std::move(found->points),
                       false};
  const double last = TangentAngle(media, eventRadius, reaches.Radii().highest);
  const double margin = kMargin + slack.angle;
  SetNear(piece, piece.End().g, margin);
  SetEmpty(last, kPi + 1.0, margin);
}

void RayTable::SetNear(const Piece& piece, double end, double margin) {
  near_ = CellMaker(piece, std::min(end, piece.End().g), cells_).Make();
  leastNear_ = end >= kPi ? -2.0 : std::cos(end - margin);
}

void RayTable::SetFar(const Piece& piece, double begin, double margin) {
  far_ = CellMaker(piece, std::min(kPi - begin, piece.End().g), cells_).Make();
  mostFar_ = std::cos(begin + margin);
}

void RayTable::SetEmpty(double begin, double end, double margin) {
  leastEmpty_ = end > kPi ? -2.0 : std::cos(end - margin);
  mostEmpty_ = begin < 0.0 ? 2.0 : std::cos(begin + margin);
}

}  // namespace ZARN::DU

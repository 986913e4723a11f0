#include "lightpath/RayTable.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "TMath.h"
#include "lightpath/Householder.hpp"
#include "lightpath/RayCurve.hpp"
#include "lightpath/RayFamilies.hpp"

namespace ZARN::DU {
namespace {

/// Directions so near to the end of a range are left open, rad: by far more
/// than the rounding of the angles.
constexpr double kMargin = 1e-6;

/// How near PointAt comes to the angle that it searches for, rad.
constexpr double kAngleError = 1e-8;

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

namespace {

using Reaches = RayTable::Reaches;

/// The point of a piece with a value of G, starting the search from another
/// one. It ends within kAngleError of that value or, at a fold, as near as
/// possible.
CurvePoint PointAt(const RayPiece& piece, double g, const CurvePoint& start) {
  constexpr int kMostSteps = 60;
  double first = 0.0;
  double last = piece.End().t;
  CurvePoint at = start;
  for (int step = 0; step < kMostSteps; ++step) {
    const double miss = at.g - g;
    if (std::abs(miss) <= kAngleError && at.t <= last) return at;
    (miss < 0.0 ? first : last) = std::clamp(at.t, first, last);
    double t = NextByHouseholder(at.t, miss, at.slope, at.curve, at.third);
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
std::optional<Meeting> MeetingOf(const RayPiece& near, const RayPiece& far,
                                 double lengthSlack) {
  const double first = TMath::Pi() - far.End().g;
  const double last = near.End().g;
  CurvePoint onNear = PointAt(near, first, near.curve.Central());
  CurvePoint onFar = far.End();
  const double highest = near.curve.Rays().Highest();
  const double leastNear =
      highest * std::min(std::sin(onNear.t), std::sin(near.End().t));
  const double mostFar = far.curve.Rays().Highest() * std::sin(far.End().t);
  const double least = leastNear - mostFar;
  if (!(least > 1e-3 * highest) || far.End().t > 0.5 * TMath::Pi())
    return std::nullopt;
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
    onFar = PointAt(far, TMath::Pi() - angle, onFar);
    excess = difference();
    if (isLast || std::abs(excess) < 1e-7) break;
  }
  if (angle < last && std::abs(excess) > 1e-3) return std::nullopt;
  // Each of the two lengths is wrong by highest * kAngleError at most; this is
  // twice as much.
  const double lengthError = 4.0 * kAngleError * highest;
  return Meeting{angle,
                 margin((angle < last ? std::abs(excess) : 0.0) + lengthError)};
}

/// Both pieces of the direct light from inside the vessel or from its wall.
struct Pieces {
  RayPiece near;
  std::optional<RayPiece> far;
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
    return RayPiece{curve,   family, slack, radius, std::move(found.points),
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
    if (near->folds.size() != 2 ||
        near->points[fold].g >= TMath::Pi() - slack.angle ||
        far->folds.empty()) {
      return std::nullopt;
    }
    return Pieces{piece(curves.near, eRayFamily::kOutwardJoined, *near, fold),
                  piece(curves.far, farFamily, *far, lastFar)};
  }
  if (!near->folds.empty() ||
      near->points.back().g >= TMath::Pi() - slack.angle ||
      far->points.back().g <= slack.angle) {
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
      if (!IsEmptyFamily(Families::kAlongWallFromWall, reaches.Sites())) return;
      SetThrough(reaches, eRayFamily::kOutwardFromWall,
                 eRayFamily::kInwardFromWall);
      break;
    case eMedium::kWater:
      if (!IsEmptyFamily(Families::kAlongWallFromWater, reaches.Sites()))
        return;
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
  const RayPiece& near = pieces->near;
  if (!pieces->far.has_value()) {
    SetNear(near, TMath::Pi(), 0.0);
    return;
  }
  const RayPiece& far = *pieces->far;
  const double first = TMath::Pi() - far.End().g;
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
  const SweptAngle inward(Families::kInwardFromWater, reaches.Sites());
  const CurveSlack slack = reaches.SlackOf(inward.Highest());
  const RayCurve curve(inward, nullptr, true);
  auto found = curve.Follow(slack);
  if (!found.has_value() || found->folds.size() > 1 ||
      found->points.back().g <= slack.angle) {
    return;
  }
  near_.emplace();
  near_->type = kWater;
  leastNear_ = std::cos(first - kMargin);
  const bool isFolded = !found->folds.empty();
  if (isFolded) found->points.resize(found->folds[0] + 1);
  const RayPiece far = {curve,
                        eRayFamily::kInwardFromWater,
                        slack,
                        reaches.Radii().middle,
                        std::move(found->points),
                        isFolded};
  const double farthest = TMath::Pi() - far.End().g;
  const double margin = kMargin + slack.angle;
  SetFar(far, std::max(farthest, last), margin);
  if (farthest > last) SetEmpty(last, farthest, margin);
}

void RayTable::SetReflected(const ConcentricMedia& media, double eventRadius,
                            const Reaches& reaches) {
  if (media.At(eventRadius) != eMedium::kWater) {
    SetEmpty(-1.0, TMath::Pi() + 1.0, 0.0);
    return;
  }
  const SweptAngle rays(Families::kReflected, reaches.Sites());
  const CurveSlack slack = reaches.SlackOf(rays.Highest());
  const RayCurve curve(rays, nullptr, false);
  auto found = curve.Follow(slack);
  if (!found.has_value() || !found->folds.empty()) return;
  const RayPiece piece = {curve,
                          eRayFamily::kReflected,
                          slack,
                          reaches.Radii().middle,
                          std::move(found->points),
                          false};
  const double last = TangentAngle(media, eventRadius, reaches.Radii().highest);
  const double margin = kMargin + slack.angle;
  SetNear(piece, piece.End().g, margin);
  SetEmpty(last, TMath::Pi() + 1.0, margin);
}

void RayTable::SetNear(const RayPiece& piece, double end, double margin) {
  near_ = MakeRayRange(piece, std::min(end, piece.End().g), cells_);
  leastNear_ = end >= TMath::Pi() ? -2.0 : std::cos(end - margin);
}

/// @param begin  where the range begins, as a swept angle; it goes to pi
void RayTable::SetFar(const RayPiece& piece, double begin, double margin) {
  far_ =
      MakeRayRange(piece, std::min(TMath::Pi() - begin, piece.End().g), cells_);
  mostFar_ = std::cos(begin + margin);
}

void RayTable::SetEmpty(double begin, double end, double margin) {
  leastEmpty_ = end > TMath::Pi() ? -2.0 : std::cos(end - margin);
  mostEmpty_ = begin < 0.0 ? 2.0 : std::cos(begin + margin);
}

}  // namespace ZARN::DU

#include "lightpath/PathBetween.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "lightpath/Crossings.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/RaySearch.hpp"
#include "lightpath/Rotor.hpp"

namespace ZARN::DU {
namespace {

/// Rounding error of a sum of products of coordinates, relative to its terms.
constexpr double kLineRounding = 4 * std::numeric_limits<double>::epsilon();

double RadiusOf(const ConcentricMedia& media, eCrossing crossing) {
  return IsAtInnerSurface(crossing) ? media.InnerRadius : media.OuterRadius;
}

/// Event and PMT as seen from the centre.
class Ends {
 public:
  Ends(const ConcentricMedia& media, const TVector3& eventPos,
       const TVector3& pmtPos)
      : eventRadius_(eventPos.Mag()), pmtRadius_(pmtPos.Mag()) {
    // Comparisons with NaN are false, so NaN gives false.
    canBeJoined_ = eventRadius_ <= LightPathCalculator::kFarthest &&
                   pmtRadius_ <= LightPathCalculator::kFarthest &&
                   media.At(pmtRadius_) == eMedium::kWater &&
                   eventPos != pmtPos;
    if (!canBeJoined_) return;
    toPMT_ = pmtPos * (1.0 / pmtRadius_);
    // So close to the centre, the direction of the event does not matter.
    constexpr double kAtCentre = 1e-100;
    if (eventRadius_ < kAtCentre) return;
    toEvent_ = eventPos * (1.0 / eventRadius_);
    const TVector3 normal = toEvent_.Cross(toPMT_);
    const double sine = normal.Mag();
    cosine_ = toEvent_.Dot(toPMT_);
    areInLine_ = sine <= kLineRounding;
    if (areInLine_) return;
    angle_ = std::atan2(sine, cosine_);
    // Perpendicular to the event's direction even if the normal is inexact.
    across_ = normal.Cross(toEvent_);
    across_ *= 1.0 / across_.Mag();
  }

  bool CanBeJoined() const { return canBeJoined_; }

  /// Whether event, PMT and centre are on one line.
  bool AreInLine() const { return areInLine_; }
  bool AreOnOneSide() const { return cosine_ > 0; }

  double EventRadius() const { return eventRadius_; }
  const TVector3& ToPMT() const { return toPMT_; }
  PathEnds InPlane() const { return {eventRadius_, pmtRadius_, angle_}; }

  /// A vector at an angle to the event's direction, in the plane of event,
  /// PMT and centre.
  TVector3 At(const Rotor& turn, const Sweep& sweep, double length) const {
    const double along = length * turn.Cosine;
    const double across =
        sweep.IsTheLongWay ? -length * turn.Sine : length * turn.Sine;
    return {along * toEvent_.X() + across * across_.X(),
            along * toEvent_.Y() + across * across_.Y(),
            along * toEvent_.Z() + across * across_.Z()};
  }

 private:
  double eventRadius_;
  double pmtRadius_;
  bool canBeJoined_;
  bool areInLine_ = true;
  double cosine_ = 1.0;
  double angle_ = 0.0;
  TVector3 toEvent_;
  TVector3 toPMT_;
  TVector3 across_;
};

/// Set a path through the centre, or one reflected on the way to it.
void SetRadialPath(const ConcentricMedia& media, eLightPathType type,
                   const TVector3& initialDirection,
                   const TVector3& finalDirection, LightPath& path) {
  path.LightPathType = type;
  path.InitialDirection = initialDirection;
  path.FinalDirection = finalDirection;
  std::size_t i = 0;
  for (const eCrossing crossing : kCrossings[type]) {
    const double radius = RadiusOf(media, crossing);
    path.*kAVPoints[i++] =
        initialDirection *
        (SenseBefore(crossing) == eSense::kOutward ? radius : -radius);
  }
}

void SetRefractedPath(const ConcentricMedia& media, const Ends& ends,
                      const JoiningRay& ray, LightPath& path) {
  path.LightPathType = ray.Family->Type;
  Rotor position;
  Rotor direction = ray.LaunchDirection();
  path.InitialDirection = ends.At(direction, ray.Swept, 1.0);
  std::size_t i = 0;
  for (const eCrossing crossing : kCrossings[ray.Family->Type]) {
    const Rotor arrival = ray.DirectionAt(
        SiteAt(crossing, MediumBefore(crossing)), SenseBefore(crossing));
    // In one medium the direction does not change. So the radius has turned by
    // the angle that the direction lost relative to the radius.
    position = position * direction * arrival.Back();
    path.*kAVPoints[i++] =
        ends.At(position, ray.Swept, RadiusOf(media, crossing));
    direction = ray.DirectionAt(SiteAt(crossing, MediumAfter(crossing)),
                                SenseAfter(crossing));
  }
  path.FinalDirection = ends.At(position * direction, ray.Swept, 1.0);
}

/// Whether the straight line between two points in the water goes through the
/// vessel. Touching it does not count, including rounding.
bool Crosses(const TVector3& from, const TVector3& to, double radius) {
  const TVector3 way = to - from;
  const double toNearest = -from.Dot(way);
  const double squared = way.Mag2();
  if (toNearest <= 0 || toNearest >= squared) return false;
  return from.Cross(way).Mag2() <
         (1 - kLineRounding) * radius * radius * squared;
}

/// Constructing eight vectors for each path would cost time. Created by the
/// first path, which may be computed in a static constructor.
const LightPath& NoPath() {
  static const LightPath none;
  return none;
}

void Begin(const TVector3& eventPos, const TVector3& pmtPos, LightPath& path) {
  path.StartPos = eventPos;
  path.EndPos = pmtPos;
}

/// Set the straight path if event, PMT and centre are on one line.
void SetPathInLine(const ConcentricMedia& media, const Ends& ends,
                   LightPath& path) {
  const auto typeFor = [&] {
    switch (media.At(ends.EventRadius())) {
      case eMedium::kInnerAV:
        return kInnerAVToWater;
      case eMedium::kAcrylic:
        return ends.AreOnOneSide() ? kAVToWater : kAVThroughInnerAVToWater;
      case eMedium::kWater:
        break;
    }
    return kWaterThroughInnerAV;
  };
  SetRadialPath(media, typeFor(), ends.ToPMT(), ends.ToPMT(), path);
}

}  // namespace

TVector3 StraightDirection(const TVector3& eventPos, const TVector3& pmtPos) {
  const TVector3 way = pmtPos - eventPos;
  const double largest =
      std::max({std::abs(way.X()), std::abs(way.Y()), std::abs(way.Z())});
  return TVector3(way.X() / largest, way.Y() / largest, way.Z() / largest)
      .Unit();
}

void FindDirectPath(const ConcentricMedia& media, const TVector3& eventPos,
                    const TVector3& pmtPos, LightPath& path) {
  path = NoPath();
  const Ends ends(media, eventPos, pmtPos);
  if (!ends.CanBeJoined()) return;
  const bool startsInWater = media.At(ends.EventRadius()) == eMedium::kWater;
  const bool isInLine = ends.AreInLine();
  if (startsInWater &&
      (isInLine ? ends.AreOnOneSide()
                : !Crosses(eventPos, pmtPos, media.OuterRadius))) {
    Begin(eventPos, pmtPos, path);
    path.LightPathType = kWater;
    path.InitialDirection = StraightDirection(eventPos, pmtPos);
    path.FinalDirection = path.InitialDirection;
    return;
  }
  if (isInLine) {
    Begin(eventPos, pmtPos, path);
    SetPathInLine(media, ends, path);
    return;
  }
  const ShortestRay shortest = FindShortestRay(media, ends.InPlane());
  if (shortest.Joining.Family == nullptr) return;
  Begin(eventPos, pmtPos, path);
  SetRefractedPath(media, ends, shortest.Joining, path);
}

void FindReflectedPath(const ConcentricMedia& media, const TVector3& eventPos,
                       const TVector3& pmtPos, LightPath& path) {
  path = NoPath();
  const Ends ends(media, eventPos, pmtPos);
  if (!ends.CanBeJoined() || media.At(ends.EventRadius()) != eMedium::kWater) {
    return;
  }
  if (ends.AreInLine()) {
    if (!ends.AreOnOneSide()) return;
    Begin(eventPos, pmtPos, path);
    SetRadialPath(media, kWaterReflection, -ends.ToPMT(), ends.ToPMT(), path);
    return;
  }
  if (Crosses(eventPos, pmtPos, media.OuterRadius)) return;
  const JoiningRay ray = FindReflectedRay(media, ends.InPlane());
  Begin(eventPos, pmtPos, path);
  SetRefractedPath(media, ends, ray, path);
}

}  // namespace ZARN::DU

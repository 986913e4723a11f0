#include "display/PathTrace.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "du/geometry/Constants.hpp"
#include "lightpath/Crossings.hpp"
#include "lightpath/PathLengths.hpp"

namespace ZARN::Display {
namespace {

using DU::eMedium;
using DU::kHalfPi;
using DU::kPi;

/// The plane of event, PMT and centre.
struct Plane {
  Plane(const TVector3& event, const TVector3& pmt)
      : eventRadius(event.Mag()), outwards(pmt * (1.0 / pmt.Mag())) {
    if (eventRadius == 0.0) return;
    const TVector3 toPMT = outwards;
    const TVector3 toEvent = event * (1.0 / eventRadius);
    const TVector3 part = toPMT - toPMT.Dot(toEvent) * toEvent;
    const double sine = part.Mag();
    isInLine = sine <= kInLine;
    isOpposite = toPMT.Dot(toEvent) < 0;
    if (isInLine) {
      outwards = isOpposite ? -toPMT : toPMT;
    } else {
      outwards = toEvent;
      across = part * (1.0 / sine);
    }
  }

  double eventRadius;
  TVector3 outwards;  ///< from the centre to the event; unit vector
  TVector3 across;    ///< towards the PMT; zero if all are on one line
  bool isInLine = true;
  bool isOpposite = false;  ///< the PMT is on the other side of the centre
};

/// Whether direct light goes straight to the PMT, through the water alone: the
/// line to it does not go through the vessel. Touching it does not count,
/// including rounding.
bool StaysInWater(const DU::ConcentricMedia& media, const Plane& plane,
                  const TVector3& event, const TVector3& pmt) {
  if (media.At(plane.eventRadius) != eMedium::kWater) return false;
  if (plane.isInLine) return !plane.isOpposite;
  const TVector3 way = pmt - event;
  const double toNearest = -event.Dot(way);
  const double squared = way.Mag2();
  if (toNearest <= 0 || toNearest >= squared) return true;
  constexpr double kRounding = 4 * std::numeric_limits<double>::epsilon();
  return event.Cross(way).Mag2() >=
         (1 - kRounding) * media.OuterRadius * media.OuterRadius * squared;
}

/// Light on its way through the shells.
class Light {
 public:
  Light(const DU::ConcentricMedia& media, const Plane& plane, double angle)
      : media_(media),
        plane_(plane),
        medium_(media.At(plane.eventRadius)),
        turn_(angle < 0 ? -1.0 : 1.0),
        direction_(std::abs(angle)),
        isOutward_(direction_ <= kHalfPi),
        invariant_(media.IndexIn(medium_) * plane.eventRadius *
                   std::sin(direction_)) {}
  /// Through the centre, or away from it.
  Light(const DU::ConcentricMedia& media, const Plane& plane, bool isOutward)
      : media_(media),
        plane_(plane),
        medium_(media.At(plane.eventRadius)),
        direction_(isOutward ? 0.0 : kPi),
        isOutward_(isOutward) {}

  bool IsInWater() const { return medium_ == eMedium::kWater; }
  bool IsOutward() const { return isOutward_; }

  /// Turn outwards if the light does not come so far inwards as the next
  /// surface.
  void PassPerigee() {
    if (isOutward_) return;
    isOutward_ = medium_ == eMedium::kInnerAV ||
                 invariant_ >= media_.IndexIn(medium_) * InnerSurface();
  }

  /// Refract the light at the next surface.
  void Cross(PathPoints& path) {
    ComeTo(isOutward_ ? OuterSurface() : InnerSurface(), path);
    medium_ = isOutward_ ? Next(medium_) : Previous(medium_);
    direction_ = position_ + AngleToRadius();
  }

  /// Reflect it there, from outside.
  void Reflect(PathPoints& path) {
    ComeTo(InnerSurface(), path);
    isOutward_ = true;
    direction_ = position_ + AngleToRadius();
  }

 private:
  static eMedium Next(eMedium medium) {
    return medium == eMedium::kInnerAV ? eMedium::kAcrylic : eMedium::kWater;
  }
  static eMedium Previous(eMedium medium) {
    return medium == eMedium::kWater ? eMedium::kAcrylic : eMedium::kInnerAV;
  }

  /// Of the shell where the light is.
  double InnerSurface() const {
    return medium_ == eMedium::kWater ? media_.OuterRadius : media_.InnerRadius;
  }
  double OuterSurface() const {
    return medium_ == eMedium::kInnerAV ? media_.InnerRadius
                                        : media_.OuterRadius;
  }

  /// Between the outward radius and the light, at the surface that it is at.
  double AngleToRadius() const {
    const double sine =
        std::min(1.0, invariant_ / (media_.IndexIn(medium_) * surface_));
    return isOutward_ ? std::asin(sine) : kPi - std::asin(sine);
  }

  void ComeTo(double surface, PathPoints& path) {
    surface_ = surface;
    position_ = direction_ - AngleToRadius();
    path.Add(surface * (std::cos(position_) * plane_.outwards +
                        turn_ * std::sin(position_) * plane_.across),
             medium_);
  }

  const DU::ConcentricMedia& media_;
  const Plane& plane_;
  eMedium medium_;
  double turn_ = 1.0;
  double direction_;  ///< from the radius of the event
  bool isOutward_;
  double invariant_ = 0.0;
  double surface_ = 0.0;   ///< the radius where the light is
  double position_ = 0.0;  ///< its angle from the radius of the event
};

}  // namespace

PathPoints PointsOf(const DU::LightPath& path) {
  PathPoints all;
  all.points[all.count++] = path.StartPos;
  std::size_t i = 0;
  for (const DU::eCrossing crossing : DU::kCrossings[path.LightPathType]) {
    all.Add(path.*DU::kAVPoints[i++], DU::MediumBefore(crossing));
  }
  all.Add(path.EndPos, eMedium::kWater);
  return all;
}

double TimeOfFlight(const PathPoints& path, const DU::PerMedium& groupIndices) {
  DU::PerMedium lengths = {};
  for (std::size_t i = 0; i + 1 < path.count; ++i) {
    lengths[DU::IndexOf(path.media[i])] +=
        (path.points[i + 1] - path.points[i]).Mag();
  }
  return DU::TimeOfFlightOf(lengths, groupIndices);
}

double LaunchAngle(const DU::LightPath& path) {
  const Plane plane(path.StartPos, path.EndPos);
  if (plane.isInLine) return plane.isOpposite ? kPi : 0.0;
  return std::atan2(path.InitialDirection.Dot(plane.across),
                    path.InitialDirection.Dot(plane.outwards));
}

PathPoints TracePath(const DU::ConcentricMedia& media, const TVector3& event,
                     const TVector3& pmt, double angle, DU::eLight kind) {
  PathPoints path;
  path.points[path.count++] = event;
  const Plane plane(event, pmt);
  const bool isReflected = kind == DU::eLight::kReflected;
  Light light = plane.isInLine
                    ? Light(media, plane, !plane.isOpposite && !isReflected)
                    : Light(media, plane, angle);
  if (isReflected) {
    light.Reflect(path);
  } else if (!StaysInWater(media, plane, event, pmt)) {
    light.PassPerigee();
    while (!(light.IsInWater() && light.IsOutward())) {
      light.Cross(path);
      light.PassPerigee();
    }
  }
  path.Add(pmt, eMedium::kWater);
  return path;
}

bool AreSame(const PathPoints& a, const PathPoints& b,
             const DU::PerMedium& groupIndices) {
  constexpr double kMostApart = 0.02;      // mm
  constexpr double kMostTimeApart = 2e-4;  // ns
  if (a.count != b.count) return false;
  for (std::size_t i = 0; i + 1 < a.count; ++i) {
    if (a.media[i] != b.media[i]) return false;
  }
  for (std::size_t i = 0; i < a.count; ++i) {
    if (!((a.points[i] - b.points[i]).Mag() <= kMostApart)) return false;
  }
  return std::abs(TimeOfFlight(a, groupIndices) -
                  TimeOfFlight(b, groupIndices)) <= kMostTimeApart;
}

}  // namespace ZARN::Display

#pragma once

#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/SweptAngle.hpp"

namespace ZARN::DU {

/// The ends of a path in their plane.
struct PathEnds {
  double EventRadius;  ///< distance from the centre, mm
  double PMTRadius;    ///< mm
  double Angle;        ///< between the two, seen from the centre, 0 to pi
};

/// What a ray has to sweep to join two ends.
struct Sweep {
  double Angle = 0.0;         ///< rad
  bool IsTheLongWay = false;  ///< away from the PMT first, across the line from
                              ///< the event through the centre
};

/// A ray that joins two ends.
struct JoiningRay {
  const RayFamily* Family = nullptr;
  Sweep Swept;
  double OpticalLength = 0.0;  ///< mm
  SweptAngle::Ray Ray;

  /// The direction of the light where it leaves or comes to a site, as the turn
  /// from the outward radius.
  Rotor DirectionAt(eSite site, eSense sense) const {
    const Rotor angle = Ray.AngleToRadius(site);
    if (sense == eSense::kOutward) return angle;
    return {-angle.Cosine, angle.Sine};
  }
  Rotor LaunchDirection() const {
    return DirectionAt(eSite::kEvent, Family->Launch);
  }
};

/// The refracted ray of shortest optical length.
struct ShortestRay {
  JoiningRay Joining;   ///< Family is null where there is none
  int Evaluations = 0;  ///< of the swept angle, in the whole search
};

ShortestRay FindShortestRay(const ConcentricMedia& media, const PathEnds& ends);

/// Every refracted ray.
std::vector<JoiningRay> FindAllRays(const ConcentricMedia& media,
                                    const PathEnds& ends);

/// The ray reflected at the outer surface, between two ends in the water whose
/// straight connection does not go through the vessel.
JoiningRay FindReflectedRay(const ConcentricMedia& media, const PathEnds& ends);

}  // namespace ZARN::DU

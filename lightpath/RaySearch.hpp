#pragma once

#include <vector>

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/SweptAngle.hpp"

namespace ZARN::DU {

/// Event and PMT in the plane of the path.
struct PathEnds {
  double EventRadius;  ///< distance from the centre, mm
  double PMTRadius;    ///< mm
  double Angle;        ///< between the two, seen from the centre, 0 to pi
};

/// The angle that a ray has to sweep around the centre to join event and PMT.
struct Sweep {
  double Angle = 0.0;  ///< rad
  /// Starts away from the PMT and crosses the line of event and centre.
  bool IsTheLongWay = false;
};

/// A ray that joins event and PMT.
struct JoiningRay {
  const RayFamily* Family = nullptr;
  Sweep Swept;
  double OpticalLength = 0.0;  ///< mm
  SweptAngle::Ray Ray;

  /// The direction of the light where it leaves or arrives at a site, as a
  /// rotation from the outward radius.
  Rotor DirectionAt(eSite site, eSense sense) const {
    const Rotor angle = Ray.AngleToRadius(site);
    if (sense == eSense::kOutward) return angle;
    return {-angle.Cosine, angle.Sine};
  }
  Rotor LaunchDirection() const {
    return DirectionAt(eSite::kEvent, Family->Launch);
  }
};

/// The refracted ray with the shortest optical length.
struct ShortestRay {
  JoiningRay Joining;   ///< Family is null if there is none
  int Evaluations = 0;  ///< of the swept angle, in the whole search
};

ShortestRay FindShortestRay(const ConcentricMedia& media, const PathEnds& ends);

/// Every refracted ray.
std::vector<JoiningRay> FindAllRays(const ConcentricMedia& media,
                                    const PathEnds& ends);

/// The ray reflected at the outer surface, if event and PMT are in the water
/// and the straight line between them does not go through the vessel.
JoiningRay FindReflectedRay(const ConcentricMedia& media, const PathEnds& ends);

}  // namespace ZARN::DU

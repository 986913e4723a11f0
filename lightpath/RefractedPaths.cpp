#include "lightpath/RefractedPaths.hpp"

#include <cmath>

#include "TMath.h"
#include "lightpath/RaySearch.hpp"

namespace ZARN::DU {

std::vector<RefractedPath> FindRefractedPaths(const ConcentricMedia& media,
                                              double eventRadius,
                                              double pmtRadius, double angle) {
  std::vector<RefractedPath> paths;
  const bool areInRange = eventRadius > 0 && std::isfinite(eventRadius) &&
                          pmtRadius >= media.OuterRadius &&
                          std::isfinite(pmtRadius) && angle > 0 &&
                          angle < TMath::Pi();
  if (!areInRange) return paths;
  for (const JoiningRay& found :
       FindAllRays(media, {eventRadius, pmtRadius, angle})) {
    const Rotor launch = found.LaunchDirection();
    paths.push_back({found.Family->Type, std::atan2(launch.Sine, launch.Cosine),
                     found.Swept.Angle, found.OpticalLength});
  }
  return paths;
}

}  // namespace ZARN::DU

#include "lightpath/PathLengths.hpp"

#include <cmath>

#include "lightpath/Crossings.hpp"

namespace ZARN::DU {

PerMedium LengthsOf(const LightPath& path) {
  PerMedium lengths = {};
  if (!HasStretches(path.LightPathType)) return lengths;
  const TVector3* from = &path.StartPos;
  std::size_t i = 0;
  for (const eCrossing crossing : kCrossings[path.LightPathType]) {
    const TVector3& to = path.*kAVPoints[i++];
    lengths[IndexOf(MediumBefore(crossing))] += (to - *from).Mag();
    from = &to;
  }
  // Every path ends at a PMT in the water.
  lengths[IndexOf(eMedium::kWater)] += (path.EndPos - *from).Mag();
  return lengths;
}

double TimeOfFlightOf(const PerMedium& lengths, const PerMedium& groupIndices) {
  return OpticalLengthOf(lengths, groupIndices) / kSpeedOfLight;
}

double IncidenceAngleOf(const LightPath& path) {
  if (!HasStretches(path.LightPathType)) return 0.0;
  // The arc cosine would lose half of the digits of a small angle.
  return std::atan2(path.FinalDirection.Cross(path.EndPos).Mag(),
                    path.FinalDirection.Dot(path.EndPos));
}

}  // namespace ZARN::DU

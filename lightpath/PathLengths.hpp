#pragma once

#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::DU {

inline constexpr double kSpeedOfLight = 299.792458;  // mm/ns, by definition

/// Whether the segments of a path of this type are known.
constexpr bool HasStretches(eLightPathType type) {
  return type > kUninitialised && type < kNumberOfLightPathTypes;
}

/// Length of a light path in each medium, mm, from the points that its type
/// uses; all 0 for types whose segments are not known.
PerMedium LengthsOf(const LightPath& path);

/// The sum of a length times an index in each medium.
inline double OpticalLengthOf(const PerMedium& lengths,
                              const PerMedium& indices) {
  return lengths[0] * indices[0] + lengths[1] * indices[1] +
         lengths[2] * indices[2];
}

/// ns, with the group indices.
double TimeOfFlightOf(const PerMedium& lengths, const PerMedium& groupIndices);

/// Angle of incidence on a PMT that faces the centre, rad; 0 for types whose
/// segments are not known.
double IncidenceAngleOf(const LightPath& path);

}  // namespace ZARN::DU

#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {

/// Where the events of rows are drawn.
enum class eEventPlace {
  kInside,    ///< uniform inside the vessel
  kNearWall,  ///< inside, in the outer fifth of the radius
  kInWall,
  kInWater,
  kAtSurface,  ///< within 1e-9 mm of a surface
  kOnAxis,     ///< at any distance, also at the centre
  kAtOnset     ///< about where total reflection begins, and caustics with it
};

inline constexpr std::array kEventPlaces = {
    eEventPlace::kInside,  eEventPlace::kNearWall,  eEventPlace::kInWall,
    eEventPlace::kInWater, eEventPlace::kAtSurface, eEventPlace::kOnAxis,
    eEventPlace::kAtOnset};

const char* NameOf(eEventPlace place);

/// A position in one of the places.
TVector3 DrawEvent(eEventPlace place, const DU::ConcentricMedia& media,
                   Random& random);

/// PMTs in random directions around the vessel: at one distance; at distances
/// that differ by up to 1e-3 mm; on rings, in any order; or at any distances.
/// Some are nearly in line with the event and the centre. A few sets have PMTs
/// that are no real ones: at the event, in the wall or not finite.
std::vector<TVector3> DrawPMTs(std::size_t count,
                               const DU::ConcentricMedia& media,
                               const TVector3& eventPos, Random& random);

}  // namespace ZARN::Testing

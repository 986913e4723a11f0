#pragma once

#include <optional>

namespace ZARN::DU {

class TableCheck;

/// The radii of the vessel, mm.
struct Vessel {
  double inner;
  double outer;
};

// The sizes and places below which, or beyond which, a length is hardly meant.
// Wide limits: no real part may be near one.

/// The smallest vessel, mm. Those of detectors are larger than 1 m, and below
/// 100 m. So a radius in m is below this, and one in mm is not.
inline constexpr double kSmallestVessel = 100.0;

/// Hardware hangs on the vessel: it is not farther from the wall than this
/// share of the outer radius. In the reference detector the largest distance is
/// 0.02 (120 mm of 5860 mm, the pipes).
inline constexpr double kFarFromWall = 0.1;

/// What is on the vessel is not nearer to its centre than this share of the
/// outer radius, unless its lengths are in m: then it is at 0.001.
inline constexpr double kLooksLikeMetres = 0.01;

/// Positions are written with a precision of about 0.001 mm; what is nearer
/// than this is the same place.
inline constexpr double kSamePlace = 1.0;  // mm

/// The wall of the vessel is not thicker than this share of the outer radius.
/// In the reference detector it is 0.01, in the minimal detector 0.016.
inline constexpr double kThickestWall = 0.2;

/// The vessel of the tables; none if its radii are missing, not finite, not
/// above 0, out of order, too far apart, or too small to be in mm: then nothing
/// can be compared with it, and what is wrong is told of the vessel.
std::optional<Vessel> SoundVessel(const TableCheck& check);

/// Whether a radius of the vessel looks like m. Then all lengths may, and the
/// vessel's finding says so for all.
bool IsVesselInMetres(const TableCheck& check);

}  // namespace ZARN::DU

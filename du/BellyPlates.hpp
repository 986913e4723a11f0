#pragma once

#include <vector>

#include "TVector3.h"
#include "du/WaterSegments.hpp"
#include "du/geometry/BallTest.hpp"
#include "du/geometry/CellItems.hpp"
#include "du/geometry/Diagnostics.hpp"

namespace ZARN::DU {

/// The plates around the equator of the vessel. Each is a patch of the sphere
/// through its centre, as wide in azimuth as it is high. Lengths in mm.
struct BellyPlateModel {
  std::vector<TVector3> BellyPlatePositions;  ///< plate centres
  /// A grid of points over every plate. The test does not read it; it is kept
  /// for callers that draw or fit.
  std::vector<TVector3> BellyPlateGridPoints;
  double BellyPlateHalfHeight = 0.0;

  /// Empty both lists, keeping their storage; the half height stays.
  void Clear();
};

/// Read the plates from SOLID/belly_plate_vintar and, through the name in
/// GEO/inner_av belly_plate_locations, from GEO_LOCATIONS; append the grid.
///
/// @param tolerance  the number of grid divisions per plate side: the belly
///                   plate tolerance as it stands while the run is set up,
///                   which is the previous run's. None or fewer: no grid; a
///                   fraction counts as one more.
/// @throws ZARN::DBNotFoundError for a missing entry or field; what was read
///         stays in the model
void LoadBellyPlateInfo(BellyPlateModel& model, double tolerance);

/// Tell whether a path crosses the vessel through a plate, at either of its
/// crossings: strictly within the height band and the azimuthal half-width,
/// both widened by the tolerance. Paths wholly in water never do; a path of
/// unknown type is judged at the origin.
///
/// @param tolerance      mm
/// @param outerAVRadius  where the tolerance becomes an angle, mm
bool CheckForBellyPlateShadowing(
    const BellyPlateModel& model, double tolerance, double outerAVRadius,
    const WaterSegments& path,
    eDiagnostics diagnostics = eDiagnostics::kWritten);

/// Whether the vector library warns when a path is tested against the plates:
/// one of them, or an edge of it, is at the vessel's centre.
bool WarnsOfZeroVectors(const BellyPlateModel& model);

/// The plates with everything prepared that does not depend on the path: the
/// test of one crossing point, with the same answer to the last bit.
///
/// The azimuthal test compares an angle with two limits of the plate; here its
/// cosine is compared first. The cosines' errors are below 1e-14, and what lies
/// within kBand of the limit is left to the arc cosine.
class PreparedBellyPlates final : public BallTest {
 public:
  static constexpr double kBand = 1e-9;

  PreparedBellyPlates() = default;
  PreparedBellyPlates(const BellyPlateModel& model, double tolerance,
                      double outerAVRadius);

  /// Whether a plate blocks a path that crosses the vessel at @p point.
  bool Block(const TVector3& point) const;
  /// Whether one of some plates does.
  bool Block(const TVector3& point, const CellItems& plates,
             CellItems::Range range) const;

  std::uint32_t CountItems() const override;
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;

 private:
  struct Plate {
    TVector3 centre;
    double left;         ///< angle from the centre to each edge, rad
    double right;        ///< rad
    double limit;        ///< the smaller of both, -1 where nothing is blocked
    double limitCosine;  ///< of limit; 2 where nothing is
  };

  bool IsAsHigh(const TVector3& point) const {
    return point.Z() < halfHeight_ && point.Z() > -halfHeight_;
  }
  static bool IsInside(const Plate& plate, const TVector3& point);

  double halfHeight_ = 0.0;
  std::vector<Plate> plates_;
};

}  // namespace ZARN::DU

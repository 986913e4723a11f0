#include "du/BellyPlates.hpp"

#include "db/ReadField.hpp"
#include "du/GeometryTables.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/Primitives.hpp"

namespace ZARN::DU {
namespace {

/// A plate's extent, as its centre and the half height give it.
struct PlateFrame {
  PlateFrame(const TVector3& centre, double halfHeight)
      : radius(centre.Mag()),
        bottom(WithMag(centre - halfHeight * kZHat, radius)),
        width(WithMag(centre + halfHeight * kZHat, radius).Angle(bottom)),
        phiStart(centre.Phi() - 0.5 * width) {}

  double radius;
  TVector3 bottom;
  double width;     ///< angular height, and width in azimuth, rad
  double phiStart;  ///< azimuth of one edge, rad
};

/// Lay n x n points over a plate, none where n is not above 0. Its far edges
/// are not reached.
void AppendGrid(const PlateFrame& frame, double n, double halfHeight,
                std::vector<TVector3>& points) {
  for (double a = 0; n > a; ++a) {
    const TVector3 v =
        WithPhi(frame.bottom, a / n * frame.width + frame.phiStart);
    for (double b = 0; n > b; ++b) {
      points.push_back(
          WithMag(v + (2 * (b / n) * halfHeight) * kZHat, frame.radius));
    }
  }
}

/// The limits of a test, the same for every plate.
struct Band {
  double halfHeight;  ///< mm
  double dphi;        ///< the tolerance as an angle, rad
};

bool IsWithinAPlate(TVector3 point, const BellyPlateModel& model,
                    const Band& band) {
  if (!(point.Z() < band.halfHeight && point.Z() > -band.halfHeight)) {
    return false;
  }
  const auto& plates = model.BellyPlatePositions;
  // Lists are counted in single precision throughout this system.
  for (float k = 0; static_cast<float>(plates.size()) > k; k += 1.0F) {
    const TVector3& plate = plates[static_cast<std::size_t>(k)];
    const PlateFrame frame(plate, model.BellyPlateHalfHeight);
    const TVector3 left = WithPhi(plate, frame.phiStart - band.dphi);
    const TVector3 right =
        WithPhi(plate, band.dphi + (frame.width + frame.phiStart));
    // At the height of the plate's centre only the azimuth counts.
    point.SetZ(plate.Z());
    const double alpha = point.Angle(plate);
    if (left.Angle(plate) > alpha && right.Angle(plate) > alpha) return true;
  }
  return false;
}

}  // namespace

void BellyPlateModel::Clear() {
  BellyPlatePositions.clear();
  BellyPlateGridPoints.clear();
}

void LoadBellyPlateInfo(BellyPlateModel& model, double tolerance) {
  model.BellyPlateHalfHeight =
      ReadNumber("SOLID", "belly_plate_vintar", "octahedron_half_height");
  const std::string locations =
      ReadText("GEO", "inner_av", "belly_plate_locations");
  FillXYZPositions(model.BellyPlatePositions, "GEO_LOCATIONS", locations, "x",
                   "y", "z");
  const auto& plates = model.BellyPlatePositions;
  for (float k = 0; static_cast<float>(plates.size()) > k; k += 1.0F) {
    const PlateFrame frame(plates[static_cast<std::size_t>(k)],
                           model.BellyPlateHalfHeight);
    AppendGrid(frame, tolerance, model.BellyPlateHalfHeight,
               model.BellyPlateGridPoints);
  }
}

bool CheckForBellyPlateShadowing(const BellyPlateModel& model, double tolerance,
                                 double outerAVRadius,
                                 const WaterSegments& path) {
  if (path.kind == ePathKind::kWater ||
      path.kind == ePathKind::kUninitialised ||
      path.kind == ePathKind::kMisspeltUninitialised) {
    return false;
  }
  const Band band = {model.BellyPlateHalfHeight + tolerance,
                     IeeeQuotient(tolerance, outerAVRadius)};
  if (IsWithinAPlate(path.first.point, model, band)) return true;
  return path.kind == ePathKind::kTwoCrossings &&
         IsWithinAPlate(path.second.point, model, band);
}

}  // namespace ZARN::DU

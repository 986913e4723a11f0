#include "du/BellyPlates.hpp"

#include <algorithm>
#include <cmath>

#include "db/ReadField.hpp"
#include "du/GeometryTables.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/Primitives.hpp"

namespace ZARN::DU {
namespace {

/// A plate's extent, as its centre and the half height give it.
struct PlateFrame {
  PlateFrame(const TVector3& centre, double halfHeight,
             eDiagnostics diagnostics)
      : radius(centre.Mag()),
        bottom(WithMag(centre - halfHeight * kZHat, radius, diagnostics)),
        width(WithMag(centre + halfHeight * kZHat, radius, diagnostics)
                  .Angle(bottom)),
        phiStart(centre.Phi() - 0.5 * width) {}

  double radius;
  TVector3 bottom;
  double width;     ///< angular height, and width in azimuth, rad
  double phiStart;  ///< azimuth of one edge, rad
};

/// Make room for the grids of some plates, unless they are so large that it may
/// not be there.
void ReserveGrids(double n, std::size_t plates, std::vector<TVector3>& points) {
  constexpr double kMost = 1e7;
  const double side = std::ceil(n);
  const double count = side * side * static_cast<double>(plates);
  if (n > 0.0 && count < kMost) points.reserve(static_cast<std::size_t>(count));
}

/// Lay n x n points over a plate, none where n is not above 0. Its far edges
/// are not reached.
void AppendGrid(const PlateFrame& frame, double n, double halfHeight,
                std::vector<TVector3>& points) {
  std::vector<TVector3> steps;
  for (double b = 0; n > b; ++b) {
    steps.push_back((2 * (b / n) * halfHeight) * kZHat);
  }
  for (double a = 0; n > a; ++a) {
    const TVector3 v =
        WithPhi(frame.bottom, a / n * frame.width + frame.phiStart);
    for (const TVector3& step : steps) {
      TVector3& point = points.emplace_back(v);
      point += step;
      point.SetMag(frame.radius);
    }
  }
}

/// The limits of a test, the same for every plate.
struct Band {
  Band(const BellyPlateModel& model, double tolerance, double outerAVRadius)
      : halfHeight(model.BellyPlateHalfHeight + tolerance),
        dphi(IeeeQuotient(tolerance, outerAVRadius)) {}

  double halfHeight;  ///< mm
  double dphi;        ///< the tolerance as an angle, rad
};

/// The angles from a plate's centre to its edges, rad.
struct EdgeAngles {
  EdgeAngles(const TVector3& plate, const BellyPlateModel& model,
             const Band& band, eDiagnostics diagnostics) {
    const PlateFrame frame(plate, model.BellyPlateHalfHeight, diagnostics);
    left = WithPhi(plate, frame.phiStart - band.dphi).Angle(plate);
    right =
        WithPhi(plate, band.dphi + (frame.width + frame.phiStart)).Angle(plate);
  }

  double left = 0.0;
  double right = 0.0;
};

bool IsWithinAPlate(TVector3 point, const BellyPlateModel& model,
                    const Band& band, eDiagnostics diagnostics) {
  if (!(point.Z() < band.halfHeight && point.Z() > -band.halfHeight)) {
    return false;
  }
  const auto& plates = model.BellyPlatePositions;
  // Lists are counted in single precision throughout this system.
  for (float k = 0; static_cast<float>(plates.size()) > k; k += 1.0F) {
    const TVector3& plate = plates[static_cast<std::size_t>(k)];
    const EdgeAngles edges(plate, model, band, diagnostics);
    // At the height of the plate's centre only the azimuth counts.
    point.SetZ(plate.Z());
    const double alpha = point.Angle(plate);
    if (edges.left > alpha && edges.right > alpha) return true;
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
  ReserveGrids(tolerance, plates.size(), model.BellyPlateGridPoints);
  for (float k = 0; static_cast<float>(plates.size()) > k; k += 1.0F) {
    const PlateFrame frame(plates[static_cast<std::size_t>(k)],
                           model.BellyPlateHalfHeight, eDiagnostics::kWritten);
    AppendGrid(frame, tolerance, model.BellyPlateHalfHeight,
               model.BellyPlateGridPoints);
  }
}

bool CheckForBellyPlateShadowing(const BellyPlateModel& model, double tolerance,
                                 double outerAVRadius,
                                 const WaterSegments& path,
                                 eDiagnostics diagnostics) {
  if (path.kind == ePathKind::kWater ||
      path.kind == ePathKind::kUninitialised ||
      path.kind == ePathKind::kMisspeltUninitialised) {
    return false;
  }
  const Band band(model, tolerance, outerAVRadius);
  if (IsWithinAPlate(path.first.point, model, band, diagnostics)) return true;
  return path.kind == ePathKind::kTwoCrossings &&
         IsWithinAPlate(path.second.point, model, band, diagnostics);
}

bool WarnsOfZeroVectors(const BellyPlateModel& model) {
  const auto& plates = model.BellyPlatePositions;
  const TVector3 up = model.BellyPlateHalfHeight * kZHat;
  return std::any_of(plates.begin(), plates.end(), [&](const TVector3& plate) {
    return (plate - up).Mag() == 0.0 || (plate + up).Mag() == 0.0;
  });
}

PreparedBellyPlates::PreparedBellyPlates(const BellyPlateModel& model,
                                         double tolerance,
                                         double outerAVRadius) {
  const Band band(model, tolerance, outerAVRadius);
  halfHeight_ = band.halfHeight;
  for (const TVector3& centre : model.BellyPlatePositions) {
    const EdgeAngles edges(centre, model, band, eDiagnostics::kSilent);
    Plate plate = {centre, edges.left, edges.right, -1.0, 2.0};
    if (edges.left > 0.0 && edges.right > 0.0) {
      plate.limit = std::min(edges.left, edges.right);
      plate.limitCosine = std::cos(plate.limit);
    }
    plates_.push_back(plate);
  }
}

bool PreparedBellyPlates::IsInside(const Plate& plate, const TVector3& point) {
  const double z = plate.centre.Z();
  const double x = point.X();
  const double y = point.Y();
  // Beyond these squares the library's angle may overflow or underflow.
  constexpr double kSmallest = 1e-60;
  constexpr double kLargest = 1e60;
  const double squares = (x * x + y * y + z * z) * plate.centre.Mag2();
  if (squares > kSmallest && squares < kLargest) {
    const double lengths = std::sqrt(squares);
    const double over = x * plate.centre.X() + y * plate.centre.Y() + z * z -
                        plate.limitCosine * lengths;
    if (over > kBand * lengths) return true;
    if (over < -kBand * lengths) return false;
  }
  const double alpha = TVector3(x, y, z).Angle(plate.centre);
  return plate.left > alpha && plate.right > alpha;
}

bool PreparedBellyPlates::Block(const TVector3& point) const {
  return IsAsHigh(point) &&
         std::any_of(plates_.begin(), plates_.end(), [&](const Plate& plate) {
           return IsInside(plate, point);
         });
}

bool PreparedBellyPlates::Block(const TVector3& point, const CellItems& plates,
                                CellItems::Range range) const {
  const std::uint32_t* const items = plates.Items().data();
  return IsAsHigh(point) && std::any_of(items + range.begin, items + range.end,
                                        [&](std::uint32_t i) {
                                          return IsInside(plates_[i], point);
                                        });
}

std::uint32_t PreparedBellyPlates::CountItems() const {
  return static_cast<std::uint32_t>(plates_.size());
}

eAnswer PreparedBellyPlates::Judge(const Ball& ball, const Items& items,
                                   Items& open) const {
  constexpr double kRounding = 1e-6;  // mm and rad
  const double radius = ball.radius + kRounding;
  const double z = std::abs(ball.centre.z);
  if (!(z < halfHeight_ + radius)) return eAnswer::kClear;  // also NaN
  const bool isInBand = z < halfHeight_ - radius;
  for (const std::uint32_t i : items) {
    const Plate& plate = plates_[i];
    const TVector3 level(ball.centre.x, ball.centre.y, plate.centre.Z());
    const double distance = level.Mag();
    const double angle = level.Angle(plate.centre);
    // By how much the angle can differ within the ball.
    const double spread =
        distance > radius ? std::asin(radius / distance) + kRounding : kPi;
    if (isInBand && angle + spread < plate.limit) return eAnswer::kBlocks;
    if (!(angle - spread >= plate.limit)) open.push_back(i);
  }
  return open.empty() ? eAnswer::kClear : eAnswer::kUnsure;
}

}  // namespace ZARN::DU

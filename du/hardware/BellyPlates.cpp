#include "du/hardware/BellyPlates.hpp"

#include <algorithm>
#include <cmath>

#include "db/ReadField.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/GeometryTables.hpp"

namespace ZARN::DU {
namespace {

/// Reserve memory for the grids of all plates, unless they are so large that
/// there may not be enough.
void ReserveGrids(double n, std::size_t plates, std::vector<TVector3>& points) {
  constexpr double kMost = 1e7;
  const double side = std::ceil(n);
  const double count = side * side * static_cast<double>(plates);
  if (n > 0.0 && count < kMost) points.reserve(static_cast<std::size_t>(count));
}

/// Append n x n points that cover a plate except its far edges; none unless n
/// is above 0.
void AppendGrid(const BellyPlateFrame& frame, double n, double halfHeight,
                std::vector<TVector3>& points) {
  std::vector<TVector3> steps;
  for (double b = 0; n > b; ++b) {
    steps.push_back((2 * (b / n) * halfHeight) * ZHat());
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

template <class Visitor>
bool WalkPlates(const TVector3& point, const BellyPlateModel& model,
                const BellyPlateBand& band, eWaterSegment segment,
                eDiagnostics diagnostics, const Visitor& visit) {
  if (!band.Holds(point.Z())) {
    return visit({eShadowingRule::kOffPlateBand, segment, std::abs(point.Z()),
                  band.halfHeight});
  }
  const auto& plates = model.BellyPlatePositions;
  return WalkList(plates.size(), [&](std::size_t position) {
    const TVector3& plate = plates[position];
    const BellyPlateFrame frame(plate, model.BellyPlateHalfHeight, diagnostics);
    const BellyPlateEdges edges(plate, frame, band);
    const double alpha = BellyPlateAngle(point, plate);
    return visit({eShadowingRule::kBellyPlate, segment, alpha,
                  edges.LimitOf(alpha), position});
  });
}

template <class Visitor>
bool Walk(const BellyPlateModel& model, double tolerance, double outerAVRadius,
          const WaterSegments& path, eDiagnostics diagnostics,
          const Visitor& visit) {
  const BellyPlateBand band(model, tolerance, outerAVRadius);
  return WalkPlateCrossings(
      path, [&](const TVector3& point, eWaterSegment segment) {
        return WalkPlates(point, model, band, segment, diagnostics, visit);
      });
}

}  // namespace

BellyPlateBand::BellyPlateBand(const BellyPlateModel& model, double tolerance,
                               double outerAVRadius)
    : halfHeight(model.BellyPlateHalfHeight + tolerance),
      dphi(IeeeQuotient(tolerance, outerAVRadius)) {}

BellyPlateFrame::BellyPlateFrame(const TVector3& centre, double halfHeight,
                                 eDiagnostics diagnostics)
    : radius(centre.Mag()),
      bottom(WithMag(centre - halfHeight * ZHat(), radius, diagnostics)),
      width(WithMag(centre + halfHeight * ZHat(), radius, diagnostics)
                .Angle(bottom)),
      phiStart(centre.Phi() - 0.5 * width) {}

BellyPlateEdges::BellyPlateEdges(const TVector3& plate,
                                 const BellyPlateFrame& frame,
                                 const BellyPlateBand& band) {
  left = WithPhi(plate, frame.phiStart - band.dphi).Angle(plate);
  right =
      WithPhi(plate, band.dphi + (frame.width + frame.phiStart)).Angle(plate);
}

void BellyPlateModel::Clear() {
  BellyPlatePositions.clear();
  BellyPlateGridPoints.clear();
}

void LoadBellyPlateInfo(const TableSet& tables, BellyPlateModel& model,
                        double tolerance) {
  model.BellyPlateHalfHeight = ReadNumber(tables, "SOLID", "belly_plate_vintar",
                                          "octahedron_half_height");
  model.BellyPlateLocations =
      ReadString(tables, "GEO", "inner_av", "belly_plate_locations");
  FillXYZPositions(tables, model.BellyPlatePositions, "GEO_LOCATIONS",
                   model.BellyPlateLocations, "x", "y", "z");
  const auto& plates = model.BellyPlatePositions;
  ReserveGrids(tolerance, plates.size(), model.BellyPlateGridPoints);
  for (float k = 0; static_cast<float>(plates.size()) > k; k += 1.0F) {
    const BellyPlateFrame frame(plates[static_cast<std::size_t>(k)],
                                model.BellyPlateHalfHeight,
                                eDiagnostics::kWritten);
    AppendGrid(frame, tolerance, model.BellyPlateHalfHeight,
               model.BellyPlateGridPoints);
  }
}

double BellyPlateAngle(TVector3 point, const TVector3& plate) {
  // At the height of the plate's centre the angle depends only on the azimuth.
  point.SetZ(plate.Z());
  return point.Angle(plate);
}

bool CheckForBellyPlateShadowing(const BellyPlateModel& model, double tolerance,
                                 double outerAVRadius,
                                 const WaterSegments& path,
                                 eDiagnostics diagnostics) {
  return Walk(model, tolerance, outerAVRadius, path, diagnostics,
              StopAtBlocking());
}

void VisitBellyPlateTests(const BellyPlateModel& model, double tolerance,
                          double outerAVRadius, const WaterSegments& path,
                          const ShadowingTestVisitor& visitor) {
  Walk(model, tolerance, outerAVRadius, path, eDiagnostics::kSilent,
       VisitAll{visitor, nullptr});
}

bool WarnsOfZeroVectors(const BellyPlateModel& model) {
  const auto& plates = model.BellyPlatePositions;
  const TVector3 up = model.BellyPlateHalfHeight * ZHat();
  return std::any_of(plates.begin(), plates.end(), [&](const TVector3& plate) {
    return (plate - up).Mag() == 0.0 || (plate + up).Mag() == 0.0;
  });
}

}  // namespace ZARN::DU

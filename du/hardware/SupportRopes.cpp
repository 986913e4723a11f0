#include "du/hardware/SupportRopes.hpp"

#include <algorithm>
#include <cmath>

#include "db/ReadField.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"
#include "du/hardware/GeometryTables.hpp"
#include "du/hardware/LegTests.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {
namespace {

/// The cylinder on which the ropes stand.
class RopeCylinder {
 public:
  RopeCylinder(const SupportRopeModel& model, double tolerance,
               eDiagnostics diagnostics)
      : model_(model),
        diagnostics_(diagnostics),
        foot_(model.SupportRopePositions.front()),
        radius_(foot_.Mag()),
        angleTolerance_(SupportRopeAngleTolerance(model, tolerance)) {}

  double Radius() const { return radius_; }
  double AngleTolerance() const { return angleTolerance_; }
  eDiagnostics Diagnostics() const { return diagnostics_; }

  /// The top of the first rope.
  TVector3 Top() const {
    return VectorToSphereEdge(foot_, ZHat(), kRopeEndSphereRadius, false,
                              diagnostics_);
  }

  template <class Visitor>
  bool WalkCrossing(const WaterSegment& path, eWaterSegment segment,
                    const Visitor& visit) const {
    const TVector3 crossing = VectorToCylinderEdge(
        path.point, path.direction, TVector3(0, 0, 0), radius_, diagnostics_);
    const double top = Top().Z();
    if (std::abs(crossing.Z()) > top) {
      return visit(
          {eShadowingRule::kBeyondRopes, segment, std::abs(crossing.Z()), top});
    }
    const TVector3 flat = Flattened(crossing);
    const auto& ropes = model_.SupportRopePositions;
    return visit.WalkItems(eShadowingRule::kSupportRope, flat, ropes.size(),
                           [&](std::size_t position) {
                             return visit({eShadowingRule::kSupportRope,
                                           segment, flat.Angle(ropes[position]),
                                           angleTolerance_, position});
                           });
  }

  template <class Visitor>
  bool WalkSegment(const WaterSegment& path, eWaterSegment segment,
                   const Visitor& visit) const {
    if (!(path.point.Z() > foot_.Z())) {
      return visit(
          {eShadowingRule::kBelowRopes, segment, path.point.Z(), foot_.Z()});
    }
    return WalkCrossing(path, segment, visit);
  }

 private:
  const SupportRopeModel& model_;
  eDiagnostics diagnostics_;
  const TVector3& foot_;
  double radius_;
  double angleTolerance_;
};

/// The tests of a path in water that has no end inside the support rope
/// cylinder: against the hold-down ropes.
template <class Visitor>
bool WalkHoldDownRopes(const AVHDRopeModel& ropes, const RopeCylinder& cylinder,
                       const WaterSegments& path, const Visitor& visit) {
  if (!HasAVHDRopes(ropes)) {
    return visit({eShadowingRule::kNoLegs, eWaterSegment::kBoth});
  }
  const double h = ropes.AVHDRopeEndPoints.front().Mag();
  const TVector3 start = Flattened(path.first.point);
  const TVector3 end = Flattened(path.second.point);
  const double startDistance = start.Mag();
  const double endDistance = end.Mag();
  if (startDistance <= h || endDistance <= h) {
    return visit({eShadowingRule::kInsideLegCylinder, eWaterSegment::kBoth,
                  std::min(startDistance, endDistance), h});
  }
  const double closest = ClosestAngle(start, h);
  const double apart = start.Angle(end);
  if (closest <= apart) {
    return visit(
        {eShadowingRule::kEndsApart, eWaterSegment::kBoth, apart, closest});
  }

  const TVector3 origin(0, 0, 0);
  const TVector3 first =
      VectorToCylinderEdge(path.first.point, path.first.direction, origin, h,
                           cylinder.Diagnostics());
  const TVector3 second =
      VectorToCylinderEdge(path.second.point, path.second.direction, origin, h,
                           cylinder.Diagnostics());
  const double topDistance = cylinder.Top().Mag();
  const auto walkAt = [&](const TVector3& crossing, const TVector3& tested,
                          eWaterSegment segment) {
    if (std::abs(crossing.Z()) > topDistance) {
      return visit({eShadowingRule::kBeyondRopes, segment,
                    std::abs(crossing.Z()), topDistance});
    }
    return WalkLegs(ropes, tested, cylinder.AngleTolerance(), segment, visit);
  };
  // The first crossing is flattened for the angle test and the second is not.
  // This asymmetry is intentional.
  return walkAt(first, Flattened(first), eWaterSegment::kFirst) ||
         walkAt(second, second, eWaterSegment::kSecond);
}

template <class Visitor>
bool WalkWater(const AVHDRopeModel& holdDownRopes, const RopeCylinder& cylinder,
               const WaterSegments& path, const Visitor& visit) {
  const double r = cylinder.Radius();
  const double startDistance = Flattened(path.first.point).Mag();
  const double endDistance = Flattened(path.second.point).Mag();
  if (r > startDistance && r > endDistance) {
    return visit({eShadowingRule::kInsideRopeCylinder, eWaterSegment::kBoth,
                  std::max(startDistance, endDistance), r});
  }
  if (startDistance < r && endDistance > r) {
    return cylinder.WalkCrossing(path.first, eWaterSegment::kFirst, visit);
  }
  if (startDistance > r && endDistance < r) {
    return cylinder.WalkCrossing(path.second, eWaterSegment::kSecond, visit);
  }
  return WalkHoldDownRopes(holdDownRopes, cylinder, path, visit);
}

template <class Visitor>
bool Walk(const SupportRopeModel& model, const AVHDRopeModel& holdDownRopes,
          double tolerance, const WaterSegments& path, eDiagnostics diagnostics,
          const Visitor& visit) {
  ZARN_ASSERT(HasSupportRopes(model), model.SupportRopePositions.size());
  const RopeCylinder cylinder(model, tolerance, diagnostics);
  switch (path.kind) {
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
      return false;
    case ePathKind::kWater:
      return WalkWater(holdDownRopes, cylinder, path, visit);
    case ePathKind::kTwoCrossings:
      return cylinder.WalkSegment(path.first, eWaterSegment::kFirst, visit) ||
             cylinder.WalkSegment(path.second, eWaterSegment::kSecond, visit);
    case ePathKind::kOneCrossing:
    case ePathKind::kUnknown:
      break;
  }
  return cylinder.WalkSegment(path.first, eWaterSegment::kFirst, visit);
}

}  // namespace

void SupportRopeModel::Clear() {
  SupportRopePositions.clear();
  SupportRopeLinePoints.clear();
}

void LoadSupportRopeInfo(const TableSet& tables, SupportRopeModel& model,
                         double outerAVRadius) {
  std::string solid =
      ReadString(tables, "GEO", "hold_up_ropes", "solid_definition");
  model.SupportRopeRadius = ReadNumber(tables, "SOLID", solid, "r_rope");
  solid = ReadString(tables, "GEO", "hold_up_ropes", "solid_definition");
  model.SupportRopeLength = ReadNumber(tables, "SOLID", solid, "z_rope");
  const double plateHalfHeight = ReadNumber(
      tables, "SOLID", "belly_plate_vintar", "octahedron_half_height");
  model.SupportRopeLocations =
      ReadString(tables, "GEO", "hold_up_ropes", "locations");
  std::vector<TVector3> anchors;
  FillXYZPositions(tables, anchors, "GEO_LOCATIONS", model.SupportRopeLocations,
                   "x", "y", "z");

  const double spread =
      IeeeQuotient(0.6666666666666666 * plateHalfHeight, outerAVRadius);
  const double step = model.SupportRopeLength / 100.0;
  // Intentional: all lists are counted in single precision.
  for (float k = 0; static_cast<float>(anchors.size()) > k; k += 1.0F) {
    const TVector3& anchor = anchors[static_cast<std::size_t>(k)];
    const TVector3 forward = WithPhi(anchor, anchor.Phi() + spread);
    const TVector3 back = WithPhi(anchor, anchor.Phi() - spread);
    model.SupportRopePositions.push_back(forward);
    model.SupportRopePositions.push_back(back);
    for (int i = 1; i < 100; ++i) {
      const TVector3 up = (i * step) * ZHat();
      model.SupportRopeLinePoints.push_back(forward + up);
      model.SupportRopeLinePoints.push_back(back + up);
    }
  }
}

bool HasSupportRopes(const SupportRopeModel& model) {
  return !model.SupportRopePositions.empty();
}

bool IsAtSupportRope(const SupportRopeModel& model, double tolerance,
                     const WaterSegment& segment, eDiagnostics diagnostics) {
  ZARN_ASSERT(HasSupportRopes(model), model.SupportRopePositions.size());
  return RopeCylinder(model, tolerance, diagnostics)
      .WalkSegment(segment, eWaterSegment::kFirst, StopAtBlocking());
}

RopeCylinderLimits LimitsOfSupportRopes(const SupportRopeModel& model) {
  ZARN_ASSERT(HasSupportRopes(model), model.SupportRopePositions.size());
  const RopeCylinder cylinder(model, 0.0, eDiagnostics::kSilent);
  return {cylinder.Radius(), cylinder.Top().Z()};
}

double SupportRopeTopDistance(const SupportRopeModel& model) {
  ZARN_ASSERT(HasSupportRopes(model), model.SupportRopePositions.size());
  return RopeCylinder(model, 0.0, eDiagnostics::kSilent).Top().Mag();
}

double SupportRopeAngleTolerance(const SupportRopeModel& model,
                                 double tolerance) {
  ZARN_ASSERT(HasSupportRopes(model), model.SupportRopePositions.size());
  return IeeeQuotient(tolerance + model.SupportRopeRadius,
                      model.SupportRopePositions.front().Mag());
}

bool CheckForSupportRopeShadowing(const SupportRopeModel& model,
                                  const AVHDRopeModel& holdDownRopes,
                                  double tolerance, const WaterSegments& path,
                                  eDiagnostics diagnostics) {
  return Walk(model, holdDownRopes, tolerance, path, diagnostics,
              StopAtBlocking());
}

void VisitSupportRopeTests(const SupportRopeModel& model,
                           const AVHDRopeModel& holdDownRopes, double tolerance,
                           const WaterSegments& path,
                           const ShadowingTestVisitor& visitor,
                           const NearestItems* nearest) {
  Walk(model, holdDownRopes, tolerance, path, eDiagnostics::kSilent,
       VisitAll{visitor, nearest});
}

}  // namespace ZARN::DU

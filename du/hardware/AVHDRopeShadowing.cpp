#include "du/hardware/AVHDRopeShadowing.hpp"

#include <algorithm>
#include <cmath>

#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/LegTests.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {
namespace {

/// Tests the points where a path meets the rope cylinder against the vertical
/// ropes.
class VerticalRopes {
 public:
  VerticalRopes(const AVHDRopeModel& model, double tolerance,
                eDiagnostics diagnostics)
      : model_(model),
        diagnostics_(diagnostics),
        end_(model.AVHDRopeEndPoints.front()),
        cylinderRadius_(end_.Mag()),
        angleTolerance_(AVHDRopeAngleTolerance(model, tolerance)) {}

  double CylinderRadius() const { return cylinderRadius_; }

  TVector3 Foot() const {
    return VectorToSphereEdge(end_, TVector3(0, 0, -1.0), kRopeEndSphereRadius,
                              false, diagnostics_);
  }

  TVector3 CrossingOf(const WaterSegment& segment) const {
    return VectorToCylinderEdge(segment.point, segment.direction,
                                TVector3(0, 0, 0), cylinderRadius_,
                                diagnostics_);
  }

  template <class Visitor>
  bool WalkAt(const TVector3& crossing, const TVector3& foot,
              eWaterSegment segment, const Visitor& visit) const {
    if (foot.Z() > -std::abs(crossing.Z())) {
      return visit({eShadowingRule::kBeyondRopes, segment,
                    std::abs(crossing.Z()), -foot.Z()});
    }
    return WalkLegs(model_, Flattened(crossing), angleTolerance_, segment,
                    visit);
  }

 private:
  const AVHDRopeModel& model_;
  eDiagnostics diagnostics_;
  const TVector3& end_;
  double cylinderRadius_;
  double angleTolerance_;
};

template <class Visitor>
bool WalkSurface(const AVHDRopeModel& model, double tolerance,
                 const TVector3& point, eWaterSegment segment,
                 const Visitor& visit) {
  const double reach = AVHDRopeReach(model, tolerance);
  const auto& points = model.AVHDRopeSurfacePoints;
  return visit.WalkItems(
      eShadowingRule::kSurfacePoint, point, points.size(),
      [&](std::size_t position) {
        return visit({eShadowingRule::kSurfacePoint, segment,
                      (point - points[position]).Mag(), reach, position});
      });
}

template <class Visitor>
bool WalkVertical(const AVHDRopeModel& model, double tolerance,
                  const WaterSegment& path, eWaterSegment segment,
                  eDiagnostics diagnostics, const Visitor& visit) {
  const VerticalRopes ropes(model, tolerance, diagnostics);
  const TVector3 crossing = ropes.CrossingOf(path);
  return ropes.WalkAt(crossing, ropes.Foot(), segment, visit);
}

template <class Visitor>
bool WalkSegment(const AVHDRopeModel& model, double tolerance,
                 const WaterSegment& path, eWaterSegment segment,
                 eDiagnostics diagnostics, const Visitor& visit) {
  if (!(model.AVHDRopeEndPoints.front().Z() > path.point.Z())) {
    return WalkSurface(model, tolerance, path.point, segment, visit);
  }
  return WalkVertical(model, tolerance, path, segment, diagnostics, visit);
}

template <class Visitor>
bool WalkWater(const AVHDRopeModel& model, double tolerance,
               const WaterSegments& path, eDiagnostics diagnostics,
               const Visitor& visit) {
  const VerticalRopes ropes(model, tolerance, diagnostics);
  const double h = ropes.CylinderRadius();
  const TVector3 start = Flattened(path.first.point);
  const TVector3 end = Flattened(path.second.point);
  const double startDistance = start.Mag();
  const double endDistance = end.Mag();
  const TVector3 foot = ropes.Foot();

  if (startDistance < h && endDistance > h) {
    return ropes.WalkAt(ropes.CrossingOf(path.first), foot,
                        eWaterSegment::kFirst, visit);
  }
  if (startDistance > h && endDistance < h) {
    return ropes.WalkAt(ropes.CrossingOf(path.second), foot,
                        eWaterSegment::kSecond, visit);
  }
  if (startDistance > h && endDistance > h) {
    const double closest = ClosestAngle(start, h);
    const double apart = start.Angle(end);
    if (closest <= apart) {
      return visit(
          {eShadowingRule::kEndsApart, eWaterSegment::kBoth, apart, closest});
    }
    const TVector3 first = ropes.CrossingOf(path.first);
    const TVector3 second = ropes.CrossingOf(path.second);
    return ropes.WalkAt(first, foot, eWaterSegment::kFirst, visit) ||
           ropes.WalkAt(second, foot, eWaterSegment::kSecond, visit);
  }
  // Both ends inside, or an end exactly on the cylinder.
  return visit({eShadowingRule::kInsideRopeCylinder, eWaterSegment::kBoth,
                std::max(startDistance, endDistance), h});
}

template <class Visitor>
bool Walk(const AVHDRopeModel& model, double tolerance,
          const WaterSegments& path, eDiagnostics diagnostics,
          const Visitor& visit) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  switch (path.kind) {
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
      return false;
    case ePathKind::kWater:
      return WalkWater(model, tolerance, path, diagnostics, visit);
    case ePathKind::kTwoCrossings:
      return WalkSegment(model, tolerance, path.first, eWaterSegment::kFirst,
                         diagnostics, visit) ||
             WalkSegment(model, tolerance, path.second, eWaterSegment::kSecond,
                         diagnostics, visit);
    case ePathKind::kOneCrossing:
    case ePathKind::kUnknown:
      break;
  }
  return WalkSegment(model, tolerance, path.first, eWaterSegment::kFirst,
                     diagnostics, visit);
}

}  // namespace

bool HasAVHDRopes(const AVHDRopeModel& model) {
  return !model.AVHDRopeEndPoints.empty() &&
         model.AVHDRopePositions.size() >= 5;
}

bool IsAtVerticalAVHDRope(const AVHDRopeModel& model, double tolerance,
                          const WaterSegment& segment,
                          eDiagnostics diagnostics) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  return WalkVertical(model, tolerance, segment, eWaterSegment::kFirst,
                      diagnostics, StopAtBlocking());
}

std::vector<TVector3> AVHDRopeEnds(const AVHDRopeModel& model) {
  std::vector<TVector3> ends(2 * model.AVHDRopeRolls.size());
  for (std::size_t i = 0; i < ends.size(); ++i) ends[i] = AVHDRopeEnd(model, i);
  return ends;
}

RopeCylinderLimits LimitsOfAVHDRopes(const AVHDRopeModel& model) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  const VerticalRopes ropes(model, 0.0, eDiagnostics::kSilent);
  return {ropes.CylinderRadius(), -ropes.Foot().Z()};
}

double AVHDRopeReach(const AVHDRopeModel& model, double tolerance) {
  return model.AVHDRopeRadius + tolerance;
}

double AVHDRopeAngleTolerance(const AVHDRopeModel& model, double tolerance) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  return IeeeQuotient(tolerance + model.AVHDRopeRadius,
                      model.AVHDRopeEndPoints.front().Mag());
}

bool CheckForAVHDRopeShadowing(const AVHDRopeModel& model, double tolerance,
                               const WaterSegments& path,
                               eDiagnostics diagnostics) {
  return Walk(model, tolerance, path, diagnostics, StopAtBlocking());
}

void VisitAVHDRopeTests(const AVHDRopeModel& model, double tolerance,
                        const WaterSegments& path,
                        const ShadowingTestVisitor& visitor,
                        const NearestItems* nearest) {
  Walk(model, tolerance, path, eDiagnostics::kSilent,
       VisitAll{visitor, nearest});
}

}  // namespace ZARN::DU

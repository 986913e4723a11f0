#include "du/hardware/AVHDRopeShadowing.hpp"

#include <cmath>

#include "du/geometry/Constants.hpp"
#include "du/geometry/IeeeQuotient.hpp"
#include "du/geometry/Primitives.hpp"
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

  bool HasRopeAt(const TVector3& crossing, const TVector3& foot) const {
    if (foot.Z() > -std::abs(crossing.Z())) return false;  // beyond the ropes
    return IsAtAVHDRope(model_, Flattened(crossing), angleTolerance_);
  }

 private:
  const AVHDRopeModel& model_;
  eDiagnostics diagnostics_;
  const TVector3& end_;
  double cylinderRadius_;
  double angleTolerance_;
};

bool IsOnSurfaceRope(const AVHDRopeModel& model, double tolerance,
                     const TVector3& point) {
  const double reach = model.AVHDRopeRadius + tolerance;
  const auto& points = model.AVHDRopeSurfacePoints;
  // Intentional: all lists are counted in single precision.
  for (float k = 0; static_cast<float>(points.size()) > k; k += 1.0F) {
    if (reach > (point - points[static_cast<std::size_t>(k)]).Mag()) {
      return true;
    }
  }
  return false;
}

bool IsSegmentBlocked(const AVHDRopeModel& model, double tolerance,
                      const WaterSegment& segment, eDiagnostics diagnostics) {
  if (!(model.AVHDRopeEndPoints.front().Z() > segment.point.Z())) {
    return IsOnSurfaceRope(model, tolerance, segment.point);
  }
  return IsAtVerticalAVHDRope(model, tolerance, segment, diagnostics);
}

bool IsWaterPathBlocked(const AVHDRopeModel& model, double tolerance,
                        const WaterSegments& path, eDiagnostics diagnostics) {
  const VerticalRopes ropes(model, tolerance, diagnostics);
  const double h = ropes.CylinderRadius();
  const TVector3 start = Flattened(path.first.point);
  const TVector3 end = Flattened(path.second.point);
  const double startDistance = start.Mag();
  const double endDistance = end.Mag();
  const TVector3 foot = ropes.Foot();

  if (startDistance < h && endDistance > h) {
    return ropes.HasRopeAt(ropes.CrossingOf(path.first), foot);
  }
  if (startDistance > h && endDistance < h) {
    return ropes.HasRopeAt(ropes.CrossingOf(path.second), foot);
  }
  if (startDistance > h && endDistance > h) {
    if (ClosestAngle(start, h) <= start.Angle(end)) return false;
    const TVector3 first = ropes.CrossingOf(path.first);
    const TVector3 second = ropes.CrossingOf(path.second);
    return ropes.HasRopeAt(first, foot) || ropes.HasRopeAt(second, foot);
  }
  return false;  // both ends inside, or an end exactly on the cylinder
}

}  // namespace

bool HasAVHDRopes(const AVHDRopeModel& model) {
  return !model.AVHDRopeEndPoints.empty() &&
         model.AVHDRopePositions.size() >= 5;
}

bool IsAtAVHDRope(const AVHDRopeModel& model, const TVector3& point,
                  double angleTolerance) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  const auto& rolls = model.AVHDRopeRolls;
  for (float i = 0; static_cast<float>(rolls.size()) > i; i += 1.0F) {
    const double roll = rolls[static_cast<std::size_t>(i)];
    const TVector3 end4 = Rotated(model.AVHDRopePositions[4], roll);
    if (angleTolerance > point.Angle(end4)) return true;
    const TVector3 end1 = Rotated(model.AVHDRopePositions[1], kPi + roll);
    if (angleTolerance > point.Angle(end1)) return true;
  }
  return false;
}

bool IsAtVerticalAVHDRope(const AVHDRopeModel& model, double tolerance,
                          const WaterSegment& segment,
                          eDiagnostics diagnostics) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  const VerticalRopes ropes(model, tolerance, diagnostics);
  const TVector3 crossing = ropes.CrossingOf(segment);
  return ropes.HasRopeAt(crossing, ropes.Foot());
}

std::vector<TVector3> AVHDRopeEnds(const AVHDRopeModel& model) {
  std::vector<TVector3> ends;
  ends.reserve(2 * model.AVHDRopeRolls.size());
  for (const double roll : model.AVHDRopeRolls) {
    ends.push_back(Rotated(model.AVHDRopePositions[4], roll));
    ends.push_back(Rotated(model.AVHDRopePositions[1], kPi + roll));
  }
  return ends;
}

RopeCylinderLimits LimitsOfAVHDRopes(const AVHDRopeModel& model) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  const VerticalRopes ropes(model, 0.0, eDiagnostics::kSilent);
  return {ropes.CylinderRadius(), -ropes.Foot().Z()};
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
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  switch (path.kind) {
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
      return false;
    case ePathKind::kWater:
      return IsWaterPathBlocked(model, tolerance, path, diagnostics);
    case ePathKind::kTwoCrossings:
      return IsSegmentBlocked(model, tolerance, path.first, diagnostics) ||
             IsSegmentBlocked(model, tolerance, path.second, diagnostics);
    case ePathKind::kOneCrossing:
    case ePathKind::kUnknown:
      break;
  }
  return IsSegmentBlocked(model, tolerance, path.first, diagnostics);
}

}  // namespace ZARN::DU

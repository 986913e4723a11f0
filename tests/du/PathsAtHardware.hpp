#pragma once

#include <cmath>
#include <vector>

#include "TVector3.h"
#include "du/ShadowingCalculator.hpp"
#include "du/geometry/Constants.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"
#include "tests/du/Detector.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {

/// Tables of a detector with a boss so small that other components are reported
/// too.
inline Tables VariedTables() {
  return DetectorTables().Set("GEO", "av", "neck_boss_z", 5500.0);
}

/// A calculator in a run with VariedTables.
inline const DU::ShadowingCalculator& VariedDetector() {
  static const DU::ShadowingCalculator detector = InRun(VariedTables());
  return detector;
}

/// Light paths of all usual types around the hardware of a detector: half of
/// them anywhere, half where the hardware only just blocks or only just does
/// not.
class PathsAtHardware {
 public:
  PathsAtHardware(const DU::ShadowingCalculator& detector, std::uint64_t seed)
      : radius_(detector.GetOuterAVRadius()), random_(seed) {
    const double tolerance = detector.GetAVHDRopeTolerance();
    const auto& holdDown = detector.GetAVHDRopes();
    const auto& support = detector.GetSupportRopes();
    const auto& plates = detector.GetBellyPlates();
    const auto& anchors = detector.GetNCDAnchors();
    for (const TVector3& end : DU::AVHDRopeEnds(holdDown)) {
      AddAzimuths(end.Phi(), DU::AVHDRopeAngleTolerance(holdDown, tolerance));
      AddAzimuths(end.Phi(), DU::SupportRopeAngleTolerance(support, tolerance));
    }
    for (const TVector3& foot : support.SupportRopePositions) {
      AddAzimuths(foot.Phi(),
                  DU::SupportRopeAngleTolerance(support, tolerance));
    }
    for (const TVector3& plate : plates.BellyPlatePositions) {
      AddAzimuths(plate.Phi(),
                  plates.BellyPlateHalfHeight / radius_ + tolerance / radius_);
    }
    for (const double degrees : {75, 80, 85, 95, 100, 105}) {
      azimuths_.push_back(degrees / DU::kDegreesPerRadian);
    }
    const double band = plates.BellyPlateHalfHeight + tolerance;
    heights_ = {holdDown.AVHDRopeEndPoints.front().Z(),
                support.SupportRopePositions.front().Z(), band, -band};
    AddSpots(anchors.NCDAnchorPositions, anchors.NCDAnchorHalfZ + tolerance);
    AddSpots(holdDown.AVHDRopeSurfacePoints,
             holdDown.AVHDRopeRadius + tolerance);
    cylinders_ = {DU::LimitsOfAVHDRopes(holdDown).radius,
                  DU::LimitsOfSupportRopes(support).radius};
  }

  std::vector<DU::LightPath> Make(std::size_t count) {
    std::vector<DU::LightPath> paths(count);
    int type = 0;
    for (DU::LightPath& path : paths) {
      type = type % (DU::kNumberOfLightPathTypes - 1) + 1;
      path.LightPathType = static_cast<DU::eLightPathType>(type);
      path.InitialDirection = random_.Direction();
      path.StartPos = random_.Uniform(3000, 8500) * random_.Direction();
      if (random_.Chance(0.5)) {
        // From inside or outside of a cylinder, towards a rope.
        path.StartPos.SetPhi(Azimuth());
        path.InitialDirection.SetPhi(path.StartPos.Phi());
        if (random_.Chance(0.5)) path.InitialDirection *= -1;
      }
      path.EndPos =
          path.StartPos + random_.Uniform(0, 15000) * path.InitialDirection;
      if (random_.Chance(0.3)) PassACylinder(path);
      path.AVPoint1 = Crossing();
      path.AVPoint2 = Crossing();
      path.AVPoint3 = Crossing();
      path.AVPoint4 = Crossing();
      path.FinalDirection = DirectionFrom(path.*random_.Pick(DU::kAVPoints));
      if (type != DU::kWater && random_.Chance(0.5)) {
        path.InitialDirection = -DirectionFrom(path.AVPoint1);
      }
    }
    return paths;
  }

 private:
  /// Of either sign, as small as the last bits.
  double SmallNumber() {
    return (random_.Chance(0.5) ? 1 : -1) *
           std::pow(10, random_.Uniform(-16, -1));
  }
  double Azimuth() { return random_.Pick(azimuths_) + SmallNumber(); }

  void AddAzimuths(double phi, double halfWidth) {
    azimuths_.push_back(phi - halfWidth);
    azimuths_.push_back(phi + halfWidth);
  }
  void AddSpots(const std::vector<TVector3>& centres, double reach) {
    constexpr std::size_t kMost = 100;
    for (std::size_t i = 0; i < centres.size();
         i += 1 + centres.size() / kMost) {
      spots_.push_back({centres[i], reach});
    }
  }

  /// A point on the vessel.
  TVector3 Crossing() {
    TVector3 point = radius_ * random_.Direction();
    if (random_.Chance(0.4)) return point;
    if (random_.Chance(0.3)) {
      const Spot& spot = random_.Pick(spots_);
      const TVector3 axis = spot.centre.Cross(point).Unit();
      point = radius_ * spot.centre.Unit();
      point.Rotate(
          2 * std::asin(spot.reach / radius_ / 2) * (1 + SmallNumber()), axis);
      return point;
    }
    if (random_.Chance(0.7)) {
      const double z = random_.Pick(heights_) * (1 + SmallNumber());
      point.SetPerp(std::sqrt(radius_ * radius_ - z * z));
      point.SetZ(z);
    }
    point.SetPhi(Azimuth());
    return point;
  }
  /// A direction away from the axis, or any direction.
  TVector3 DirectionFrom(const TVector3& point) {
    TVector3 direction = random_.Direction();
    if (random_.Chance(0.6)) direction.SetPhi(point.Phi());
    return direction;
  }
  /// Put both ends outside a cylinder, so far apart that the line between them
  /// only just meets it or only just does not.
  void PassACylinder(DU::LightPath& path) {
    const double radius = random_.Pick(cylinders_);
    path.StartPos.SetPerp(random_.Uniform(1.001, 1.4) * radius);
    path.EndPos = path.StartPos;
    path.EndPos.RotateZ(std::asin(radius / path.StartPos.Perp()) *
                        (random_.Chance(0.5) ? 1 + SmallNumber() : 0.9));
    path.EndPos.SetZ(random_.Uniform(-6000, 6000));
    path.InitialDirection = (path.EndPos - path.StartPos).Unit();
  }

  struct Spot {
    TVector3 centre;
    double reach;
  };
  double radius_;
  Random random_;
  std::vector<double> azimuths_;
  std::vector<double> heights_;
  std::vector<Spot> spots_;
  std::vector<double> cylinders_;
};

}  // namespace ZARN::Testing

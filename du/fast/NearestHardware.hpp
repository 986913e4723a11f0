#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "TVector3.h"
#include "du/geometry/NearestPoint.hpp"
#include "du/geometry/Point.hpp"
#include "du/hardware/CriticalTolerance.hpp"
#include "du/hardware/Hardware.hpp"
#include "du/hardware/ShadowingTest.hpp"

namespace ZARN::DU {

/// Finds the directions whose angle to a point, seen from the centre, is the
/// smallest by TVector3::Angle.
class NearestDirections {
 public:
  NearestDirections() = default;
  explicit NearestDirections(const std::vector<TVector3>& directions);

  /// Call @p work with the position of each direction that can be the nearest.
  template <class Work>
  void ForEach(const TVector3& point, const Work& work) const;

 private:
  /// Cosines nearer to the largest than this are left to the angle: that of
  /// RopeDirections::kCosineBand, for two angles.
  static constexpr double kBand = 2e-13;

  std::size_t count_ = 0;
  std::vector<Point> units_;  // empty if no product can judge some direction
};

/// Finds the belly plates that can be the first to block a crossing as the
/// tolerance grows: those whose edge is nearest in azimuth.
class NearestPlates {
 public:
  NearestPlates(const std::vector<TVector3>& plates,
                const BellyPlateOutlines& outlines);

  /// Call @p work with the position of each.
  template <class Work>
  void ForEach(const TVector3& point, const Work& work) const;

 private:
  /// Edges that are nearer to each other than this are left to the formula,
  /// rad; far more than the error of its azimuths at z = 0, which is 1e-7.
  static constexpr double kBand = 1e-5;

  struct Plate {
    double phi;
    double halfWidth;
    double BeyondEdge(double azimuth) const;
  };
  std::size_t count_;
  std::vector<Plate> plates_;  // empty if azimuths cannot judge some plate
};

/// The nearest items of the hardware, for critical tolerances: the same for
/// every tolerance. Immutable; small against the layers, and made in a few
/// milliseconds.
class NearestHardware final : public NearestItems {
 public:
  explicit NearestHardware(const Hardware& hardware);

  void ForEach(eShadowingRule rule, const TVector3& point,
               const std::function<void(std::size_t)>& work) const override;

  const BellyPlateOutlines& Outlines() const { return outlines_; }

 private:
  NearestPoint surfacePoints_;
  NearestDirections legs_;
  NearestDirections supportRopes_;
  NearestPoint anchors_;
  BellyPlateOutlines outlines_;
  NearestPlates plates_;
};

}  // namespace ZARN::DU

#pragma once

#include <vector>

#include "TVector3.h"
#include "du/geometry/BallTest.hpp"
#include "du/geometry/Stretch.hpp"
#include "du/hardware/BellyPlates.hpp"

namespace ZARN::DU {

/// The plates with everything precomputed that does not depend on the path: the
/// test of one crossing point, with exactly the formula's answer.
///
/// The formula compares an angle with two limits of the plate. Here its cosine
/// is compared first; within kBand of the limit the arc cosine decides.
class PreparedBellyPlates final : public BallTest {
 public:
  /// Least difference between the cosine of an angle and that of the limit that
  /// decides. With u = 2^-53: this class and the formula divide the same scalar
  /// product by the same length, so they differ by the roundings after that.
  /// The formula's quotient and arc cosine change the cosine by 5 u, the
  /// products here and the cosine of the limit by 4 u, together 1e-15.
  static constexpr double kBand = 1e-9;

  PreparedBellyPlates() = default;
  PreparedBellyPlates(const BellyPlateModel& model, double tolerance,
                      double outerAVRadius);

  /// Whether a plate blocks a path that crosses the vessel at @p point.
  bool HasPlateAt(const TVector3& point) const;
  /// The same for a range of the plates.
  bool HasPlateAt(const TVector3& point, Stretch plates) const;

  /// The answer of a range of the plates for every point of a ball.
  eAnswer JudgePlates(const Ball& ball, Stretch plates) const;

  Items AllItems() const override;
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;
  void AppendEntries(const Items& items, StretchLists& list) const override;

 private:
  struct Plate {
    TVector3 centre;
    double left;         ///< angle from the centre to each edge, rad
    double right;        ///< rad
    double limit;        ///< the smaller of both; -1 if nothing is blocked
    double limitCosine;  ///< of limit; 2 if nothing is blocked
  };

  bool IsAsHigh(const TVector3& point) const {
    return point.Z() < halfHeight_ && point.Z() > -halfHeight_;
  }
  static bool IsInside(const Plate& plate, const TVector3& point);
  /// The answer for the points of a ball in the height of the plates.
  enum class eHeight { kInside, kUnsure, kOutside };
  eHeight HeightOf(const Ball& ball) const;
  static eAnswer JudgePlate(const Plate& plate, const Ball& ball,
                            eHeight height);

  double halfHeight_ = 0.0;
  std::vector<Plate> plates_;
};

}  // namespace ZARN::DU

#pragma once

#include <cstddef>

#include "TVector3.h"
#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {

/// Walk over the tests of a point against the legs of the hold-down ropes, for
/// the two formulas that use them: its angle to each leg, seen from the centre,
/// and the limit @p angleTolerance, rad.
///
/// @param point  where a path meets the rope cylinder, mm; flattened, since the
///               leg tops lie close to z = 0
/// @param visit  called with each ShadowingTest; returns whether to stop
/// @return whether the walk was stopped
/// @pre HasAVHDRopes(model)
template <class Visitor>
bool WalkLegs(const AVHDRopeModel& model, const TVector3& point,
              double angleTolerance, eWaterSegment segment,
              const Visitor& visit) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  const auto& rolls = model.AVHDRopeRolls;
  // Intentional: all lists are counted in single precision.
  for (float i = 0; static_cast<float>(rolls.size()) > i; i += 1.0F) {
    const auto rope = static_cast<std::size_t>(i);
    const double roll = rolls[rope];
    const TVector3 end4 = Rotated(model.AVHDRopePositions[4], roll);
    if (visit({eShadowingRule::kLeg, segment, point.Angle(end4), angleTolerance,
               2 * rope})) {
      return true;
    }
    const TVector3 end1 = Rotated(model.AVHDRopePositions[1], kPi + roll);
    if (visit({eShadowingRule::kLeg, segment, point.Angle(end1), angleTolerance,
               2 * rope + 1})) {
      return true;
    }
  }
  return false;
}

}  // namespace ZARN::DU

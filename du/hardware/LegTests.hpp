#pragma once

#include <cstddef>

#include "TVector3.h"
#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {

/// The leg top of a test of the legs, by its position in their order: two for
/// each roll, mm. @pre HasAVHDRopes(model)
inline TVector3 AVHDRopeEnd(const AVHDRopeModel& model, std::size_t position) {
  const double roll = model.AVHDRopeRolls[position / 2];
  return position % 2 == 0 ? Rotated(model.AVHDRopePositions[4], roll)
                           : Rotated(model.AVHDRopePositions[1], kPi + roll);
}

/// Walk over the tests of a point against the legs of the hold-down ropes, for
/// the two formulas that use them: its angle to each leg, seen from the centre,
/// and the limit @p angleTolerance, rad.
///
/// @param point  where a path meets the rope cylinder, mm; flattened, since the
///               leg tops lie close to z = 0
/// @param visit  StopAtBlocking or VisitAll
/// @return whether the walk was stopped
/// @pre HasAVHDRopes(model)
template <class Visitor>
bool WalkLegs(const AVHDRopeModel& model, const TVector3& point,
              double angleTolerance, eWaterSegment segment,
              const Visitor& visit) {
  ZARN_ASSERT(HasAVHDRopes(model), model.AVHDRopeEndPoints.size(),
              model.AVHDRopePositions.size());
  return visit.WalkItems(
      eShadowingRule::kLeg, point, 2 * model.AVHDRopeRolls.size(),
      [&](std::size_t position) {
        return visit({eShadowingRule::kLeg, segment,
                      point.Angle(AVHDRopeEnd(model, position)), angleTolerance,
                      position});
      });
}

}  // namespace ZARN::DU

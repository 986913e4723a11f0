#pragma once

#include "du/geometry/BallTest.hpp"

namespace ZARN::DU {

/// IsWithinAVPipeBands (du/hardware/AVPipes.hpp) for all points of a ball.
class AVPipeBands final : public BallTest {
 public:
  Items AllItems() const override { return {}; }
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;
  void AppendEntries(const Items& /*items*/,
                     StretchLists& /*list*/) const override {}
};

}  // namespace ZARN::DU

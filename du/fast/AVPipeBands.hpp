#pragma once

#include "du/geometry/BallTest.hpp"

namespace ZARN::DU {

/// IsWithinAVPipeBands (du/hardware/AVPipes.hpp) for all points of a ball.
class AVPipeBands final : public BallTest {
 public:
  std::uint32_t CountItems() const override { return 1; }
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;
};

}  // namespace ZARN::DU

#pragma once

#include "du/geometry/BallTest.hpp"
#include "du/hardware/NeckBoss.hpp"

namespace ZARN::DU {

/// IsUnderNeckBoss for all points of a ball.
class NeckBossCap final : public BallTest {
 public:
  explicit NeckBossCap(const NeckBossModel& model) : model_(model) {}

  std::uint32_t CountItems() const override { return 1; }
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;

 private:
  NeckBossModel model_;
};

}  // namespace ZARN::DU

#pragma once

#include "du/geometry/BallTest.hpp"
#include "du/hardware/NeckBoss.hpp"

namespace ZARN::DU {

/// IsUnderNeckBoss for all points of a ball.
class NeckBossCap final : public BallTest {
 public:
  explicit NeckBossCap(const NeckBossModel& model) : model_(model) {}

  Items AllItems() const override { return {}; }
  eAnswer Judge(const Ball& ball, const Items& items,
                Items& open) const override;
  void AppendEntries(const Items& /*items*/,
                     StretchLists& /*list*/) const override {}

 private:
  NeckBossModel model_;
};

}  // namespace ZARN::DU

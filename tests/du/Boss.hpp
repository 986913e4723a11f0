#pragma once

#include "du/hardware/NeckBoss.hpp"

namespace ZARN::Testing {

inline DU::NeckBossModel BossWithAngle(double angle) {
  DU::NeckBossModel model;
  model.NeckBossAngle = angle;
  return model;
}

}  // namespace ZARN::Testing

#pragma once

#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::DU {

/// The messages for ZARN::warn when a run loads a component.
struct LoadMessages {
  const char* onSuccess;
  const char* onFailure;
};

/// The messages of a component; empty for kNone.
LoadMessages LoadMessagesOf(eShadowingComponent component);

}  // namespace ZARN::DU

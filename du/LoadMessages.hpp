#pragma once

#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::DU {

/// What ZARN::warn is told of a component when a run is set up.
struct LoadMessages {
  const char* onSuccess;
  const char* onFailure;
};

/// The messages of a component, not of kNone.
LoadMessages LoadMessagesOf(eShadowingComponent component);

}  // namespace ZARN::DU

#include "du/LoadMessages.hpp"

namespace ZARN::DU {

LoadMessages LoadMessagesOf(eShadowingComponent component) {
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return {
          "ShadowingCalculator: Loaded AV hold-down rope shadowing "
          "information.\n",
          "ShadowingCalculator: Cannot load AV hold-down rope parameters, "
          "these will not be loaded.\n"};
    case eShadowingComponent::kSupportRope:
      return {
          "ShadowingCalculator: Loaded AV support rope shadowing "
          "information.\n",
          "ShadowingCalculator: Cannot load support rope parameters, these "
          "will not be loaded.\n"};
    case eShadowingComponent::kBellyPlate:
      return {
          "ShadowingCalculator: Loaded belly plate shadowing "
          "information.\n",
          "ShadowingCalculator: Cannot load belly plate parameters, these "
          "will not be loaded.\n"};
    case eShadowingComponent::kNCDAnchor:
      return {
          "ShadowingCalculator: Loaded NCD anchor shadowing "
          "information.\n",
          "ShadowingCalculator: Cannot load NCD anchor parameters, these "
          "will not be loaded.\n"};
    case eShadowingComponent::kAVPipe:
      return {"ShadowingCalculator: Loaded AV pipe shadowing information.\n",
              "ShadowingCalculator: Cannot load AV pipe parameters, these will "
              "not be loaded.\n"};
    case eShadowingComponent::kNeckBoss:
      // A word is missing on purpose: users search their logs for this text.
      return {"ShadowingCalculator: Loaded neck boss shadowing information.\n",
              "ShadowingCalculator: Cannot neck boss parameters, these will "
              "not be loaded.\n"};
    case eShadowingComponent::kNone:
      break;
  }
  return {"", ""};
}

}  // namespace ZARN::DU

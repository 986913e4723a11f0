#include "du/UnusualPathMessages.hpp"

#include "log/Log.hpp"

namespace ZARN::DU {
namespace {

// Users search their logs for these texts, so their mistakes are intentional:
// several tests print the name of another test, and "light" is repeated.

const char* UninitialisedText(eShadowingComponent component) {
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return "ShadowingCalculator::CheckAVHDRopeShadowing: "
             "LightPathCalculator object is uninitialised, call "
             "LightPathCalculator::CalcByPosition first before checking for "
             "shadowing!\n";
    case eShadowingComponent::kSupportRope:
    case eShadowingComponent::kNCDAnchor:
      return "ShadowingCalculator::CheckForSupportRopeShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    case eShadowingComponent::kBellyPlate:
      return "ShadowingCalculator::CheckForBellyPlateShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    case eShadowingComponent::kAVPipe:
    case eShadowingComponent::kNeckBoss:
      return "ShadowingCalculator::CheckForAVHDRopeShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    case eShadowingComponent::kNone:
      break;
  }
  return "";
}

std::string UnknownText(eShadowingComponent component,
                        const std::string& name) {
  const char* test = nullptr;
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      test = "CheckForAVHDRopeShadowing";
      break;
    case eShadowingComponent::kSupportRope:
      test = "CheckForSupportRopeShadowing";
      break;
    case eShadowingComponent::kBellyPlate:
      test = "CheckForBellyPlateShadowing";
      break;
    case eShadowingComponent::kNCDAnchor:
    case eShadowingComponent::kAVPipe:
    case eShadowingComponent::kNeckBoss:
    case eShadowingComponent::kNone:
      return "";
  }
  return std::string("ShadowingCalculator::") + test +
         ": Error! Cannot calculate shadowing for this light light path "
         "type: " +
         name + "\n";
}

}  // namespace

void WarnOfUnusualPath(eShadowingComponent component, ePathKind kind,
                       const std::string& name) {
  switch (kind) {
    case ePathKind::kUninitialised:
      warn << UninitialisedText(component);
      break;
    case ePathKind::kMisspeltUninitialised:
    case ePathKind::kUnknown:
      // A single insertion: a newline in the name must not end the message.
      warn << UnknownText(component, name);
      break;
    case ePathKind::kOneCrossing:
    case ePathKind::kTwoCrossings:
    case ePathKind::kWater:
      break;
  }
}

}  // namespace ZARN::DU

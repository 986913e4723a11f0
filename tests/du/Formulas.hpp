#pragma once

#include "du/hardware/AVHDRopeShadowing.hpp"
#include "du/ShadowingCalculator.hpp"
#include "tests/du/Paths.hpp"

namespace ZARN::Testing {

/// The formulas of a detector for one path, as the filter asks for them, and
/// how often it did.
class Formulas {
 public:
  Formulas(const DU::ShadowingCalculator& detector, const DU::LightPath& path)
      : detector_(detector), segments_(SegmentsOf(path)) {}

  bool operator()(DU::eShadowingComponent component) const {
    ++asked_;
    return IsBlockedBy(component);
  }
  bool operator()(DU::eShadowingComponent component,
                  const DU::SegmentView& segment) const {
    ++asked_;
    return component == DU::eShadowingComponent::kAVHDRope
               ? DU::IsAtVerticalAVHDRope(
                     detector_.GetAVHDRopes(), detector_.GetAVHDRopeTolerance(),
                     segment.Copy(), DU::eDiagnostics::kSilent)
               : DU::IsAtSupportRope(detector_.GetSupportRopes(),
                                     detector_.GetSupportRopeTolerance(),
                                     segment.Copy(), DU::eDiagnostics::kSilent);
  }

  /// The verdict without a filter.
  DU::eShadowingComponent Find() const {
    for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
      if (detector_.IsReady(component) && IsBlockedBy(component)) {
        return component;
      }
    }
    return DU::eShadowingComponent::kNone;
  }

  int Asked() const { return asked_; }

 private:
  bool IsBlockedBy(DU::eShadowingComponent component) const {
    const double tolerance = detector_.GetAVHDRopeTolerance();
    switch (component) {
      case DU::eShadowingComponent::kAVHDRope:
        return DU::CheckForAVHDRopeShadowing(detector_.GetAVHDRopes(),
                                             tolerance, segments_,
                                             DU::eDiagnostics::kSilent);
      case DU::eShadowingComponent::kSupportRope:
        return DU::CheckForSupportRopeShadowing(
            detector_.GetSupportRopes(), detector_.GetAVHDRopes(), tolerance,
            segments_, DU::eDiagnostics::kSilent);
      case DU::eShadowingComponent::kBellyPlate:
        return DU::CheckForBellyPlateShadowing(
            detector_.GetBellyPlates(), tolerance, detector_.GetOuterAVRadius(),
            segments_, DU::eDiagnostics::kSilent);
      case DU::eShadowingComponent::kNCDAnchor:
        return DU::CheckForNCDAnchorShadowing(detector_.GetNCDAnchors(),
                                              tolerance, segments_);
      case DU::eShadowingComponent::kAVPipe:
        return DU::CheckForAVPipeShadowing(segments_);
      case DU::eShadowingComponent::kNeckBoss:
        return DU::CheckForNeckBossShadowing(detector_.GetNeckBoss(),
                                             segments_);
      case DU::eShadowingComponent::kNone:
        break;
    }
    return false;
  }

  const DU::ShadowingCalculator& detector_;
  DU::WaterSegments segments_;
  mutable int asked_ = 0;
};

/// The formulas' verdict on a path, from a calculator's models, flags and
/// tolerances as they stand.
inline DU::eShadowingComponent FindByFormulas(
    const DU::ShadowingCalculator& detector, const DU::LightPath& path) {
  return Formulas(detector, path).Find();
}

}  // namespace ZARN::Testing

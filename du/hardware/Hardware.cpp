#include "du/hardware/Hardware.hpp"

#include "db/ReadField.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"
#include "log/Assert.hpp"

namespace ZARN::DU {

using eComponent = eShadowingComponent;

namespace {

bool Hardware::*LoadedFlagOf(eComponent component) {
  switch (component) {
    case eComponent::kAVHDRope:
      return &Hardware::AVHDRopeInfoLoaded;
    case eComponent::kSupportRope:
      return &Hardware::SupportRopeInfoLoaded;
    case eComponent::kBellyPlate:
      return &Hardware::BellyPlateInfoLoaded;
    case eComponent::kNCDAnchor:
      return &Hardware::NCDAnchorInfoLoaded;
    case eComponent::kAVPipe:
      return &Hardware::AVPipeInfoLoaded;
    case eComponent::kNeckBoss:
      return &Hardware::NeckBossInfoLoaded;
    case eComponent::kNone:
      break;
  }
  AbortAt(__FILE__, __LINE__, "kNone has no flag");
}

}  // namespace

void Hardware::ClearLists() {
  AVPipes.Clear();
  NCDAnchors.Clear();
  BellyPlates.Clear();
  AVHDRopes.Clear();
  SupportRopes.Clear();
}

void Hardware::LoadRadii(const TableSet& tables) {
  InnerAVRadius =
      ReadNumber(tables, "SOLID", "acrylic_vessel_inner", "r_sphere");
  OuterAVRadius =
      ReadNumber(tables, "SOLID", "acrylic_vessel_outer", "r_sphere");
  AVNeckRadius = ReadNumber(tables, "SOLID", "acrylic_vessel_outer", "r_neck");
}

void Hardware::Load(const TableSet& tables, eComponent component) {
  switch (component) {
    case eComponent::kAVHDRope:
      LoadAVHDRopeInfo(tables, AVHDRopes, OuterAVRadius, AVNeckRadius);
      break;
    case eComponent::kSupportRope:
      LoadSupportRopeInfo(tables, SupportRopes, OuterAVRadius);
      break;
    case eComponent::kBellyPlate:
      LoadBellyPlateInfo(tables, BellyPlates, BellyPlateTolerance);
      break;
    case eComponent::kNCDAnchor:
      LoadNCDAnchorInfo(tables, NCDAnchors);
      break;
    case eComponent::kAVPipe:
      LoadAVPipeInfo(tables, AVPipes);
      break;
    case eComponent::kNeckBoss:
      LoadNeckBossInfo(tables, NeckBoss, InnerAVRadius);
      break;
    case eComponent::kNone:
      break;
  }
}

void Hardware::SetInfoLoaded(eComponent component, bool isLoaded) {
  this->*LoadedFlagOf(component) = isLoaded;
}

void Hardware::SetAllTolerances(double tolerance) {
  AVHDRopeTolerance = tolerance;
  SupportRopeTolerance = tolerance;
  BellyPlateTolerance = tolerance;
  NCDAnchorTolerance = tolerance;
  AVPipeTolerance = tolerance;
  NeckBossTolerance = tolerance;
}

bool Hardware::IsInfoLoaded(eComponent component) const {
  return component != eComponent::kNone && this->*LoadedFlagOf(component);
}

bool Hardware::IsReady(eComponent component) const {
  if (!IsInfoLoaded(component)) return false;
  switch (component) {
    case eComponent::kAVHDRope:
      return HasAVHDRopes(AVHDRopes);
    case eComponent::kSupportRope:
      return HasSupportRopes(SupportRopes);
    default:
      return true;
  }
}

bool Hardware::HasNothingToTest(eComponent component) const {
  if (!IsInfoLoaded(component)) return false;
  switch (component) {
    case eComponent::kAVHDRope:
      return AVHDRopes.AVHDRopeRolls.empty();
    case eComponent::kSupportRope:
      return SupportRopes.SupportRopePositions.empty();
    case eComponent::kBellyPlate:
      return BellyPlates.BellyPlatePositions.empty();
    case eComponent::kNCDAnchor:
      return NCDAnchors.NCDAnchorPositions.empty();
    default:
      return false;  // loaded only if they have something to test
  }
}

bool Hardware::IsBlockedBy(eComponent component, const WaterSegments& path,
                           eDiagnostics diagnostics) const {
  switch (component) {
    case eComponent::kAVHDRope:
      return CheckForAVHDRopeShadowing(AVHDRopes, AVHDRopeTolerance, path,
                                       diagnostics);
    case eComponent::kSupportRope:
      return CheckForSupportRopeShadowing(
          SupportRopes, AVHDRopes, SupportRopeTolerance, path, diagnostics);
    case eComponent::kBellyPlate:
      return CheckForBellyPlateShadowing(BellyPlates, BellyPlateTolerance,
                                         OuterAVRadius, path, diagnostics);
    case eComponent::kNCDAnchor:
      return CheckForNCDAnchorShadowing(NCDAnchors, NCDAnchorTolerance, path);
    case eComponent::kAVPipe:
      return CheckForAVPipeShadowing(path);
    case eComponent::kNeckBoss:
      return CheckForNeckBossShadowing(NeckBoss, path);
    case eComponent::kNone:
      break;
  }
  return false;
}

void Hardware::VisitTests(eComponent component, const WaterSegments& path,
                          const ShadowingTestVisitor& visitor,
                          const NearestItems* nearest) const {
  switch (component) {
    case eComponent::kAVHDRope:
      return VisitAVHDRopeTests(AVHDRopes, AVHDRopeTolerance, path, visitor,
                                nearest);
    case eComponent::kSupportRope:
      return VisitSupportRopeTests(SupportRopes, AVHDRopes,
                                   SupportRopeTolerance, path, visitor,
                                   nearest);
    case eComponent::kBellyPlate:
      return VisitBellyPlateTests(BellyPlates, BellyPlateTolerance,
                                  OuterAVRadius, path, visitor);
    case eComponent::kNCDAnchor:
      return VisitNCDAnchorTests(NCDAnchors, NCDAnchorTolerance, path, visitor,
                                 nearest);
    case eComponent::kAVPipe:
      return VisitAVPipeTests(path, visitor);
    case eComponent::kNeckBoss:
      return VisitNeckBossTests(NeckBoss, path, visitor);
    case eComponent::kNone:
      break;
  }
}

}  // namespace ZARN::DU

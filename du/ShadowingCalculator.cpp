#include "du/ShadowingCalculator.hpp"

// The field's units and constants. None is used: the tables are in mm and the
// formulas in rad, which are the units of value 1 there, too.
#include <CLHEP/Units/PhysicalConstants.h>
#include <CLHEP/Units/SystemOfUnits.h>

#include <algorithm>

#include "db/DBErrors.hpp"
#include "db/ReadField.hpp"
#include "du/AVHDRopeShadowing.hpp"
#include "du/UnusualPathMessages.hpp"
#include "log/Log.hpp"

namespace ZARN::DU {
namespace {

/// Run one loader: a component whose tables are not complete is off for the
/// run, so that the others can be used without it.
template <class Loader>
void LoadGuarded(bool& infoLoaded, const char* onSuccess, const char* onFailure,
                 const Loader& load) {
  try {
    load();
    infoLoaded = true;
    warn << onSuccess;
  } catch (const DBNotFoundError&) {
    warn << onFailure;
    infoLoaded = false;
  }
}

}  // namespace

void ShadowingCalculator::BeginOfRun() {
  ClearModels();

  InnerAVRadius = ReadNumber("SOLID", "acrylic_vessel_inner", "r_sphere");
  OuterAVRadius = ReadNumber("SOLID", "acrylic_vessel_outer", "r_sphere");
  AVNeckRadius = ReadNumber("SOLID", "acrylic_vessel_outer", "r_neck");

  LoadGuarded(
      AVHDRopeInfoLoaded,
      "ShadowingCalculator: Loaded AV hold-down rope shadowing information.\n",
      "ShadowingCalculator: Cannot load AV hold-down rope parameters, these "
      "will not be loaded.\n",
      [&] { LoadAVHDRopeInfo(AVHDRopes, OuterAVRadius, AVNeckRadius); });
  LoadGuarded(
      SupportRopeInfoLoaded,
      "ShadowingCalculator: Loaded AV support rope shadowing information.\n",
      "ShadowingCalculator: Cannot load support rope parameters, these will "
      "not be loaded.\n",
      [&] { LoadSupportRopeInfo(SupportRopes, OuterAVRadius); });
  LoadGuarded(
      BellyPlateInfoLoaded,
      "ShadowingCalculator: Loaded belly plate shadowing information.\n",
      "ShadowingCalculator: Cannot load belly plate parameters, these will not "
      "be loaded.\n",
      [&] { LoadBellyPlateInfo(BellyPlates, BellyPlateTolerance); });
  LoadGuarded(
      NCDAnchorInfoLoaded,
      "ShadowingCalculator: Loaded NCD anchor shadowing information.\n",
      "ShadowingCalculator: Cannot load NCD anchor parameters, these will not "
      "be loaded.\n",
      [&] { LoadNCDAnchorInfo(NCDAnchors); });
  LoadGuarded(
      AVPipeInfoLoaded,
      "ShadowingCalculator: Loaded AV pipe shadowing information.\n",
      "ShadowingCalculator: Cannot load AV pipe parameters, these will not be "
      "loaded.\n",
      [&] { LoadAVPipeInfo(AVPipes); });
  LoadGuarded(
      NeckBossInfoLoaded,
      "ShadowingCalculator: Loaded neck boss shadowing information.\n",
      // A word is missing, and stays so: logs are searched for this text.
      "ShadowingCalculator: Cannot neck boss parameters, these will not be "
      "loaded.\n",
      [&] { LoadNeckBossInfo(NeckBoss, InnerAVRadius); });

  ClearComponentFlags();  // Shadowed stays until the next test
  SetAllGeometryTolerances(kDefaultTolerance);
}

void ShadowingCalculator::SetAllGeometryTolerances(double tolerance) {
  AVHDRopeTolerance = tolerance;
  SupportRopeTolerance = tolerance;
  BellyPlateTolerance = tolerance;
  NCDAnchorTolerance = tolerance;
  AVPipeTolerance = tolerance;
  NeckBossTolerance = tolerance;
}

bool ShadowingCalculator::CheckForShadowing(LightPathCalculator& lightPath) {
  ClearComponentFlags();
  Shadowed = false;

  // Only a test that runs looks up the name: where none does, the path's map of
  // names must not grow.
  const bool anyTestRuns = std::any_of(
      kShadowingComponents.begin(), kShadowingComponents.end(),
      [this](eShadowingComponent component) { return IsReady(component); });
  if (!anyTestRuns) return false;

  const std::string& name =
      lightPath.LightPathTypeNames()[lightPath.GetLightPathType()];
  const WaterSegments path =
      SegmentsOf(lightPath.GetLightPath(), ShapeOfName(name));
  const eShadowingComponent blocking =
      FirstBlocking(path, [&](eShadowingComponent component) {
        WarnOfUnusualPath(component, path.kind, name);
      });

  ShadowedByAVHDRope = blocking == eShadowingComponent::kAVHDRope;
  ShadowedByBellyPlate = blocking == eShadowingComponent::kBellyPlate;
  ShadowedByNCDAnchor = blocking == eShadowingComponent::kNCDAnchor;
  ShadowedBySupportRope = blocking == eShadowingComponent::kSupportRope;
  ShadowedByAVPipe = blocking == eShadowingComponent::kAVPipe;
  ShadowedByNeckBoss = blocking == eShadowingComponent::kNeckBoss;
  Shadowed = blocking != eShadowingComponent::kNone;
  return Shadowed;
}

eShadowingComponent ShadowingCalculator::FindShadowing(
    const LightPath& path) const {
  const WaterSegments segments =
      SegmentsOf(path, ShapeOfType(path.LightPathType));
  return FirstBlocking(segments, [](eShadowingComponent) {});
}

bool ShadowingCalculator::IsInfoLoaded(eShadowingComponent component) const {
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return AVHDRopeInfoLoaded;
    case eShadowingComponent::kSupportRope:
      return SupportRopeInfoLoaded;
    case eShadowingComponent::kBellyPlate:
      return BellyPlateInfoLoaded;
    case eShadowingComponent::kNCDAnchor:
      return NCDAnchorInfoLoaded;
    case eShadowingComponent::kAVPipe:
      return AVPipeInfoLoaded;
    case eShadowingComponent::kNeckBoss:
      return NeckBossInfoLoaded;
    case eShadowingComponent::kNone:
      break;
  }
  return false;
}

void ShadowingCalculator::ClearModels() {
  AVPipes.Clear();
  NCDAnchors.Clear();
  BellyPlates.Clear();
  AVHDRopes.Clear();
  SupportRopes.Clear();
}

void ShadowingCalculator::ClearComponentFlags() {
  ShadowedByAVHDRope = false;
  ShadowedByBellyPlate = false;
  ShadowedByNCDAnchor = false;
  ShadowedBySupportRope = false;
  ShadowedByAVPipe = false;
  ShadowedByNeckBoss = false;
}

/// Whether a component's test runs: it is loaded, and has what its test reads
/// without looking. A test that does not run is silent.
bool ShadowingCalculator::IsReady(eShadowingComponent component) const {
  if (!IsInfoLoaded(component)) return false;
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return HasAVHDRopes(AVHDRopes);
    case eShadowingComponent::kSupportRope:
      return HasSupportRopes(SupportRopes);
    default:
      return true;
  }
}

bool ShadowingCalculator::IsBlockedBy(eShadowingComponent component,
                                      const WaterSegments& path) const {
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return CheckForAVHDRopeShadowing(AVHDRopes, AVHDRopeTolerance, path);
    case eShadowingComponent::kSupportRope:
      return CheckForSupportRopeShadowing(SupportRopes, AVHDRopes,
                                          SupportRopeTolerance, path);
    case eShadowingComponent::kBellyPlate:
      return CheckForBellyPlateShadowing(BellyPlates, BellyPlateTolerance,
                                         OuterAVRadius, path);
    case eShadowingComponent::kNCDAnchor:
      return CheckForNCDAnchorShadowing(NCDAnchors, NCDAnchorTolerance, path);
    case eShadowingComponent::kAVPipe:
      return CheckForAVPipeShadowing(path);
    case eShadowingComponent::kNeckBoss:
      return CheckForNeckBossShadowing(NeckBoss, path);
    case eShadowingComponent::kNone:
      break;
  }
  return false;
}

/// Test the components in their order. @p onMiss is called for each one that
/// was tested and does not block the path, before the next is tested.
template <class OnMiss>
eShadowingComponent ShadowingCalculator::FirstBlocking(
    const WaterSegments& path, const OnMiss& onMiss) const {
  for (const eShadowingComponent component : kShadowingComponents) {
    if (!IsReady(component)) continue;
    if (IsBlockedBy(component, path)) return component;
    onMiss(component);
  }
  return eShadowingComponent::kNone;
}

}  // namespace ZARN::DU

#include "du/ShadowingCalculator.hpp"

// The field's units and constants. None is used: the tables are in mm and the
// formulas in rad, which are the units of value 1 there, too.
#include <CLHEP/Units/PhysicalConstants.h>
#include <CLHEP/Units/SystemOfUnits.h>

#include <ROOT/TSeq.hxx>
#include <ROOT/TThreadExecutor.hxx>
#include <algorithm>
#include <array>
#include <atomic>

#include "db/DBErrors.hpp"
#include "db/ReadField.hpp"
#include "du/hardware/AVHDRopeShadowing.hpp"
#include "du/fast/ShadowingBatch.hpp"
#include "du/fast/ShadowingFilter.hpp"
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

/// Whether a path of this kind has water segments that the tests know.
bool IsUsual(ePathKind kind) {
  return kind == ePathKind::kOneCrossing || kind == ePathKind::kTwoCrossings ||
         kind == ePathKind::kWater;
}

}  // namespace

/// What is made for one geometry and one set of tolerances.
struct ShadowingCalculator::Prepared {
  Prepared(const ShadowingCalculator& calculator, const ShadowingLayers& layers)
      : filter(calculator, layers), batch(filter) {}

  ShadowingFilter filter;
  ShadowingBatch batch;
};

void ShadowingCalculator::BeginOfRun() {
  Fast.reset();
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
  Prepare();
}

void ShadowingCalculator::UseLayers(const ShadowingLayers& layers) {
  Layers = layers;
  Prepare();
}

void ShadowingCalculator::Prepare() {
  Fast.reset();  // should there be no memory for what is new
  Fast = std::make_shared<const Prepared>(*this, Layers);
}

/// The formulas for what the filter leaves open on one path.
struct ShadowingCalculator::Formulas {
  bool operator()(eShadowingComponent component) const {
    return calculator.IsBlockedBy(component, path.Copy(),
                                  eDiagnostics::kSilent);
  }
  bool operator()(eShadowingComponent component,
                  const SegmentView& segment) const {
    return component == eShadowingComponent::kAVHDRope
               ? IsAtVerticalAVHDRope(calculator.AVHDRopes,
                                      calculator.AVHDRopeTolerance,
                                      segment.Copy(), eDiagnostics::kSilent)
               : IsAtSupportRope(calculator.SupportRopes,
                                 calculator.SupportRopeTolerance,
                                 segment.Copy(), eDiagnostics::kSilent);
  }

  const ShadowingCalculator& calculator;
  const WaterSegmentViews& path;
};

[[gnu::always_inline]] inline eShadowingComponent
ShadowingCalculator::FindSilently(const WaterSegmentViews& path) const {
  if (Fast == nullptr || !IsUsual(path.kind)) {
    return FirstBlocking(path.Copy(), eDiagnostics::kSilent,
                         [](eShadowingComponent) {});
  }
  return Fast->filter.Find(path, Formulas{*this, path});
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

  const eLightPathType type = lightPath.GetLightPathType();
  const std::string& name = lightPath.LightPathTypeNames()[type];
  const PathShape& shape = ShapeOfTypeNamed(type, name);
  const LightPath& path = lightPath.GetLightPath();
  const eShadowingComponent blocking = WritesMessages(shape.kind)
                                           ? FindPlainly(path, shape, name)
                                           : FindSilently(ViewsOf(path, shape));

  ShadowedByAVHDRope = blocking == eShadowingComponent::kAVHDRope;
  ShadowedByBellyPlate = blocking == eShadowingComponent::kBellyPlate;
  ShadowedByNCDAnchor = blocking == eShadowingComponent::kNCDAnchor;
  ShadowedBySupportRope = blocking == eShadowingComponent::kSupportRope;
  ShadowedByAVPipe = blocking == eShadowingComponent::kAVPipe;
  ShadowedByNeckBoss = blocking == eShadowingComponent::kNeckBoss;
  Shadowed = blocking != eShadowingComponent::kNone;
  return Shadowed;
}

/// By the formulas, with all that they write.
eShadowingComponent ShadowingCalculator::FindPlainly(
    const LightPath& path, const PathShape& shape,
    const std::string& name) const {
  return FirstBlocking(SegmentsOf(path, shape), eDiagnostics::kWritten,
                       [&](eShadowingComponent component) {
                         WarnOfUnusualPath(component, shape.kind, name);
                       });
}

eShadowingComponent ShadowingCalculator::FindShadowing(
    const LightPath& path) const {
  return FindSilently(ViewsOf(path, ShapeOfType(path.LightPathType)));
}

namespace {

/// Paths in records or columns, by their number.
struct Records {
  /// Call @p work with a path's segments, and give what it gives.
  template <class Work>
  auto On(std::size_t i, const Work& work) const {
    return work(ViewsOf(paths[i], ShapeOfType(paths[i].LightPathType)));
  }
  void Judge(const ShadowingBatch& batch, const ShadowingFilter& filter,
             std::size_t first, std::size_t count,
             std::uint8_t* verdicts) const {
    batch.Judge(filter, paths + first, count, verdicts);
  }

  const LightPath* paths;
};
struct Columns {
  template <class Work>
  auto On(std::size_t i, const Work& work) const {
    const WaterSegments segments = SegmentsOf(paths, i);
    return work(ViewsOf(segments));
  }
  void Judge(const ShadowingBatch& batch, const ShadowingFilter& filter,
             std::size_t first, std::size_t count,
             std::uint8_t* verdicts) const {
    batch.Judge(filter, paths, first, count, verdicts);
  }

  const LightPathArrays& paths;
};

}  // namespace

void ShadowingCalculator::FindShadowing(const LightPath* paths,
                                        std::size_t count,
                                        eShadowingComponent* verdicts,
                                        std::size_t threads) const {
  FindShadowingOnThreads(Records{paths}, count, verdicts, threads);
}

void ShadowingCalculator::FindShadowing(const LightPathArrays& paths,
                                        std::size_t count,
                                        eShadowingComponent* verdicts,
                                        std::size_t threads) const {
  FindShadowingOnThreads(Columns{paths}, count, verdicts, threads);
}

template <class Paths>
void ShadowingCalculator::FindShadowingOnThreads(const Paths& paths,
                                                 std::size_t count,
                                                 eShadowingComponent* verdicts,
                                                 std::size_t threads) const {
  // A share is worth the millisecond's fraction that handing it out costs.
  constexpr std::size_t kShare = 64 * kBatchPaths;
  if (threads <= 1 || count <= kShare) {
    FindShadowingOfSome(paths, 0, count, verdicts);
    return;
  }
  const std::size_t shares = (count + kShare - 1) / kShare;
  // ROOT's pool hands over the paths and the verdicts out of the thread
  // sanitizer's sight. This number does so again where it looks.
  std::atomic<std::size_t> done;
  done.store(0, std::memory_order_release);
  ROOT::TThreadExecutor(static_cast<unsigned>(threads))
      .Foreach(
          [&](std::size_t share) {
            done.load(std::memory_order_acquire);
            FindShadowingOfSome(paths, share * kShare,
                                std::min((share + 1) * kShare, count),
                                verdicts);
            done.fetch_add(1, std::memory_order_acq_rel);
          },
          ROOT::TSeq<std::size_t>(shares));
  done.load(std::memory_order_acquire);
}

template <class Paths>
void ShadowingCalculator::FindShadowingOfSome(
    const Paths& paths, std::size_t first, std::size_t last,
    eShadowingComponent* verdicts) const {
  std::array<std::uint8_t, kBatchPaths> found;
  for (std::size_t i = first; i < last; i += kBatchPaths) {
    const std::size_t count = std::min(kBatchPaths, last - i);
    if (Fast != nullptr) {
      paths.Judge(Fast->batch, Fast->filter, i, count, found.data());
    } else {
      found.fill(ShadowingBatch::kOpen);
    }
    for (std::size_t k = 0; k < count; ++k) {
      verdicts[i + k] = found[k] == ShadowingBatch::kOpen
                            ? paths.On(i + k,
                                       [this](const auto& path) {
                                         return FindSilently(path);
                                       })
                            : static_cast<eShadowingComponent>(found[k]);
    }
  }
}

bool ShadowingCalculator::WritesMessages(eLightPathType type) const {
  return WritesMessages(ShapeOfType(type).kind);
}

bool ShadowingCalculator::WritesMessages(ePathKind kind) const {
  if (debug.IsOn() || !IsUsual(kind)) return true;
  return kind != ePathKind::kWater &&
         (Fast == nullptr || Fast->filter.HasWarningPlates());
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
                                      const WaterSegments& path,
                                      eDiagnostics diagnostics) const {
  switch (component) {
    case eShadowingComponent::kAVHDRope:
      return CheckForAVHDRopeShadowing(AVHDRopes, AVHDRopeTolerance, path,
                                       diagnostics);
    case eShadowingComponent::kSupportRope:
      return CheckForSupportRopeShadowing(
          SupportRopes, AVHDRopes, SupportRopeTolerance, path, diagnostics);
    case eShadowingComponent::kBellyPlate:
      return CheckForBellyPlateShadowing(BellyPlates, BellyPlateTolerance,
                                         OuterAVRadius, path, diagnostics);
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
    const WaterSegments& path, eDiagnostics diagnostics,
    const OnMiss& onMiss) const {
  for (const eShadowingComponent component : kShadowingComponents) {
    if (!IsReady(component)) continue;
    if (IsBlockedBy(component, path, diagnostics)) return component;
    onMiss(component);
  }
  return eShadowingComponent::kNone;
}

}  // namespace ZARN::DU

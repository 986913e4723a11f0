#include "du/ShadowingCalculator.hpp"

// Units and constants of particle physics. None is used below: lengths in mm
// and angles in rad have the value 1 there, too.
#include <CLHEP/Units/PhysicalConstants.h>
#include <CLHEP/Units/SystemOfUnits.h>

#include <algorithm>
#include <new>

#include "db/DB.hpp"
#include "db/DBErrors.hpp"
#include "du/ForEachOnThreads.hpp"
#include "du/LoadMessages.hpp"
#include "du/UnusualPathMessages.hpp"
#include "du/fast/BatchVerdict.hpp"
#include "du/fast/HardwareFormulas.hpp"
#include "du/fast/LazyLayers.hpp"
#include "du/fast/MadeOnce.hpp"
#include "du/fast/NearestHardware.hpp"
#include "du/fast/PathLists.hpp"
#include "log/Log.hpp"

namespace ZARN::DU {
namespace {

/// Whether the tests know the water segments of a path of this kind.
bool IsUsual(ePathKind kind) {
  return kind == ePathKind::kOneCrossing || kind == ePathKind::kTwoCrossings ||
         kind == ePathKind::kWater;
}

}  // namespace

void ShadowingCalculator::BeginOfRun() { BeginOfRun(DB::Get()); }

void ShadowingCalculator::BeginOfRun(const TableSet& tables) {
  Layers.reset();
  Nearest.reset();
  PlatesMayWarn = true;
  Parts.ClearLists();
  Parts.LoadRadii(tables);
  for (const eShadowingComponent component : kShadowingComponents) {
    LoadGuarded(tables, component);
  }
  PlatesMayWarn = Parts.IsReady(eShadowingComponent::kBellyPlate) &&
                  WarnsOfZeroVectors(Parts.BellyPlates);
  // Shadowed stays until the next test.
  SetComponentFlags(eShadowingComponent::kNone);
  SetAllGeometryTolerances(Hardware::kDefaultTolerance);
  ForgetNearest();
}

/// A component with incomplete tables is off for the run; the others still
/// work.
void ShadowingCalculator::LoadGuarded(const TableSet& tables,
                                      eShadowingComponent component) {
  const LoadMessages messages = LoadMessagesOf(component);
  std::string& loadError = LoadErrors[static_cast<std::size_t>(component)];
  try {
    Parts.Load(tables, component);
    Parts.SetInfoLoaded(component, true);
    loadError.clear();
    warn << messages.onSuccess;
  } catch (const DBNotFoundError& error) {
    warn << messages.onFailure;
    Parts.SetInfoLoaded(component, false);
    loadError = error.what();
  }
}

void ShadowingCalculator::SetAllGeometryTolerances(double tolerance) {
  Parts.SetAllTolerances(tolerance);
  ForgetLayers();
}

void ShadowingCalculator::UseLayers(const ShadowingLayers& layers) {
  WantedLayers = std::make_shared<const ShadowingLayers>(layers);
  ForgetLayers();
}

void ShadowingCalculator::ForgetLayers() {
  Layers.reset();
  try {
    Layers = std::make_shared<LazyLayers>(
        Parts, WantedLayers == nullptr ? ShadowingLayers() : *WantedLayers);
  } catch (const std::bad_alloc&) {
    // Only the formulas are used then, with the same verdicts.
  }
}

void ShadowingCalculator::ForgetNearest() {
  Nearest.reset();
  try {
    Nearest = std::make_shared<MadeOnce<NearestHardware>>();
  } catch (const std::bad_alloc&) {
    // All items are tested then, with the same results.
  }
}

void ShadowingCalculator::MakeLayers() const {
  if (Layers != nullptr) Layers->Make(Parts);
}

[[gnu::always_inline]] inline eShadowingComponent
ShadowingCalculator::FindSilently(const WaterSegmentViews& path) const {
  const PreparedLayers* const layers =
      Layers == nullptr ? nullptr : Layers->Get();
  if (layers == nullptr || !IsUsual(path.kind)) {
    // Copied, so that the views of the common case stay in registers.
    return FindByFormulas(path.Copy());
  }
  return layers->filter.Find(path, HardwareFormulas{Parts, path});
}

eShadowingComponent ShadowingCalculator::FindByFormulas(
    const WaterSegments& path) const {
  const eShadowingComponent found =
      Parts.FirstBlocking(path, eDiagnostics::kSilent);
  if (Layers != nullptr) Layers->CountByFormulas(Parts, path.kind);
  return found;
}

bool ShadowingCalculator::CheckForShadowing(LightPathCalculator& lightPath) {
  SetComponentFlags(eShadowingComponent::kNone);
  Shadowed = false;

  // Looking up the name may add it to the path's map of names. Without a test
  // that runs, the map must not grow.
  const bool anyTestRuns = std::any_of(
      kShadowingComponents.begin(), kShadowingComponents.end(),
      [this](eShadowingComponent component) { return IsReady(component); });
  if (!anyTestRuns) return false;

  const eLightPathType type = lightPath.GetLightPathType();
  const std::string& name = lightPath.LightPathTypeNames()[type];
  const PathShape& shape = ShapeOfTypeNamed(type, name);
  const LightPath& path = lightPath.GetLightPath();
  const eShadowingComponent blocking = WritesMessages(shape.kind)
                                           ? FindWithMessages(path, shape, name)
                                           : FindSilently(ViewsOf(path, shape));

  SetComponentFlags(blocking);
  Shadowed = blocking != eShadowingComponent::kNone;
  return Shadowed;
}

/// Use the formulas and write all messages.
eShadowingComponent ShadowingCalculator::FindWithMessages(
    const LightPath& path, const PathShape& shape,
    const std::string& name) const {
  return Parts.FirstBlocking(SegmentsOf(path, shape), eDiagnostics::kWritten,
                             [&](eShadowingComponent component) {
                               WarnOfUnusualPath(component, shape.kind, name);
                             });
}

eShadowingComponent ShadowingCalculator::FindShadowing(
    const LightPath& path) const {
  return FindSilently(ViewsOf(path, ShapeOfType(path.LightPathType)));
}

void ShadowingCalculator::FindShadowing(const LightPath* paths,
                                        std::size_t count,
                                        eShadowingComponent* verdicts,
                                        std::size_t threads) const {
  FindShadowingOnThreads(PathsInRecords(paths), count, verdicts, threads);
}

void ShadowingCalculator::FindShadowing(const LightPathArrays& paths,
                                        std::size_t count,
                                        eShadowingComponent* verdicts,
                                        std::size_t threads) const {
  FindShadowingOnThreads(PathsInColumns(paths), count, verdicts, threads);
}

template <class Paths>
void ShadowingCalculator::FindShadowingOnThreads(const Paths& paths,
                                                 std::size_t count,
                                                 eShadowingComponent* verdicts,
                                                 std::size_t threads) const {
  MakeLayers();
  // The work on a share takes much longer than starting a thread.
  constexpr std::size_t kShare = 64 * kBatchPaths;
  if (threads <= 1 || count <= kShare) {
    FindShadowingOfSome(paths, 0, count, verdicts);
    return;
  }
  ForEachOnThreads(
      (count + kShare - 1) / kShare, threads, [&](std::size_t share) {
        FindShadowingOfSome(paths, share * kShare,
                            std::min((share + 1) * kShare, count), verdicts);
      });
}

template <class Paths>
void ShadowingCalculator::FindShadowingOfSome(
    const Paths& paths, std::size_t first, std::size_t last,
    eShadowingComponent* verdicts) const {
  const PreparedLayers* const layers =
      Layers == nullptr ? nullptr : Layers->Get();
  for (std::size_t i = first; i < last; i += kBatchPaths) {
    const std::size_t count = std::min(kBatchPaths, last - i);
    BatchVerdict* const found = AsBatch(verdicts + i);
    if (layers != nullptr) {
      layers->batch.Judge(layers->filter, paths.From(i), count, found);
    } else {
      std::fill_n(found, count, kOpenVerdict);
    }
    ForEachOpen(found, count, [&](std::size_t k) {
      verdicts[i + k] = paths.OnSegments(
          i + k, [this](const auto& path) { return FindSilently(path); });
    });
  }
}

bool ShadowingCalculator::WritesMessages(eLightPathType type) const {
  return WritesMessages(ShapeOfType(type).kind);
}

bool ShadowingCalculator::WritesMessages(ePathKind kind) const {
  if (debug.IsOn() || !IsUsual(kind)) return true;
  return kind != ePathKind::kWater && PlatesMayWarn;
}

void ShadowingCalculator::SetComponentFlags(eShadowingComponent blocking) {
  static_assert(kNumberOfComponents == 6, "one flag each, also in LastVerdict");
  ShadowedByAVHDRope = blocking == eShadowingComponent::kAVHDRope;
  ShadowedByBellyPlate = blocking == eShadowingComponent::kBellyPlate;
  ShadowedByNCDAnchor = blocking == eShadowingComponent::kNCDAnchor;
  ShadowedBySupportRope = blocking == eShadowingComponent::kSupportRope;
  ShadowedByAVPipe = blocking == eShadowingComponent::kAVPipe;
  ShadowedByNeckBoss = blocking == eShadowingComponent::kNeckBoss;
}

eShadowingComponent ShadowingCalculator::LastVerdict() const {
  if (ShadowedByAVHDRope) return eShadowingComponent::kAVHDRope;
  if (ShadowedByBellyPlate) return eShadowingComponent::kBellyPlate;
  if (ShadowedByNCDAnchor) return eShadowingComponent::kNCDAnchor;
  if (ShadowedBySupportRope) return eShadowingComponent::kSupportRope;
  if (ShadowedByAVPipe) return eShadowingComponent::kAVPipe;
  if (ShadowedByNeckBoss) return eShadowingComponent::kNeckBoss;
  return eShadowingComponent::kNone;
}

}  // namespace ZARN::DU

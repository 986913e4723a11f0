#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/AVPipes.hpp"
#include "du/hardware/BellyPlates.hpp"
#include "du/hardware/NCDAnchors.hpp"
#include "du/hardware/NeckBoss.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "du/hardware/SupportRopes.hpp"
#include "du/hardware/WaterSegments.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::DU {

/// Tells whether a light path is blocked by hardware around the acrylic vessel,
/// and by what.
///
///     ZARN::DU::ShadowingCalculator calculator;
///     calculator.BeginOfRun();                    // once per run
///     if (calculator.CheckForShadowing(path)) ... // for each computed path
///
/// Lengths in mm, angles in rad. Copies are independent.
class ShadowingCalculator {
 public:
  /// Read the geometry of the current run from ZARN::DB::Get() and build the
  /// model of every component.
  ///
  /// A component whose tables cannot be read is off for the run: it never
  /// blocks a path. ZARN::warn tells for each component whether it was loaded.
  /// At the end all result flags but Shadowed are cleared and all tolerances
  /// are 150 mm; the belly plates' grid has by then been laid with the
  /// tolerance that stood before.
  ///
  /// @throws ZARN::DBNotFoundError if a vessel radius is missing, before any
  ///         component is loaded; and whatever else a loader lets pass. Lists
  ///         that were not loaded again are then empty; flags and tolerances
  ///         stay.
  void BeginOfRun();

  /// Set the tolerance of every component. Takes milliseconds, with hundreds of
  /// ropes tenths of a second: what is prepared for the paths depends on it.
  ///
  /// @param tolerance  mm, stored as it is, also where it is zero or negative.
  ///                   The pipes' and the neck boss's tests read none. It is
  ///                   also the number of grid divisions per plate side in the
  ///                   next BeginOfRun.
  void SetAllGeometryTolerances(double tolerance);

  /// Tell whether a component blocks the path, and remember which in the result
  /// flags. The components are tested in the order of eShadowingComponent; the
  /// first that blocks the path counts.
  ///
  /// A path that is uninitialised, or whose type has an unknown name, never
  /// throws: ZARN::warn tells of it, once for each test that cannot judge it.
  /// Some tests find a path of unknown type blocked, as if it crossed the
  /// vessel's centre.
  ///
  /// @param lightPath  a computed path. If its type has no name, an empty one
  ///                   is added to its LightPathTypeNames.
  bool CheckForShadowing(LightPathCalculator& lightPath);

  /// The same verdict for a path record whose type goes by its own name,
  /// without flags and messages. Several threads may ask one calculator, also
  /// while one of them is in its CheckForShadowing, which writes only its
  /// flags.
  eShadowingComponent FindShadowing(const LightPath& path) const;

  /// FindShadowing for many paths.
  ///
  /// @param paths     records of @p count paths
  /// @param verdicts  @p count verdicts are written here
  /// @param threads   on how many threads at most; verdicts are the same
  void FindShadowing(const LightPath* paths, std::size_t count,
                     eShadowingComponent* verdicts,
                     std::size_t threads = 1) const;
  /// The same for paths that stand in columns.
  void FindShadowing(const LightPathArrays& paths, std::size_t count,
                     eShadowingComponent* verdicts,
                     std::size_t threads = 1) const;

  /// Leave layers out of the way to the verdicts, which stay the same: for
  /// benchmarks and tests. Holds for this object, also for further runs.
  void UseLayers(const ShadowingLayers& layers);

  /// Whether CheckForShadowing may write messages about a path whose type is
  /// this one and goes by its own name: unusual types, any type while
  /// ZARN::debug is on, and crossing paths in a geometry that the vector
  /// library warns of.
  bool WritesMessages(eLightPathType type) const;

  // What the last CheckForShadowing found. At most one component's flag is set.
  bool IsShadowedByAVHDRope() const { return ShadowedByAVHDRope; }
  bool IsShadowedByBellyPlate() const { return ShadowedByBellyPlate; }
  bool IsShadowedByNCDAnchor() const { return ShadowedByNCDAnchor; }
  bool IsShadowedBySupportRope() const { return ShadowedBySupportRope; }
  bool IsShadowedByAVPipe() const { return ShadowedByAVPipe; }
  bool IsShadowedByNeckBoss() const { return ShadowedByNeckBoss; }
  bool IsShadowed() const { return Shadowed; }

  double GetAVHDRopeTolerance() const { return AVHDRopeTolerance; }
  double GetSupportRopeTolerance() const { return SupportRopeTolerance; }
  double GetBellyPlateTolerance() const { return BellyPlateTolerance; }
  double GetNCDAnchorTolerance() const { return NCDAnchorTolerance; }
  double GetAVPipeTolerance() const { return AVPipeTolerance; }
  double GetNeckBossTolerance() const { return NeckBossTolerance; }

  double GetInnerAVRadius() const { return InnerAVRadius; }
  double GetOuterAVRadius() const { return OuterAVRadius; }
  double GetAVNeckRadius() const { return AVNeckRadius; }

  /// Whether a component was loaded for this run; false for kNone.
  bool IsInfoLoaded(eShadowingComponent component) const;

  /// Whether a component's test runs: it is loaded, and has what its test reads
  /// without looking. A test that does not run is silent.
  bool IsReady(eShadowingComponent component) const;

  // The models, for callers that draw, fit or check. What a component that is
  // off holds is not meaningful.
  const AVPipeModel& GetAVPipes() const { return AVPipes; }
  const NCDAnchorModel& GetNCDAnchors() const { return NCDAnchors; }
  const BellyPlateModel& GetBellyPlates() const { return BellyPlates; }
  const AVHDRopeModel& GetAVHDRopes() const { return AVHDRopes; }
  const SupportRopeModel& GetSupportRopes() const { return SupportRopes; }
  const NeckBossModel& GetNeckBoss() const { return NeckBoss; }

 private:
  static constexpr double kDefaultTolerance = 150.0;

  void ClearModels();
  void ClearComponentFlags();
  struct Formulas;
  struct Prepared;

  void Prepare();
  template <class Paths>
  void FindShadowingOnThreads(const Paths& paths, std::size_t count,
                              eShadowingComponent* verdicts,
                              std::size_t threads) const;
  template <class Paths>
  void FindShadowingOfSome(const Paths& paths, std::size_t first,
                           std::size_t last,
                           eShadowingComponent* verdicts) const;
  bool IsBlockedBy(eShadowingComponent component, const WaterSegments& path,
                   eDiagnostics diagnostics) const;
  bool WritesMessages(ePathKind kind) const;
  eShadowingComponent FindPlainly(const LightPath& path, const PathShape& shape,
                                  const std::string& name) const;
  eShadowingComponent FindSilently(const WaterSegmentViews& path) const;
  template <class OnMiss>
  eShadowingComponent FirstBlocking(const WaterSegments& path,
                                    eDiagnostics diagnostics,
                                    const OnMiss& onMiss) const;

  bool ShadowedByAVHDRope = false;
  bool ShadowedByBellyPlate = false;
  bool ShadowedByNCDAnchor = false;
  bool ShadowedBySupportRope = false;
  bool ShadowedByAVPipe = false;
  bool ShadowedByNeckBoss = false;
  bool Shadowed = false;

  double AVHDRopeTolerance = kDefaultTolerance;
  double SupportRopeTolerance = kDefaultTolerance;
  double BellyPlateTolerance = kDefaultTolerance;
  double NCDAnchorTolerance = kDefaultTolerance;
  double AVPipeTolerance = kDefaultTolerance;    // no test reads it
  double NeckBossTolerance = kDefaultTolerance;  // no test reads it

  double InnerAVRadius = 0.0;
  double OuterAVRadius = 0.0;
  double AVNeckRadius = 0.0;

  bool AVPipeInfoLoaded = false;
  AVPipeModel AVPipes;
  bool NCDAnchorInfoLoaded = false;
  NCDAnchorModel NCDAnchors;
  bool BellyPlateInfoLoaded = false;
  BellyPlateModel BellyPlates;
  bool AVHDRopeInfoLoaded = false;
  AVHDRopeModel AVHDRopes;
  bool SupportRopeInfoLoaded = false;
  SupportRopeModel SupportRopes;
  bool NeckBossInfoLoaded = false;
  NeckBossModel NeckBoss;

  // Made from all of the above by whatever changes it last; none while a run
  // is set up, and after a set-up that failed: then the formulas alone judge.
  // Never changed once it is made, so copies share it.
  std::shared_ptr<const Prepared> Fast;
  ShadowingLayers Layers;
};

}  // namespace ZARN::DU

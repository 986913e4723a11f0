#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "db/TableSet.hpp"
#include "du/hardware/Hardware.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/WaterSegments.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::DU {

class LazyLayers;
struct ShadowingLayers;

/// Tells whether a light path is blocked by hardware around the acrylic vessel,
/// and by what.
///
///     ZARN::DU::ShadowingCalculator calculator;
///     calculator.BeginOfRun();                    // once per run
///     if (calculator.CheckForShadowing(path)) ... // for each computed path
///
/// Lengths in mm, angles in rad. Copies are independent.
///
/// The written formulas (du/hardware) define every verdict. Layers before them
/// (du/fast) give the same verdicts about a thousand times faster; they are
/// made when that pays: once the formulas have cost what making them would, at
/// the first batch, or by MakeLayers().
class ShadowingCalculator {
 public:
  /// Read the geometry from @p tables, for the run of these, and build the
  /// model of every component.
  ///
  /// A component whose tables cannot be read is off for the run: it never
  /// blocks a path. ZARN::warn tells for each component whether it was loaded.
  /// At the end all result flags but Shadowed are cleared and all tolerances
  /// are 150 mm; the belly plates' grid has by then been laid with the
  /// tolerance that stood before.
  ///
  /// @param tables  read during the call only
  /// @throws ZARN::DBNotFoundError if a vessel radius is missing, before any
  ///         component is loaded; and whatever else a loader lets pass. Lists
  ///         that were not loaded again are then empty; flags and tolerances
  ///         stay.
  void BeginOfRun(const TableSet& tables);
  /// The same from ZARN::DB::Get().
  void BeginOfRun();

  /// Store the tolerance of every component.
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
  /// without flags and messages. Thread-safe, also during a CheckForShadowing
  /// of another thread, which writes only its flags.
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

  /// Make the layers now, for callers that would rather pay before their first
  /// path. Nothing where they are made, where another thread makes them, or
  /// where there is no memory for them. Thread-safe, silent, never throws.
  void MakeLayers() const;

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

  /// The component whose flag is set; kNone where none is, so after BeginOfRun.
  eShadowingComponent LastVerdict() const;

  /// The hardware of this run: models, tolerances and radii, for callers that
  /// draw, fit or check. What a component that is off holds is not meaningful.
  const Hardware& GetHardware() const { return Parts; }

  double GetAVHDRopeTolerance() const { return Parts.AVHDRopeTolerance; }
  double GetSupportRopeTolerance() const { return Parts.SupportRopeTolerance; }
  double GetBellyPlateTolerance() const { return Parts.BellyPlateTolerance; }
  double GetNCDAnchorTolerance() const { return Parts.NCDAnchorTolerance; }
  double GetAVPipeTolerance() const { return Parts.AVPipeTolerance; }
  double GetNeckBossTolerance() const { return Parts.NeckBossTolerance; }

  double GetInnerAVRadius() const { return Parts.InnerAVRadius; }
  double GetOuterAVRadius() const { return Parts.OuterAVRadius; }
  double GetAVNeckRadius() const { return Parts.AVNeckRadius; }

  /// Whether a component was loaded for this run; false for kNone.
  bool IsInfoLoaded(eShadowingComponent component) const {
    return Parts.IsInfoLoaded(component);
  }

  /// Whether a component's test runs: it is loaded, and has the items that its
  /// test indexes unchecked. A test that does not run is silent.
  bool IsReady(eShadowingComponent component) const {
    return Parts.IsReady(component);
  }

  const AVPipeModel& GetAVPipes() const { return Parts.AVPipes; }
  const NCDAnchorModel& GetNCDAnchors() const { return Parts.NCDAnchors; }
  const BellyPlateModel& GetBellyPlates() const { return Parts.BellyPlates; }
  const AVHDRopeModel& GetAVHDRopes() const { return Parts.AVHDRopes; }
  const SupportRopeModel& GetSupportRopes() const { return Parts.SupportRopes; }
  const NeckBossModel& GetNeckBoss() const { return Parts.NeckBoss; }

 private:
  void LoadGuarded(const TableSet& tables, eShadowingComponent component);
  /// Set the flag of one component, or of none, and clear the others.
  void SetComponentFlags(eShadowingComponent blocking);
  void ForgetLayers();

  template <class Paths>
  void FindShadowingOnThreads(const Paths& paths, std::size_t count,
                              eShadowingComponent* verdicts,
                              std::size_t threads) const;
  template <class Paths>
  void FindShadowingOfSome(const Paths& paths, std::size_t first,
                           std::size_t last,
                           eShadowingComponent* verdicts) const;
  bool WritesMessages(ePathKind kind) const;
  eShadowingComponent FindWithMessages(const LightPath& path,
                                       const PathShape& shape,
                                       const std::string& name) const;
  eShadowingComponent FindSilently(const WaterSegmentViews& path) const;
  eShadowingComponent FindByFormulas(const WaterSegments& path) const;

  bool ShadowedByAVHDRope = false;
  bool ShadowedByBellyPlate = false;
  bool ShadowedByNCDAnchor = false;
  bool ShadowedBySupportRope = false;
  bool ShadowedByAVPipe = false;
  bool ShadowedByNeckBoss = false;
  bool Shadowed = false;

  Hardware Parts;
  // Whether the vector library may warn of a belly plate: true while a run is
  // set up, and after a set-up that failed.
  bool PlatesMayWarn = false;

  // Of Parts as they stand; none while a run is set up, and after a set-up that
  // failed: then the formulas alone judge. Copies of the calculator share them
  // until one of the copies changes its Parts.
  std::shared_ptr<LazyLayers> Layers;
  std::shared_ptr<const ShadowingLayers> WantedLayers;  // null: all
};

}  // namespace ZARN::DU

#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "db/TableSet.hpp"
#include "du/ShadowingExplanation.hpp"
#include "du/VerdictRows.hpp"
#include "du/hardware/CriticalTolerance.hpp"
#include "du/hardware/Hardware.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/WaterSegments.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathArrays.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "lightpath/PMTArray.hpp"

namespace ZARN::DU {

class LazyLayers;
template <class Thing>
class MadeOnce;
class NearestHardware;
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
/// The formulas in du/hardware define every verdict. The layers in du/fast give
/// the same verdicts about a thousand times faster. They are built when that
/// pays off: once the formulas have taken as long as building the layers would,
/// at the first batch, or by MakeLayers().
class ShadowingCalculator {
 public:
  /// Read the geometry from @p tables, for the run that these are set to, and
  /// build the model of every component.
  ///
  /// A component whose tables cannot be read is off for the run: it never
  /// blocks a path. For each component ZARN::warn logs whether it was loaded.
  /// At the end all result flags except Shadowed are cleared and all tolerances
  /// are 150 mm; the grid on the belly plates is built before that, with the
  /// tolerance from before the call.
  ///
  /// @param tables  read only during the call
  /// @throws ZARN::DBNotFoundError if a vessel radius is missing, before any
  ///         component is loaded; and any other exception that a loader lets
  ///         through. Lists that were not loaded again are then empty; result
  ///         flags and tolerances keep their values.
  void BeginOfRun(const TableSet& tables);
  /// The same from ZARN::DB::Get().
  void BeginOfRun();

  /// Set the tolerance of every component.
  ///
  /// @param tolerance  mm, any value, also zero or negative. The tests of the
  ///                   pipes and of the neck boss do not use it. It is also the
  ///                   number of grid divisions per plate side in the next
  ///                   BeginOfRun.
  void SetAllGeometryTolerances(double tolerance);

  /// Tell whether a component blocks the path, and store which one in the
  /// result flags. The components are tested in the order of
  /// eShadowingComponent; the first one that blocks the path is reported.
  ///
  /// A path that is uninitialised, or whose type has an unknown name, never
  /// throws: each test that cannot judge it logs to ZARN::warn. Some tests
  /// report a path of unknown type as blocked, as if it crossed the centre of
  /// the vessel.
  ///
  /// @param lightPath  a computed path. If its type has no name, an empty one
  ///                   is added to its LightPathTypeNames.
  bool CheckForShadowing(LightPathCalculator& lightPath);

  /// The same verdict for a path record whose type has its default name,
  /// without flags and messages. Thread-safe, also during CheckForShadowing on
  /// another thread, which writes only the result flags.
  eShadowingComponent FindShadowing(const LightPath& path) const;

  /// FindShadowing for many paths.
  ///
  /// @param paths     records of @p count paths
  /// @param verdicts  @p count verdicts are written here
  /// @param threads   maximum number of threads; it does not change verdicts
  void FindShadowing(const LightPath* paths, std::size_t count,
                     eShadowingComponent* verdicts,
                     std::size_t threads = 1) const;
  /// The same for paths in columns.
  void FindShadowing(const LightPathArrays& paths, std::size_t count,
                     eShadowingComponent* verdicts,
                     std::size_t threads = 1) const;

  /// The verdict on the light from an event to a PMT: that of FindShadowing for
  /// the path of CalcByPosition, or why there is no path. For reflected light
  /// the path is that of CalcReflectionByPosition, and the verdict
  /// kNoReflectedPath where there is none. Thread-safe, writes no messages.
  ///
  /// @param light  gives the vessel and the media; BeginOfRun was called
  /// @throws std::logic_error before @p light had its BeginOfRun
  eVerdict FindVerdict(const LightPathCalculator& light,
                       const TVector3& eventPos, const TVector3& pmtPos,
                       eLight kind = eLight::kDirect) const;

  /// Write the verdict on the light from one event to each PMT, as
  /// FindVerdict. Thread-safe.
  ///
  /// Computes hardly any of these paths exactly: a table of the event's rays
  /// gives crossings and directions within a bound, which mostly leaves no
  /// doubt. It pays from about 16 PMTs.
  ///
  /// @param light     gives the vessel and the media; BeginOfRun was called
  /// @param eventPos  mm, any values
  /// @param rows      pmts.Count() values are written to each
  /// @throws std::logic_error before @p light had its BeginOfRun
  void FindVerdicts(const LightPathCalculator& light, const TVector3& eventPos,
                    const PMTArray& pmts, const VerdictRows& rows) const;

  /// Tell how every component judges a path, also after the first that blocks:
  /// which rule applies, the quantity that decides beside its limit, and the
  /// item. The verdict is that of FindShadowing. Visits every test of the
  /// formulas, about 0.1 ms. Thread-safe, writes no messages.
  ShadowingExplanation Explain(const LightPath& path) const;
  /// The same for one component. @pre not kNone
  ComponentExplanation Explain(const LightPath& path,
                               eShadowingComponent component) const;

  /// The test by which a component blocks a path: of the findings of Explain
  /// the first that blocks. Nothing if none does. Looks at the nearest items
  /// only, so it takes about 1 us. Thread-safe, writes no messages.
  /// @pre not kNone
  std::optional<ShadowingTest> FindBlockingTest(
      const LightPath& path, eShadowingComponent component) const;

  /// The smallest tolerance at which a component blocks a path, mm, whatever
  /// tolerance is set (CriticalTolerance.hpp). The first call of a run sorts
  /// the hardware, a few ms; the others take about 2 us for all components.
  /// Thread-safe, writes no messages.
  double FindCriticalTolerance(const LightPath& path,
                               eShadowingComponent component) const;
  /// Those of all components.
  CriticalTolerances FindCriticalTolerances(const LightPath& path) const;
  /// The tolerances at which FindCriticalTolerance tells whether a component
  /// blocks a path.
  ToleranceRange GetMonotonicTolerances(eShadowingComponent component) const {
    return MonotonicTolerances(Parts, component);
  }

  /// Build the layers now instead of while paths are judged. Does nothing if
  /// they exist, if another thread is building them, or if there is not enough
  /// memory. Thread-safe, writes no messages, never throws.
  void MakeLayers() const;

  /// Choose which layers are used, for benchmarks and tests; verdicts do not
  /// change. Applies to this object, also in later runs.
  void UseLayers(const ShadowingLayers& layers);

  /// Whether CheckForShadowing may write messages about a path of this type
  /// under its default name: for unusual types, for any type while ZARN::debug
  /// is on, and for paths that cross the vessel in a geometry about which
  /// ROOT's vectors warn.
  bool WritesMessages(eLightPathType type) const;

  // Result of the last CheckForShadowing. At most one component's flag is set.
  bool IsShadowedByAVHDRope() const { return ShadowedByAVHDRope; }
  bool IsShadowedByBellyPlate() const { return ShadowedByBellyPlate; }
  bool IsShadowedByNCDAnchor() const { return ShadowedByNCDAnchor; }
  bool IsShadowedBySupportRope() const { return ShadowedBySupportRope; }
  bool IsShadowedByAVPipe() const { return ShadowedByAVPipe; }
  bool IsShadowedByNeckBoss() const { return ShadowedByNeckBoss; }
  bool IsShadowed() const { return Shadowed; }

  /// The component whose flag is set; kNone if none is, as after BeginOfRun.
  eShadowingComponent LastVerdict() const;

  /// The hardware of this run: models, tolerances and radii, for callers that
  /// draw, fit or check. The model of a component that is off is not
  /// meaningful.
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

  /// Why a component could not be loaded for this run: the text of the error,
  /// which names table, index and field. Empty where it is loaded, before the
  /// first run and for kNone.
  const std::string& GetLoadError(eShadowingComponent component) const {
    return LoadErrors[static_cast<std::size_t>(component)];
  }

  /// Whether a component's test runs: the component is loaded and has the items
  /// that its test indexes unchecked. A test that does not run writes no
  /// messages.
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
  void ForgetNearest();
  /// Made at the first call; null where there is none.
  const NearestHardware* FindNearestHardware() const;

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
  std::array<std::string, kNumberOfComponents + 1> LoadErrors;
  // Whether ROOT's vectors may warn about a belly plate; also true during
  // BeginOfRun and after one that failed.
  bool PlatesMayWarn = false;

  // Built from the current Parts. Null during BeginOfRun and after one that
  // failed; then only the formulas are used. Copies of the calculator share the
  // layers until one of them changes its Parts.
  std::shared_ptr<LazyLayers> Layers;
  std::shared_ptr<const ShadowingLayers> WantedLayers;  // null: all
  // For critical tolerances, at any tolerance. Null and shared like Layers.
  std::shared_ptr<MadeOnce<NearestHardware>> Nearest;
};

}  // namespace ZARN::DU

#pragma once

#include "db/TableSet.hpp"
#include "du/geometry/Diagnostics.hpp"
#include "du/hardware/AVHDRopes.hpp"
#include "du/hardware/AVPipes.hpp"
#include "du/hardware/BellyPlates.hpp"
#include "du/hardware/NCDAnchors.hpp"
#include "du/hardware/NeckBoss.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/SupportRopes.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// The hardware around the vessel: the model of every component, whether it was
/// loaded, its tolerance, and the vessel's radii; and the formulas that decide
/// which component blocks a path. Lengths in mm.
///
/// Copies are independent.
struct Hardware {
  static constexpr double kDefaultTolerance = 150.0;  // mm

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

  /// Clear the lists of all models but keep their memory.
  void ClearLists();

  /// Read the vessel's radii.
  ///
  /// @throws ZARN::DBNotFoundError if one is missing; those before it are set
  void LoadRadii(const TableSet& tables);

  /// Read the tables of one component into its model. Its flag does not change.
  ///
  /// @pre the radii are loaded
  /// @throws ZARN::DBNotFoundError for a missing table, entry or field, and any
  ///         other exception that a loader lets through; what was read stays in
  ///         the model
  void Load(const TableSet& tables, eShadowingComponent component);

  /// Store whether a component is on for the run. @pre not kNone
  void SetInfoLoaded(eShadowingComponent component, bool isLoaded);

  /// Set the tolerance of every component, mm, any value.
  void SetAllTolerances(double tolerance);

  /// Whether a component was loaded for this run; false for kNone.
  bool IsInfoLoaded(eShadowingComponent component) const;

  /// Whether a component's test runs: the component is loaded and has the items
  /// that its test indexes unchecked. A test that does not run writes no
  /// messages.
  bool IsReady(eShadowingComponent component) const;

  /// Whether a component was loaded but has nothing that could block a path: no
  /// rope, no plate, no anchor.
  bool HasNothingToTest(eShadowingComponent component) const;

  /// Whether a component blocks a path, by its formula; false for kNone.
  ///
  /// @pre IsReady(component)
  /// @param diagnostics  whether the formula may log to ZARN::debug, and ROOT
  ///                     warn about zero vectors
  bool IsBlockedBy(eShadowingComponent component, const WaterSegments& path,
                   eDiagnostics diagnostics) const;

  /// Visit every test of a component's formula, in its order and without
  /// messages; none for kNone.
  ///
  /// @pre IsReady(component)
  /// @param nearest  if not null, only the tests of the items that it finds, of
  ///                 ropes and anchors
  void VisitTests(eShadowingComponent component, const WaterSegments& path,
                  const ShadowingTestVisitor& visitor,
                  const NearestItems* nearest = nullptr) const;

  /// The first ready component, in the order of testing, that blocks a path by
  /// its formula.
  ///
  /// @param onMiss  called with each component that was tested and does not
  ///                block the path, before the next is tested
  template <class OnMiss>
  eShadowingComponent FirstBlocking(const WaterSegments& path,
                                    eDiagnostics diagnostics,
                                    const OnMiss& onMiss) const {
    for (const eShadowingComponent component : kShadowingComponents) {
      if (!IsReady(component)) continue;
      if (IsBlockedBy(component, path, diagnostics)) return component;
      onMiss(component);
    }
    return eShadowingComponent::kNone;
  }
  eShadowingComponent FirstBlocking(const WaterSegments& path,
                                    eDiagnostics diagnostics) const {
    return FirstBlocking(path, diagnostics, [](eShadowingComponent) {});
  }
};

}  // namespace ZARN::DU

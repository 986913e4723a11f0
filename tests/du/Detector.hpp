#pragma once

#include <string>
#include <vector>

#include "TVector3.h"
#include "du/ShadowingCalculator.hpp"
#include "tests/du/Paths.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::Testing {

/// A point on the outer vessel that hardware of all six kinds blocks.
inline const TVector3 kBlockedSpot(0, 5860, 100);
/// A point on the outer vessel far from all hardware.
inline const TVector3 kFreeSpot(100, -100, -5858);

/// A path that every component blocks, and one that none does.
inline DU::LightPath BlockedPath() {
  return OneCrossing(kBlockedSpot, {0, 1, 0});
}
inline DU::LightPath FreePath() { return OneCrossing(kFreeSpot, {1, 0, 0}); }

/// Tables of a detector with all components. Rope ends and plates are not at z
/// = 0, so only the neck boss blocks a path of unknown type, which is judged at
/// the centre.
inline Tables DetectorTables() {
  Tables tables = VesselTables();

  tables.Set("GEO", "hold_down_ropes", "solid_definition", "down_rope");
  tables.Set("GEO", "hold_down_ropes", "locations", "rolls");
  tables.Set("SOLID", "down_rope", "r_rope", 12.0);
  tables.SetPositions("SOLID", "down_rope",
                      {{0, 5880, -6138},
                       {0, 5880, -5},
                       {0, 3000, 5022},
                       {-2550, -1580, 5022},
                       {-5000, -3094, -5},
                       {-5000, -3094, -6138}},
                      "rope_");
  tables.Set("GEO_LOCATIONS", "rolls", "roll", std::vector<double>{0.0, 216.0});

  tables.Set("GEO", "hold_up_ropes", "solid_definition", "up_rope");
  tables.Set("GEO", "hold_up_ropes", "locations", "rope_anchors");
  tables.Set("SOLID", "up_rope", "r_rope", 15.0);
  tables.Set("SOLID", "up_rope", "z_rope", 6090.0);
  // A rope is on each side of its anchor location. The second one is above the
  // blocked spot.
  TVector3 anchor(0, 5920, 5);
  anchor.RotateZ(400.0 / 5860.0);
  tables.SetPositions("GEO_LOCATIONS", "rope_anchors",
                      {anchor, {5920, 0, 5}, {-4186, -4186, 5}});

  tables.Set("SOLID", "belly_plate_vintar", "octahedron_half_height", 600.0);
  tables.Set("GEO", "inner_av", "belly_plate_locations", "plates");
  tables.SetPositions("GEO_LOCATIONS", "plates",
                      {{0, 5860, 40}, {5860, 0, 40}});

  tables.Set("GEO", "inner_av", "ncd_anchor_definition", "anchor");
  tables.Set("GEO", "inner_av", "ncd_anchor_locations", "anchors");
  tables.Set("SOLID", "anchor", "half_z", 60.0);
  tables.Set("SOLID", "anchor", "r_max", 40.0);
  tables.SetPositions("GEO_LOCATIONS", "anchors",
                      {{0, 5800, 100}, {0, -4100, -4100}});

  for (const char* pipe : {"av_pipe-1", "av_pipe-2", "av_pipe-3", "av_pipe-4",
                           "av_pipe-labs", "av_pipe-6", "av_pipe-labr"}) {
    tables.SetPositions("SOLID", pipe, {{0, 820, 7800}, {0, 5950, 0}});
  }
  tables.Set("SOLID", "av_pipe-1", "r_max", 25.0);
  tables.Set("SOLID", "av_pipe-labs", "r_max", 33.0);

  // A huge boss that reaches below the equator.
  tables.Set("GEO", "av", "neck_boss_z", -1000.0);
  tables.Set("SOLID", "neck_boss", "half_height1", 0.0);
  tables.Set("SOLID", "neck_boss", "half_height2", 0.0);
  return tables;
}

/// Remove something from the tables without which only this component cannot be
/// loaded.
inline void SwitchOff(Tables& tables, DU::eShadowingComponent component) {
  switch (component) {
    case DU::eShadowingComponent::kAVHDRope:
      tables.Remove("GEO", "hold_down_ropes");
      break;
    case DU::eShadowingComponent::kSupportRope:
      tables.Remove("GEO", "hold_up_ropes");
      break;
    case DU::eShadowingComponent::kBellyPlate:
      tables.RemoveField("GEO", "inner_av", "belly_plate_locations");
      break;
    case DU::eShadowingComponent::kNCDAnchor:
      tables.RemoveField("GEO", "inner_av", "ncd_anchor_definition");
      break;
    case DU::eShadowingComponent::kAVPipe:
      tables.Remove("SOLID", "av_pipe-1");
      break;
    case DU::eShadowingComponent::kNeckBoss:
      tables.Remove("GEO", "av");
      break;
    case DU::eShadowingComponent::kNone:
      break;
  }
}

/// Start a run with these tables, and return its messages.
inline std::string BeginOfRun(DU::ShadowingCalculator& calculator,
                              const Tables& tables) {
  tables.Load();
  const Captured captured(warn);
  calculator.BeginOfRun();
  return captured.Text();
}

/// The tables with only the given components.
inline Tables Only(const std::vector<DU::eShadowingComponent>& components,
                   Tables tables = DetectorTables()) {
  for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
    bool isWanted = false;
    for (const auto wanted : components) isWanted |= wanted == component;
    if (!isWanted) SwitchOff(tables, component);
  }
  return tables;
}

/// A calculator in a run with these tables.
inline DU::ShadowingCalculator InRun(const Tables& tables) {
  DU::ShadowingCalculator calculator;
  BeginOfRun(calculator, tables);
  return calculator;
}

/// One in a run with DetectorTables.
inline const DU::ShadowingCalculator& Detector() {
  static const DU::ShadowingCalculator detector = InRun(DetectorTables());
  return detector;
}

}  // namespace ZARN::Testing

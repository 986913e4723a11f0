#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "du/Verdict.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::Display {

/// From where the directions of a map are taken.
enum class eMapView {
  kCentre,  ///< from the centre of the detector
  kEvent    ///< from the (only) event
};

/// Whether the tables give a component something to test.
enum class eComponentState { kTested, kNotLoaded, kNothingToTest };

/// Numbers for the legend of a map, in pairs of event and PMT or direction.
struct MapCounts {
  Scan::VerdictCounts paths;  ///< by verdict, of what has a light path
  /// Without a light path, by the reason: index is the number of the verdict
  /// less that of kTotalReflection.
  std::array<std::uint64_t, 4> withoutPath = {};

  /// Count a verdict. kNoReflectedPath is not one of direct light and counts
  /// nothing.
  void Add(DU::eVerdict verdict, std::uint64_t count = 1);
  std::uint64_t WithoutPath() const;
  std::uint64_t All() const { return paths.Paths() + WithoutPath(); }
};

/// One PMT on a map of marks.
struct MapMark {
  /// From the point of view, any length. A PMT without one (zero, or not
  /// finite) is not drawn, and the map says how many there are.
  TVector3 direction;
  /// For one event; kClear on a map of several.
  DU::eVerdict verdict = DU::eVerdict::kClear;
  /// On a map of several events: light paths and those that are shadowed.
  std::uint64_t paths = 0;
  std::uint64_t shadowed = 0;
  /// On a comparison: the verdict with the first tables, `verdict` being that
  /// with the second.
  DU::eVerdict before = DU::eVerdict::kClear;
};

/// The verdicts of every direction, as pixels in rows from the top left. Pixel
/// (column, row) stands for the direction of its centre (MapGrid::FindDirection
/// of display/Mollweide.hpp); pixels whose centre lies outside the ellipse are
/// not judged. FindMapGrid (display/SkyMap.hpp) gives the best size: two pixels
/// a unit of the picture, which makes edges smooth.
struct MapPixels {
  std::size_t columns = 0;
  std::size_t rows = 0;
  std::vector<DU::eVerdict> verdicts;  ///< columns x rows
  /// With the first tables; only on a comparison.
  std::vector<DU::eVerdict> before;
};

/// What a tolerance panel counts; its title says so.
enum class eMapPanelUnit { kPMTs, kDirections, kLightPaths };

/// The tolerance panel: what blocks at each of several tolerances, at least
/// two. The run's own is marked with its share if it is one of them.
struct MapPanel {
  eMapPanelUnit unit = eMapPanelUnit::kPMTs;
  std::vector<double> tolerances;           ///< mm, increasing
  std::vector<Scan::VerdictCounts> counts;  ///< at each of them
};

/// One kind of change between two sets of tables. Reasons why there is no path
/// count as one verdict: a change from one to the other is none.
struct MapChange {
  DU::eVerdict before;
  DU::eVerdict after;
  std::uint64_t count;
};

/// Everything that a sky map shows, apart from how it is drawn.
struct MapContent {
  eMapView view = eMapView::kCentre;
  /// Positions, mm. One event gives verdicts, several give shares.
  std::vector<TVector3> events;
  std::string eventName;  ///< of the only event; empty if given by position

  // One of these two; with no marks and no pixels the map has no PMTs.
  std::vector<MapMark> marks;
  std::optional<MapPixels> pixels;

  MapCounts counts;  ///< over all events
  /// Components in the order of testing.
  std::array<eComponentState, DU::kNumberOfComponents> components = {};
  /// Without it (and no comparison) the map takes the room.
  std::optional<MapPanel> panel;

  int run = 0;
  double tolerance = 0.0;   ///< mm
  double wavelength = 0.0;  ///< nm
  std::string detector;     ///< name of the tables
  std::string title;        ///< empty: made from the content

  /// A comparison with a second set of tables, of one event: `counts`,
  /// `components` and `run` are those of the second. The table of changes takes
  /// the place of the panel.
  struct Comparison {
    std::string before;  ///< names the first tables, as "reference-detector"
    std::string after;   ///< names the second ones, with the run if it differs
    std::vector<MapChange> changes;  ///< the most frequent first
  };
  std::optional<Comparison> comparison;

  bool IsComparison() const { return comparison.has_value(); }
  bool HasSeveralEvents() const { return events.size() > 1; }
};

}  // namespace ZARN::Display

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TVector3.h"
#include "app/RunOptions.hpp"
#include "display/MapContent.hpp"
#include "display/SkyMap.hpp"
#include "io/ColumnNames.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace CLI {
class App;
}

namespace ZARN::App {

/// What kind of file a map is.
enum class eMapFormat { kSvg, kPdf, kPng };

/// The options of a map.
struct MapOptions {
  RunOptions run;
  std::optional<std::string> events;
  std::optional<std::string> event;  // the name of one of them
  std::optional<TVector3> at;        // instead of events
  std::optional<std::string> pmts;
  std::optional<double> radius;  // mm; instead of PMTs, every direction
  IO::ColumnNames names;         // of the columns of events and PMTs
  std::optional<std::string> output;
  std::optional<std::string> data;
  double wavelength = DU::LightPathCalculator::kDefaultWavelength;  // nm
  Display::eMapView view = Display::eMapView::kCentre;
  std::vector<double> tolerances;  // mm; empty: the usual ones
  bool hasNoPanel = false;
  std::string title;  // empty: made from the content
  Display::MapStyle style;
  std::optional<std::string> compare;
  std::optional<int> compareRun;

  eMapFormat Format() const;
  bool IsComparison() const {
    return compare.has_value() || compareRun.has_value();
  }
  bool HasPanel() const { return !hasNoPanel && !IsComparison(); }
  /// The second tables of a comparison; without one those of the map.
  RunOptions RunOfComparison() const;
};

/// Add the options and the help of map; @p options must outlive the parsing.
void AddMapOptions(CLI::App& command, MapOptions& options);

/// Check options against each other, and that files do not conflict.
///
/// @throws BadUsage, IO::BadInput
void RequireConsistent(const MapOptions& options);

}  // namespace ZARN::App

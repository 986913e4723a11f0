#include "app/MapCommand.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/CommandLine.hpp"
#include "app/CountsTable.hpp"
#include "app/FindPosition.hpp"
#include "app/MapData.hpp"
#include "app/MapOptions.hpp"
#include "app/NameOfTables.hpp"
#include "app/ProgressBar.hpp"
#include "app/RunOptions.hpp"
#include "app/ScopedLogOutput.hpp"
#include "app/Signals.hpp"
#include "app/Usage.hpp"
#include "db/Fingerprint.hpp"
#include "display/CairoWriter.hpp"
#include "display/FillMap.hpp"
#include "display/MapPoints.hpp"
#include "display/MapScan.hpp"
#include "display/SkyMap.hpp"
#include "display/SvgWriter.hpp"
#include "io/Errors.hpp"
#include "io/OutputFile.hpp"
#include "io/PositionReader.hpp"

namespace ZARN::App {
namespace {

/// The calculators for one set of tables.
struct Calculators {
  Calculators(const RunOptions& run, double wavelength, TableSet& tables) {
    LoadTables(run, tables);
    BeginRun(run, shadowing, tables);
    lightPath.SetWavelength(wavelength);
    BeginRun(run, lightPath, tables);
  }

  Display::MapTables Tables() const { return {&shadowing, &lightPath}; }

  DU::ShadowingCalculator shadowing;
  DU::LightPathCalculator lightPath;
};

/// How a comparison calls its two sets of tables.
Display::MapContent::Comparison NamesOf(const RunOptions& before,
                                        const RunOptions& after) {
  Display::MapContent::Comparison names;
  names.before = NameOfTables(before.tables);
  names.after = NameOfTables(after.tables);
  if (names.before == names.after && before.tables.name != after.tables.name) {
    names.before = before.tables.name;
    names.after = after.tables.name;
  }
  if (before.run != after.run) {
    names.before += ", run " + std::to_string(before.run);
    names.after += ", run " + std::to_string(after.run);
  }
  return names;
}

std::vector<IO::NamedPosition> EventsOf(const MapOptions& options) {
  if (options.at.has_value()) return {{"", "", *options.at}};
  if (options.event.has_value()) {
    return {
        FindPosition(*options.events, options.names, "event", *options.event)};
  }
  std::vector<IO::NamedPosition> events =
      IO::ReadPositions(*options.events, "event", options.names);
  if (events.empty()) {
    throw IO::BadInput(*options.events + ": there are no events");
  }
  if (events.size() == 1) return events;
  const auto refuse = [&](const std::string& option, const std::string& more) {
    throw BadUsage(option + " needs one event, and " + *options.events +
                   " has several: choose one with --event" + more);
  };
  if (options.IsComparison()) {
    refuse(options.compare.has_value() ? "--compare" : "--compare-run", "");
  }
  if (options.view == Display::eMapView::kEvent) refuse("--view event", "");
  if (options.radius.has_value()) {
    refuse("--radius", ", or show the shares of PMTs with --pmts");
  }
  return events;
}

/// Makes one map.
class MapWork {
 public:
  explicit MapWork(const MapOptions& options)
      : options_(options),
        first_(options.run, options.wavelength, DB::Get()),
        events_(EventsOf(options)) {
    if (options_.IsComparison()) {
      second_.emplace(options_.RunOfComparison(), options_.wavelength, others_);
    }
    if (options_.pmts.has_value()) {
      pmts_ = IO::ReadPositions(*options_.pmts, "pmt", options_.names);
    }
    DescribeContent();
    if (options_.view == Display::eMapView::kEvent) {
      from_ = content_.events.front();
    }
    if (options_.radius.has_value()) RequireRays();
  }

  /// Judge, draw, write, and print the counts.
  void Run() {
    IO::OutputFile picture(options_.output);
    std::optional<MapData> data;
    if (options_.data.has_value())
      data.emplace(*options_.data, Origin(), Kind());
    {
      ProgressBar progress;
      const ScopedLogOutput logOutput(progress.Messages());
      if (options_.pmts.has_value()) {
        JudgePMTs(progress, data);
      } else {
        JudgeDirections(progress, data);
      }
    }
    ThrowIfInterrupted();
    picture.Write(Picture());
    picture.Finish();
    if (data.has_value()) data->Finish();
    ThrowIfInterrupted();
    picture.Commit();
    if (data.has_value()) data->Commit();
    PrintCounts();
  }

 private:
  void PrintCounts() const {
    const Display::MapCounts& counts = content_.counts;
    PrintCount(std::cerr, "pairs", counts.All());
    PrintCount(std::cerr, "no path", counts.WithoutPath());
    if (content_.IsComparison()) {
      std::uint64_t changed = 0;
      for (const Display::MapChange& change : content_.comparison->changes) {
        changed += change.count;
      }
      PrintCount(std::cerr, "changed", changed);
    }
    App::PrintCounts(std::cerr, counts.paths, Shown().shadowing, seconds_);
  }

  /// Those whose verdicts are shown: with the second tables of a comparison.
  const Calculators& Shown() const {
    return second_.has_value() ? *second_ : first_;
  }

  void DescribeContent() {
    content_.view = options_.view;
    content_.events = IO::PositionsOf(events_);
    if (events_.size() == 1) content_.eventName = events_.front().name;
    content_.components = Display::ComponentStatesOf(Shown().shadowing);
    content_.tolerance = first_.shadowing.GetAVHDRopeTolerance();
    content_.wavelength = options_.wavelength;
    content_.detector = NameOfTables(options_.run.tables);
    content_.title = options_.title;
    content_.run = options_.run.run;
    if (!options_.IsComparison()) return;
    const RunOptions other = options_.RunOfComparison();
    content_.run = other.run;
    content_.comparison = NamesOf(options_.run, other);
  }

  /// Rays in all directions reach the sphere only from inside.
  void RequireRays() const {
    if (std::hypot(from_.X(), from_.Y(), from_.Z()) < *options_.radius) return;
    throw IO::BadInput(
        "--view event with --radius: the event is not inside the sphere, so "
        "that not every direction has an end on it");
  }

  /// Of the verdicts that are shown.
  IO::Origin Origin() const {
    IO::Origin origin = OriginOf(options_.RunOfComparison(), Shown().shadowing);
    if (second_.has_value()) origin.fingerprint = Fingerprint(others_);
    origin.wavelength = options_.wavelength;
    return origin;
  }

  eMapData Kind() const {
    if (content_.IsComparison()) return eMapData::kComparison;
    return content_.HasSeveralEvents() ? eMapData::kShares
                                       : eMapData::kVerdicts;
  }

  /// @param done   pairs that were judged before
  /// @param total  of all scans
  Display::MapScanSettings SettingsFor(ProgressBar& progress,
                                       std::uint64_t done,
                                       std::uint64_t total) const {
    Display::MapScanSettings settings;
    settings.threads = options_.run.threads;
    settings.checkForStop = ThrowIfInterrupted;
    settings.onProgress = [&progress, done, total](std::uint64_t pairs) {
      progress.Update(done + pairs, static_cast<double>(done + pairs) /
                                        static_cast<double>(total));
    };
    if (second_.has_value()) settings.before = first_.Tables();
    return settings;
  }

  std::vector<double> Tolerances() const {
    std::vector<double> tolerances = options_.tolerances;
    std::sort(tolerances.begin(), tolerances.end());
    if (!tolerances.empty()) return tolerances;
    return Display::PanelTolerances(content_.tolerance);
  }

  Display::MapVerdicts Judge(const Display::MapPoints& targets,
                             const Display::MapScanSettings& settings) const {
    return Display::ScanMap(Shown().Tables(), content_.events, targets,
                            settings);
  }

  /// Judge what the map shows and counts.
  Display::MapVerdicts JudgeMap(const Display::MapPoints& targets,
                                const Display::MapScanSettings& settings) {
    const auto begin = std::chrono::steady_clock::now();
    Display::MapVerdicts verdicts = Judge(targets, settings);
    const std::chrono::duration<double> elapsed =
        std::chrono::steady_clock::now() - begin;
    seconds_ = elapsed.count();
    content_.counts = verdicts.counts;
    if (content_.IsComparison())
      content_.comparison->changes = verdicts.changes;
    return verdicts;
  }

  void JudgePMTs(ProgressBar& progress, std::optional<MapData>& data) {
    const std::vector<TVector3> positions = IO::PositionsOf(pmts_);
    Display::MapScanSettings settings =
        SettingsFor(progress, 0, positions.size() * events_.size());
    if (options_.HasPanel()) settings.tolerances = Tolerances();
    const Display::MapVerdicts verdicts =
        JudgeMap(Display::PointsOf(positions), settings);
    if (options_.HasPanel()) {
      content_.panel = Display::MapPanel{
          content_.HasSeveralEvents() ? Display::eMapPanelUnit::kLightPaths
                                      : Display::eMapPanelUnit::kPMTs,
          settings.tolerances, verdicts.atTolerances};
    }
    content_.marks = Display::MarksOf(positions, verdicts, from_);
    if (data.has_value()) data->WritePMTs(pmts_, from_, verdicts);
  }

  void JudgeDirections(ProgressBar& progress, std::optional<MapData>& data) {
    constexpr std::size_t kPanelDirections = 100'000;
    const Display::MapGrid grid = Display::FindMapGrid(
        options_.style, options_.hasNoPanel ? Display::eMapColumn::kNone
                                            : Display::eMapColumn::kShown);
    const std::vector<std::uint32_t> pixels = Display::JudgedPixels(grid);
    const std::size_t total =
        pixels.size() + (options_.HasPanel() ? kPanelDirections : 0);
    const Display::MapPoints ends = Display::EndsOnSphere(
        Display::DirectionsOf(grid, pixels), from_, *options_.radius);
    const Display::MapVerdicts verdicts =
        JudgeMap(ends, SettingsFor(progress, 0, total));
    content_.pixels = Display::PixelsOf(grid, pixels, verdicts);
    if (options_.HasPanel()) {
      Display::MapScanSettings settings =
          SettingsFor(progress, pixels.size(), total);
      settings.tolerances = Tolerances();
      const Display::MapPoints even = Display::EndsOnSphere(
          Display::EvenDirections(kPanelDirections), from_, *options_.radius);
      content_.panel = Display::MapPanel{Display::eMapPanelUnit::kDirections,
                                         settings.tolerances,
                                         Judge(even, settings).atTolerances};
    }
    if (!data.has_value()) return;
    data->WritePixels(pixels, grid.columns, ends, from_, verdicts);
  }

  std::string Picture() const {
    const Display::Drawing drawing =
        Display::DrawSkyMap(content_, options_.style);
    switch (options_.Format()) {
      case eMapFormat::kPdf:
        return Display::WritePdf(drawing);
      case eMapFormat::kPng:
        return Display::WritePng(drawing);
      case eMapFormat::kSvg:
        break;
    }
    return Display::WriteSvg(drawing);
  }

  const MapOptions& options_;
  Calculators first_;
  TableSet others_;  // of a comparison
  std::optional<Calculators> second_;
  std::vector<IO::NamedPosition> events_;
  std::vector<IO::NamedPosition> pmts_;
  TVector3 from_;  // the point of view
  Display::MapContent content_;
  double seconds_ = 0.0;  // for the verdicts that the map counts
};

void DrawMap(const MapOptions& options) {
  MapWork work(options);
  const DeferredSignals deferredSignals;
  work.Run();
}

}  // namespace

void AddMapCommand(CLI::App& app) {
  const auto options = std::make_shared<MapOptions>();
  CLI::App& command = AddCommand(
      app, "map", "Draw what blocks the light from an event, in all directions",
      [options] {
        RequireConsistent(*options);
        DrawMap(*options);
      });
  AddMapOptions(command, *options);
}

}  // namespace ZARN::App

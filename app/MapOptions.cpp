#include "app/MapOptions.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "app/CommandLine.hpp"
#include "app/InputColumnsOption.hpp"
#include "app/PositionOption.hpp"
#include "app/TolerancesOption.hpp"
#include "app/Usage.hpp"
#include "db/JsonTables.hpp"
#include "io/DistinctFiles.hpp"
#include "io/FileNames.hpp"
#include "io/Quoted.hpp"
#include "io/Sidecar.hpp"
#include "log/NearestName.hpp"

namespace ZARN::App {
namespace {

constexpr const char* kMapFooter =
    "The map shows all directions from the centre of the detector, or with\n"
    "--view event from the event, in equal areas (Mollweide). Azimuth 0 is in\n"
    "the middle and azimuth grows to the left, as seen from inside.\n"
    "  --pmts               one mark for each PMT: its shape and colour say "
    "what\n"
    "                       blocks the light; above 20,000 PMTs each pixel "
    "shows\n"
    "                       the nearest one\n"
    "  --radius             every direction has the colour of what blocks the\n"
    "                       light to its end on a sphere around the centre\n"
    "Several events colour each PMT by the share of its light paths that are\n"
    "shadowed. A comparison (--compare, --compare-run) judges one event with "
    "two\n"
    "sets of tables, and shows only what changes.\n"
    "Beside the map, a panel shows what blocks at other tolerances: for all\n"
    "PMTs, or for 100,000 directions that are spread evenly. On a comparison "
    "a\n"
    "table of the changes stands there.\n"
    "Without --tolerances the panel has 17 from 10 to 300 mm, with the run's "
    "own.\n"
    "EVENTS and PMTS have the same columns as for scan.\n\n"
    "MAP is SVG, PDF or PNG by the end of its name: .svg, .pdf or .png. "
    "Without\n"
    "-o, SVG goes to standard output. --data writes the numbers behind the\n"
    "picture, one row for each PMT or pixel:\n"
    "  pmt                  its name; for pixels column and row, from the top\n"
    "                       left\n"
    "  x, y, z              position of the PMT or of the direction's end, mm\n"
    "  azimuth, polar_angle the direction, rad; empty if there is none\n"
    "  shadowed             0 or 1; empty if there is no path\n"
    "  by                   AVHDRope, SupportRope, BellyPlate, NCDAnchor,\n"
    "                       AVPipe, NeckBoss, empty, or no path\n"
    "with several events paths, shadowed and fraction instead of the last "
    "two,\n"
    "and on a comparison shadowed_before and by_before in front of them.\n\n"
    "Exit status: 0 success; 1 output cannot be written; 2 bad usage or "
    "input;\n"
    "130 interrupted.\n\n"
    "Example:\n"
    "  zarn-shadow map --at 0,0,3000 --pmts data/pmts.csv \\\n"
    "      --geometry data/reference-detector -o map.svg";

struct FormatName {
  std::string_view suffix;
  eMapFormat format;
};
constexpr std::array kFormats = {FormatName{".svg", eMapFormat::kSvg},
                                 FormatName{".pdf", eMapFormat::kPdf},
                                 FormatName{".png", eMapFormat::kPng}};

/// The format that belongs to the end of a name; nullopt for another end.
std::optional<eMapFormat> FormatByName(const std::string& name) {
  for (const FormatName& known : kFormats) {
    if (name.size() > known.suffix.size() &&
        name.compare(name.size() - known.suffix.size(), std::string::npos,
                     known.suffix) == 0) {
      return known.format;
    }
  }
  return std::nullopt;
}

/// What one of some words means; BadUsage for any other word.
template <class Meaning>
Meaning MeaningOf(const std::string& option, const std::string& text,
                  const std::array<std::pair<const char*, Meaning>, 2>& words) {
  std::vector<std::string> known;
  for (const auto& [word, meaning] : words) {
    if (text == word) return meaning;
    known.emplace_back(word);
  }
  const std::string nearest = NearestName(text, known);
  throw BadUsage(
      option + ": " + IO::Quoted(text) + " is not known" +
      (nearest.empty() ? "; use " + Joined(known, "or") : Suggest(nearest)));
}

/// One side of the picture, pixels.
double SideOf(const std::string& text, const std::string& side) {
  const int pixels = WholeNumberOf("--size", side);
  if (pixels < Display::kSmallestMapSide || pixels > Display::kLargestMapSide) {
    throw BadUsage("--size: " + IO::Quoted(text) + " is out of range (" +
                   std::to_string(static_cast<int>(Display::kSmallestMapSide)) +
                   " to " +
                   std::to_string(static_cast<int>(Display::kLargestMapSide)) +
                   " pixels in width and height)");
  }
  return pixels;
}

void SetSize(const std::string& text, Display::MapStyle& style) {
  const std::size_t middle = text.find('x');
  if (middle == std::string::npos) {
    throw BadUsage("--size: " + IO::Quoted(text) +
                   " is not of the form WIDTHxHEIGHT");
  }
  style.width = SideOf(text, text.substr(0, middle));
  style.height = SideOf(text, text.substr(middle + 1));
}

void AddInputs(CLI::App& command, MapOptions& options) {
  AddPositionOption(command, "--at", options.at,
                    "One event at this position in mm");
  AddOption(command, "--events", options.events, "EVENTS",
            "CSV or ROOT file of events; - reads CSV from standard input");
  AddOption(command, "--event", options.event, "NAME",
            "Only the event with this name");
  AddOption(command, "--pmts", options.pmts, "PMTS",
            "CSV or ROOT file of PMTs; - reads CSV from standard input");
  AddOption(
      command, "--radius",
      [&options](const std::string& text) {
        options.radius = NumberOf("--radius", text);
        if (*options.radius > 0) return;
        throw BadUsage("--radius: " + IO::Quoted(text) +
                       " is not greater than 0");
      },
      "MM", "Without PMTs: every direction, to a sphere of this radius in mm");
  AddInputColumnsOption(command, options.names, PositionColumns(),
                        "event_x=evt.x,pmt=id");
}

void AddComparison(CLI::App& command, MapOptions& options) {
  AddOption(command, "--compare", options.compare, "TABLES",
            "Show what changes with these other tables");
  AddOption(command, "--compare-run", options.compareRun, "N",
            "Show what changes with the tables of this other run");
}

void AddPicture(CLI::App& command, MapOptions& options) {
  using Display::eMapView;
  using Display::eTheme;
  AddOption(
      command, "--view",
      [&options](const std::string& text) {
        options.view = MeaningOf<eMapView>(
            "--view", text,
            {{{"centre", eMapView::kCentre}, {"event", eMapView::kEvent}}});
      },
      "FROM", "Show directions from the centre (default) or from the event");
  AddTolerancesOption(command, options.tolerances, "Tolerances of the panel");
  AddFlag(command, "--no-panel", options.hasNoPanel,
          "Leave out the panel of other tolerances");
  AddOption(
      command, "--theme",
      [&options](const std::string& text) {
        options.style.theme = MeaningOf<eTheme>(
            "--theme", text,
            {{{"light", eTheme::kLight}, {"dark", eTheme::kDark}}});
      },
      "NAME", "Colours: light (default) or dark");
  AddOption(command, "--title", options.title, "TEXT",
            "Title of the picture, instead of one made from its content");
  AddOption(
      command, "--size",
      [&options](const std::string& text) { SetSize(text, options.style); },
      "WxH", "Size of the picture in pixels (default: 1200x700)");
  AddOption(command, "-o,--output", options.output, "MAP",
            "Write the map to this file: *.svg, *.pdf or *.png");
  AddOption(command, "--data", options.data, "OUT",
            "Write the numbers behind the picture to this CSV file");
}

void RequireOneWay(const MapOptions& options) {
  if (options.events.has_value() == options.at.has_value()) {
    throw BadUsage("map needs either --events or --at");
  }
  if (options.event.has_value() && options.at.has_value()) {
    throw BadUsage("--event needs --events");
  }
  if (options.pmts.has_value() == options.radius.has_value()) {
    throw BadUsage("map needs either --pmts, or --radius for every direction");
  }
}

void RequireConsistentPanel(const MapOptions& options) {
  const char* const panel = options.hasNoPanel            ? "--no-panel"
                            : !options.tolerances.empty() ? "--tolerances"
                                                          : nullptr;
  if (options.IsComparison() && panel != nullptr) {
    throw BadUsage(std::string(options.compare.has_value() ? "--compare"
                                                           : "--compare-run") +
                   " and " + panel +
                   " exclude each other: the table of changes takes the place "
                   "of the panel");
  }
  if (options.hasNoPanel && !options.tolerances.empty()) {
    throw BadUsage("--tolerances and --no-panel exclude each other");
  }
  if (options.tolerances.size() == 1) {
    throw BadUsage("--tolerances: the panel needs two or more");
  }
  std::vector<double> sorted = options.tolerances;
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
    throw BadUsage("--tolerances: the panel needs tolerances that differ");
  }
  if (!sorted.empty() && !std::isfinite(sorted.back() - sorted.front())) {
    throw BadUsage(
        "--tolerances: the panel cannot show tolerances that are so far apart");
  }
}

void RequireDistinctFiles(const MapOptions& options) {
  std::vector<std::string> inputs = FilesOf(options.run);
  for (const auto& input : {options.pmts, options.events}) {
    if (input.has_value()) inputs.push_back(*input);
  }
  std::vector<std::string> outputs = {options.output.value_or("-")};
  if (options.data.has_value()) {
    outputs.push_back(*options.data);
    const auto sidecar = IO::SidecarName(options.data);
    if (sidecar.has_value()) outputs.push_back(*sidecar);
  }
  IO::RequireDistinctFiles(inputs, outputs);
  // The tables may be the same, at another run.
  if (options.IsComparison()) {
    IO::RequireDistinctFiles(FilesOf(options.RunOfComparison()), outputs);
  }
}

}  // namespace

eMapFormat MapOptions::Format() const {
  return FormatByName(output.value_or("-")).value_or(eMapFormat::kSvg);
}

RunOptions MapOptions::RunOfComparison() const {
  RunOptions other = run;
  // What is laid over tables belongs to those of --geometry, and so does a
  // time: so can tables be compared with and without them.
  if (compare.has_value()) other.tables = {*compare, "", std::nullopt};
  if (compareRun.has_value()) other.run = *compareRun;
  return other;
}

void AddMapOptions(CLI::App& command, MapOptions& options) {
  AddInputs(command, options);
  AddRunOptions(command, options.run);
  AddThreadsOption(command, options.run.threads);
  AddWavelengthOption(command, options.wavelength);
  AddComparison(command, options);
  AddPicture(command, options);
  SetFooter(command, kMapFooter);
}

void RequireConsistent(const MapOptions& options) {
  RequireOneWay(options);
  RequireConsistentPanel(options);
  // A pipe, a device or standard output needs no name of a format.
  const std::string output = options.output.value_or("-");
  if (output != "-" && IO::CanReplace(output) &&
      !FormatByName(output).has_value()) {
    throw BadUsage("-o: the name " + IO::Quoted(output) +
                   " ends in none of .svg, .pdf and .png");
  }
  if (options.data.has_value() && IO::IsRootFileName(*options.data)) {
    throw BadUsage("--data: " + IO::Quoted(*options.data) +
                   " would be CSV, not a ROOT file");
  }
  RequireDistinctFiles(options);
}

}  // namespace ZARN::App

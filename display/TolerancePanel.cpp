// What blocks at each of several tolerances, as stacked areas.

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "display/MapScene.hpp"
#include "display/MapWords.hpp"

namespace ZARN::Display {
namespace {

constexpr double kLeft = 38.0;    // of the plot: numbers of the axis
constexpr double kNames = 106.0;  // right of the plot: names of bands
constexpr double kTop = 45.0;     // title
constexpr double kBottom = 37.0;  // tolerances
constexpr double kSeam = 1.2;
constexpr double kNoteWidth = 264.0;

// Steps of an axis: 1, 2 or 5 times a power of ten, so that at most @p most of
// them cover @p range.
double StepOf(double range, double most) {
  const double power = std::pow(10.0, std::floor(std::log10(range / most)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (range / (factor * power) <= most * (1.0 + 1e-9)) return factor * power;
  }
  return 10.0 * power;
}

// The plot: shares, of what has a path, that components block at tolerances.
class Plot {
 public:
  explicit Plot(const MapScene& scene)
      : panel_(*scene.content.panel), box_(BoxOf(scene.layout.panel)) {
    for (const auto& counts : panel_.counts) {
      std::array<double, DU::kNumberOfComponents + 1> sums = {};
      const auto paths = static_cast<double>(counts.Paths());
      hasPaths_ |= counts.Paths() > 0;
      for (std::size_t i = 0; i < DU::kNumberOfComponents; ++i) {
        const auto count =
            static_cast<double>(counts.Of(DU::kShadowingComponents[i]));
        sums[i + 1] = sums[i] + (paths > 0.0 ? 100.0 * count / paths : 0.0);
      }
      sums_.push_back(sums);
      highest_ = std::max(highest_, sums.back());
    }
    step_ = StepOf(std::max(highest_, 0.1), 6.0);
    top_ = step_ * std::max(1.0, std::ceil(highest_ / step_ - 1e-9));
    // Room above the bands for the number of the run's tolerance. It stands
    // left of the run, unless that is too far left.
    constexpr double kRoom = 0.04;
    constexpr double kFarLeft = 0.4;
    const double run = scene.content.tolerance;
    double below = 0.0;
    for (std::size_t i = 0; i < sums_.size(); ++i) {
      const bool isLeft = panel_.tolerances[i] <= run;
      if (isLeft || X(run) < box_.x + kFarLeft * box_.width) {
        below = std::max(below, sums_[i].back());
      }
    }
    if (below > (1.0 - kRoom) * top_) {
      top_ = std::min(top_ + step_, 100.0 / (1.0 - kRoom));
    }
  }

  const Box& Place() const { return box_; }
  const MapPanel& Panel() const { return panel_; }
  double Step() const { return step_; }
  long Steps() const {
    return static_cast<long>(std::floor(top_ / step_ + 1e-9));
  }
  bool HasPaths() const { return hasPaths_; }
  bool IsEmpty() const { return highest_ == 0.0; }

  double X(double tolerance) const {
    const double first = panel_.tolerances.front();
    const double range = panel_.tolerances.back() - first;
    return box_.x + (tolerance - first) / range * box_.width;
  }
  double Y(double percent) const {
    return box_.Bottom() - percent / top_ * box_.height;
  }
  // The upper edge of the first components, percent.
  double Sum(std::size_t at, std::size_t components) const {
    return sums_[at][components];
  }
  std::vector<Point> Edge(std::size_t components) const {
    std::vector<Point> edge;
    for (std::size_t i = 0; i < sums_.size(); ++i) {
      edge.push_back({X(panel_.tolerances[i]), Y(sums_[i][components])});
    }
    return edge;
  }

 private:
  static Box BoxOf(const Box& panel) {
    return {panel.x + kLeft, panel.y + kTop, panel.width - kLeft - kNames,
            panel.height - kTop - kBottom};
  }

  const MapPanel& panel_;
  Box box_;
  std::vector<std::array<double, DU::kNumberOfComponents + 1>> sums_;
  bool hasPaths_ = false;
  double highest_ = 0.0;
  double step_ = 0.0;
  double top_ = 0.0;
};

void AddBands(const MapScene& scene, const Plot& plot, Group& group) {
  for (std::size_t i = 0; i < DU::kNumberOfComponents; ++i) {
    Shapes band;
    band.outline = plot.Edge(i);
    const std::vector<Point> upper = plot.Edge(i + 1);
    band.outline.insert(band.outline.end(), upper.rbegin(), upper.rend());
    band.fill = scene.theme.components[i];
    group.items.emplace_back(std::move(band));
  }
  // No seam below the last band: the neck boss is as thin as one.
  Lines seams;
  seams.stroke = {scene.theme.view, kSeam};
  for (std::size_t i = 1; i + 1 < DU::kNumberOfComponents; ++i) {
    seams.lines.push_back(plot.Edge(i));
  }
  group.items.emplace_back(std::move(seams));
}

// Horizontal lines at the steps of the axis.
void AddGrid(const Plot& plot, const Colour& colour, Group& group) {
  const Box& box = plot.Place();
  Lines grid;
  grid.stroke = {colour, 1.0};
  for (long i = 1; i <= plot.Steps(); ++i) {
    const double y = plot.Y(static_cast<double>(i) * plot.Step());
    grid.lines.push_back({{box.x, y}, {box.Right(), y}});
  }
  group.items.emplace_back(std::move(grid));
}

void AddPercents(const MapScene& scene, const Plot& plot, Group& group) {
  for (long i = 0; i <= plot.Steps(); ++i) {
    const double percent = static_cast<double>(i) * plot.Step();
    const std::string word = WordOf(percent) + (i == plot.Steps() ? " %" : "");
    group.items.emplace_back(Text{word,
                                  {plot.Place().x - 6.0, plot.Y(percent) + 4.0},
                                  kAxisFont,
                                  scene.theme.secondText,
                                  eAnchor::kEnd,
                                  std::nullopt});
  }
}

void AddTolerances(const MapScene& scene, const Plot& plot, Group& group) {
  const Box& box = plot.Place();
  const double first = plot.Panel().tolerances.front();
  const double last = plot.Panel().tolerances.back();
  const double step = StepOf(last - first, 6.0);
  Lines axis;
  axis.stroke = {scene.theme.noPath, 1.0};
  axis.lines.push_back({{box.x, box.Bottom()}, {box.Right(), box.Bottom()}});
  double free = -1e9;  // where the next number may begin
  // Tolerances that hardly differ have the same words: they stand once.
  std::set<std::string> written;
  const double lastBegins =
      box.Right() - 0.5 * scene.ruler.WidthOf(WordOf(last), kAxisFont);
  const auto write = [&](double tolerance, double mostRight) {
    const std::string word = WordOf(tolerance);
    if (written.count(word) > 0) return;
    const double half = 0.5 * scene.ruler.WidthOf(word, kAxisFont);
    const double x = plot.X(tolerance);
    constexpr double kSpace = 6.0;
    if (x - half < free || x + half + kSpace > mostRight) return;
    free = x + half + kSpace;
    written.insert(word);
    axis.lines.push_back({{x, box.Bottom()}, {x, box.Bottom() + 4.0}});
    group.items.emplace_back(Text{word,
                                  {x, box.Bottom() + 18.0},
                                  kAxisFont,
                                  scene.theme.secondText,
                                  eAnchor::kMiddle,
                                  std::nullopt});
  };
  write(first, lastBegins);
  // Counted by whole numbers, so that steps of huge tolerances end, too.
  const double begin = std::floor(first / step) + 1.0;
  constexpr int kMostSteps = 8;
  for (int i = 0; i < kMostSteps; ++i) {
    const double tolerance = (begin + i) * step;
    if (tolerance > first && tolerance < last &&
        WordOf(tolerance) != WordOf(last)) {
      write(tolerance, lastBegins);
    }
  }
  write(last, 1e9);
  group.items.emplace_back(std::move(axis));
  group.items.emplace_back(Text{"Tolerance, mm",
                                {box.MiddleX(), box.Bottom() + 34.0},
                                kAxisFont,
                                scene.theme.secondText,
                                eAnchor::kMiddle,
                                std::nullopt});
}

// The places of words, in the order of wanted places from the bottom up, moved
// so that they are at least a line apart: up, and down again what has left the
// room at the top.
std::vector<double> Spread(std::vector<double> wanted, double highest,
                           double lowest) {
  constexpr double kLine = 18.0;
  double below = lowest + kLine;
  for (double& y : wanted) {
    y = std::min(y, below - kLine);
    below = y;
  }
  double above = highest - kLine;
  std::for_each(wanted.rbegin(), wanted.rend(), [&](double& y) {
    y = std::max(y, above + kLine);
    above = y;
  });
  return wanted;
}

void AddNames(const MapScene& scene, const Plot& plot, Group& group) {
  const Box& box = plot.Place();
  const std::size_t last = plot.Panel().counts.size() - 1;
  std::vector<std::size_t> bands;
  std::vector<double> middles;
  for (std::size_t i = 0; i < DU::kNumberOfComponents; ++i) {
    if (plot.Sum(last, i + 1) == plot.Sum(last, i)) continue;
    bands.push_back(i);
    middles.push_back(
        plot.Y(0.5 * (plot.Sum(last, i) + plot.Sum(last, i + 1))));
  }
  const std::vector<double> places = Spread(middles, box.y, box.Bottom() - 6.0);
  for (std::size_t i = 0; i < bands.size(); ++i) {
    Lines line;
    line.stroke = {scene.theme.components[bands[i]], 2.0};
    line.lines.push_back(
        {{box.Right() + 3.0, middles[i]}, {box.Right() + 8.0, places[i]}});
    group.items.emplace_back(std::move(line));
    const double x = box.Right() + 12.0;
    const std::string name =
        scene.ruler.Shorten(scene.palette.looks[bands[i]].name, kNoteFont,
                            scene.layout.panel.Right() - x);
    group.items.emplace_back(Text{name,
                                  {x, places[i] + 4.0},
                                  kNoteFont,
                                  scene.theme.text,
                                  eAnchor::kStart,
                                  std::nullopt});
  }
}

// The run's tolerance: a line with a dot and, above all bands, its number.
void AddRun(const MapScene& scene, const Plot& plot, Group& group) {
  const auto& tolerances = plot.Panel().tolerances;
  const auto found =
      std::find(tolerances.begin(), tolerances.end(), scene.content.tolerance);
  if (found == tolerances.end()) return;
  const auto at = static_cast<std::size_t>(found - tolerances.begin());
  const double percent = plot.Sum(at, DU::kNumberOfComponents);
  const Point dot = {plot.X(*found), plot.Y(percent)};
  Lines line;
  line.stroke = {scene.theme.view, 1.6};
  line.lines.push_back({{dot.x, plot.Place().Bottom()}, dot});
  group.items.emplace_back(std::move(line));
  Shapes mark;
  mark.positions = {dot};
  mark.outline = MakeCircle(4.0);
  mark.fill = scene.theme.text;
  mark.stroke = Stroke{scene.theme.view, 1.6};
  group.items.emplace_back(std::move(mark));

  const auto& counts = plot.Panel().counts[at];
  const std::array<std::string, 2> words = {
      WordOfShare(counts.Shadowed(), counts.Paths()),
      "at " + WordOf(*found) + " mm"};
  const double width = std::max(scene.ruler.WidthOf(words[0], kNoteFont),
                                scene.ruler.WidthOf(words[1], kNoteFont));
  const bool fitsLeft = dot.x - 8.0 - width >= plot.Place().x + 4.0;
  const double x =
      fitsLeft ? dot.x - 8.0 : std::max(dot.x - 8.0, plot.Place().x + 4.0);
  const double left = fitsLeft ? x - width : x;
  double y = dot.y - 12.0;  // between the two lines, above all bands there
  for (std::size_t i = 0; i < tolerances.size(); ++i) {
    const std::size_t next = std::min(i + 1, tolerances.size() - 1);
    if (plot.X(tolerances[next]) < left ||
        plot.X(tolerances[i]) > left + width) {
      continue;
    }
    for (const std::size_t end :
         fitsLeft ? std::array{i, std::min(next, at)} : std::array{i, next}) {
      y = std::min(y, plot.Y(plot.Sum(end, DU::kNumberOfComponents)) - 12.0);
    }
  }
  if (!fitsLeft) {
    Lines leader;
    leader.stroke = {scene.theme.secondText, 1.0};
    leader.lines.push_back({{dot.x, dot.y - 5.0}, {dot.x, y + 9.0}});
    group.items.emplace_back(std::move(leader));
  }
  for (std::size_t i = 0; i < 2; ++i) {
    group.items.emplace_back(
        Text{words[i],
             {x, y + 15.0 * (static_cast<double>(i) - 0.67)},
             kNoteFont,
             scene.theme.text,
             fitsLeft ? eAnchor::kEnd : eAnchor::kStart,
             Stroke{scene.theme.view, 3.0}});
  }
}

std::string WordOf(eMapPanelUnit unit) {
  switch (unit) {
    case eMapPanelUnit::kDirections:
      return "directions";
    case eMapPanelUnit::kLightPaths:
      return "light paths";
    default:
      return "PMTs";
  }
}

void AddNote(const MapScene& scene, const std::string& unit, Group& group) {
  const Box& note = scene.layout.note;
  constexpr double kLine = 19.0;
  group.items.emplace_back(Text{"Why some bands shrink",
                                {note.x, note.y + 10.0},
                                kHeadingFont,
                                scene.theme.text,
                                eAnchor::kStart,
                                std::nullopt});
  const std::string words =
      "The first component that blocks a path counts; bands are stacked in the "
      "order tested. The tests of AV pipes and neck boss read no tolerance: "
      "they only lose " +
      unit + " to those tested before.";
  double y = note.y + 34.0;
  for (const std::string& line : scene.ruler.Wrap(
           words, kNoteFont, std::min(note.width, kNoteWidth), 6)) {
    group.items.emplace_back(Text{line,
                                  {note.x, y},
                                  kNoteFont,
                                  scene.theme.secondText,
                                  eAnchor::kStart,
                                  std::nullopt});
    y += kLine;
  }
}

// The bands, and their grid above and below them.
void AddShares(const MapScene& scene, const Plot& plot, Group& group) {
  AddGrid(plot, scene.theme.hairline, group);
  AddBands(scene, plot, group);
  Colour overBands = scene.theme.view;
  overBands.opacity = 0.3;
  AddGrid(plot, overBands, group);
  AddPercents(scene, plot, group);
}

// Whether a component is tested whose test reads no tolerance.
bool HasBandsThatShrink(const MapContent& content) {
  const auto isTested = [&](DU::eShadowingComponent component) {
    return content.components[static_cast<std::size_t>(component) - 1] ==
           eComponentState::kTested;
  };
  return isTested(DU::eShadowingComponent::kAVPipe) ||
         isTested(DU::eShadowingComponent::kNeckBoss);
}

}  // namespace

Group DrawTolerancePanel(const MapScene& scene) {
  Group group = {"tolerances", {}, {}};
  const Plot plot(scene);
  // A share of nothing is no number.
  if (plot.HasPaths()) AddShares(scene, plot, group);
  AddTolerances(scene, plot, group);
  AddNames(scene, plot, group);
  if (plot.HasPaths()) AddRun(scene, plot, group);
  const Box& box = scene.layout.panel;
  const std::string unit = WordOf(scene.content.panel->unit);
  group.items.emplace_back(Text{"Shadowed " + unit + " against tolerance",
                                {box.x, box.y + 17.0},
                                kPanelTitleFont,
                                scene.theme.text,
                                eAnchor::kStart,
                                std::nullopt});
  if (plot.IsEmpty()) {
    group.items.emplace_back(
        Text{plot.HasPaths() ? "Nothing is shadowed at any tolerance."
                             : "No light paths.",
             {plot.Place().MiddleX(), plot.Place().MiddleY() + 12.0},
             kNoteFont,
             scene.theme.secondText,
             eAnchor::kMiddle,
             std::nullopt});
  }
  if (plot.HasPaths() && HasBandsThatShrink(scene.content)) {
    AddNote(scene, unit, group);
  }
  return group;
}

}  // namespace ZARN::Display

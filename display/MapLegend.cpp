// Title, subtitle, caption and legend.

#include <array>

#include "display/MapScene.hpp"
#include "display/MapWords.hpp"

namespace ZARN::Display {
namespace {

constexpr double kLegendRow = 27.0;
constexpr double kColumn = 262.0;
constexpr double kNameX = 24.0;
constexpr double kPercentX = 243.0;  // where percents end
constexpr double kPercentWidth = 58.0;
constexpr double kBaseline = 4.5;  // below the middle of a row

struct Entry {
  eMapLook look = eMapLook::kClear;
  std::string name;
  eComponentState state = eComponentState::kTested;
  std::string count;  // empty on a map of pixels
  std::string percent;
};

// How many pairs have a look: on a comparison, of those that changed, except
// for those that did not.
std::uint64_t CountOf(const MapContent& content, eMapLook look) {
  if (!content.comparison) {
    return look == eMapLook::kNoPath
               ? content.counts.WithoutPath()
               : content.counts.paths.Of(
                     static_cast<DU::eShadowingComponent>(look));
  }
  if (look == eMapLook::kUnchanged) return UnchangedIn(content);
  std::uint64_t count = 0;
  for (const MapChange& change : content.comparison->changes) {
    if (LookOfChange(change.before, change.after) == look)
      count += change.count;
  }
  return count;
}

Entry MakeEntry(const MapScene& scene, eMapLook look) {
  const MapContent& content = scene.content;
  Entry entry;
  entry.look = look;
  entry.name = NameOf(scene.palette, look);
  const std::uint64_t count = CountOf(content, look);
  const bool isOfAll = content.IsComparison() || look == eMapLook::kNoPath;
  entry.percent = WordOfShare(
      count, isOfAll ? content.counts.All() : content.counts.paths.Paths());
  if (!content.pixels) entry.count = WordOfCount(count);
  return entry;
}

std::vector<Entry> MakeEntries(const MapScene& scene) {
  std::vector<Entry> entries;
  for (const auto component : DU::kShadowingComponents) {
    Entry entry = MakeEntry(scene, LookOf(component));
    entry.state =
        scene.content.components[static_cast<std::size_t>(component) - 1];
    if (entry.state != eComponentState::kTested) {
      entry.count.clear();
      entry.percent = entry.state == eComponentState::kNotLoaded
                          ? "not loaded"
                          : "nothing to test";
    }
    entries.push_back(std::move(entry));
  }
  const bool isComparison = scene.content.IsComparison();
  entries.push_back(
      MakeEntry(scene, isComparison ? eMapLook::kClearNow : eMapLook::kClear));
  entries.push_back(MakeEntry(scene, eMapLook::kNoPath));
  if (isComparison) entries.push_back(MakeEntry(scene, eMapLook::kUnchanged));
  return entries;
}

void AddEntry(const MapScene& scene, const Entry& entry, const Point& at,
              Group& group) {
  const Theme& theme = scene.theme;
  for (Item& item : MakeSwatch(scene.palette, theme, entry.look, scene.Shape(),
                               entry.state, {at.x + 8.0, at.y})) {
    group.items.push_back(std::move(item));
  }
  const double y = at.y + kBaseline;
  const bool isAlone =
      entry.count.empty() && entry.state == eComponentState::kTested;
  const double end = at.x + kPercentX - (isAlone ? kPercentWidth : 0.0);
  double room = end - scene.ruler.WidthOf(entry.percent, kLabelFont);
  group.items.emplace_back(Text{entry.percent,
                                {end, y},
                                kLabelFont,
                                isAlone ? theme.text : theme.secondText,
                                eAnchor::kEnd,
                                std::nullopt});
  if (!entry.count.empty()) {
    const double countEnd = end - kPercentWidth;
    room = countEnd - scene.ruler.WidthOf(entry.count, kLabelFont);
    group.items.emplace_back(Text{entry.count,
                                  {countEnd, y},
                                  kLabelFont,
                                  theme.text,
                                  eAnchor::kEnd,
                                  std::nullopt});
  }
  constexpr double kSpace = 4.0;
  const double x = at.x + kNameX;
  group.items.emplace_back(
      Text{scene.ruler.Shorten(entry.name, kLabelFont, room - kSpace - x),
           {x, y},
           kLabelFont,
           theme.text,
           eAnchor::kStart,
           std::nullopt});
}

// The colours of shares, around the middle of a line.
void AddShareKey(const MapScene& scene, const Point& middle, Group& group) {
  const std::array<std::string, kShareSteps> names = {
      "0\u201320 %", "20\u201340 %", "40\u201360 %", "60\u201380 %",
      "80\u2013100 %"};
  const std::string before = "Shadowed from";
  const std::string after = "of the events";
  constexpr double kMark = 15.0;
  constexpr double kSpace = 12.0;
  const auto widthOf = [&](const std::string& words) {
    return scene.ruler.WidthOf(words, kNoteFont);
  };
  double width = widthOf(before) + kSpace + widthOf(after);
  for (const auto& name : names) width += kMark + widthOf(name) + kSpace;
  Point at = {middle.x - 0.5 * width, middle.y + kBaseline};
  const auto write = [&](const std::string& words) {
    group.items.emplace_back(Text{words, at, kNoteFont, scene.theme.text,
                                  eAnchor::kStart, std::nullopt});
    at.x += widthOf(words) + kSpace;
  };
  write(before);
  for (std::size_t step = 0; step < kShareSteps; ++step) {
    const auto look = LookOfStep(step);
    for (Item& item :
         MakeSwatch(scene.palette, scene.theme, look, eMapShape::kMark,
                    eComponentState::kTested, {at.x + 6.0, middle.y})) {
      group.items.push_back(std::move(item));
    }
    at.x += kMark;
    write(names[step]);
  }
  write(after);
}

std::string HeadingOf(const MapContent& content) {
  return content.IsComparison()
             ? "First component that blocks now, where the verdict changed"
             : "First component that blocks the light, in the order tested";
}

void AddLines(const MapScene& scene, const std::vector<std::string>& lines,
              const Point& first, Group& group) {
  constexpr double kLine = 16.0;
  Point at = first;
  for (const std::string& line : lines) {
    group.items.emplace_back(Text{line, at, kNoteFont, scene.theme.secondText,
                                  eAnchor::kStart, std::nullopt});
    at.y += kLine;
  }
}

// The subtitle, in two lines if it is too long for one. A long name of tables
// is shortened first.
std::vector<std::string> SubtitleOf(const MapScene& scene, double width) {
  const TextRuler& ruler = scene.ruler;
  const std::string tables = MakePlain(TablesOf(scene.content));
  const std::string summary = SummaryOf(scene.content);
  const std::string conditions = ConditionsOf(scene.content) + kSeparator;
  const std::string line = summary + kSeparator + conditions + tables;
  if (ruler.WidthOf(line, kSubtitleFont) <= width) return {line};
  const double room = width - ruler.WidthOf(conditions, kSubtitleFont);
  return {ruler.Shorten(summary, kSubtitleFont, width),
          ruler.Shorten(conditions + ruler.Shorten(tables, kSubtitleFont, room),
                        kSubtitleFont, width)};
}

}  // namespace

Group DrawHeader(const MapScene& scene) {
  Group group = {"header", {}, {}};
  const Box& header = scene.layout.header;
  const Theme& theme = scene.theme;
  const std::string title = scene.ruler.Shorten(
      MakePlain(TitleOf(scene.content)), kTitleFont, header.width);
  group.items.emplace_back(Text{title,
                                {header.x, header.y + 12.0},
                                kTitleFont,
                                theme.text,
                                eAnchor::kStart,
                                std::nullopt});
  double y = header.y + 38.0;
  for (const std::string& line : SubtitleOf(scene, header.width)) {
    group.items.emplace_back(Text{line,
                                  {header.x, y},
                                  kSubtitleFont,
                                  theme.secondText,
                                  eAnchor::kStart,
                                  std::nullopt});
    y += 19.0;
  }
  const Box& map = scene.layout.map;
  group.items.emplace_back(Text{CaptionOf(scene.content),
                                {map.MiddleX(), map.Bottom() + 20.0},
                                kNoteFont,
                                theme.secondText,
                                eAnchor::kMiddle,
                                std::nullopt});
  return group;
}

Group DrawLegend(const MapScene& scene) {
  Group group = {"legend", {}, {}};
  const Box& legend = scene.layout.legend;
  const bool isBeside = scene.layout.legendPlace == eLegendPlace::kBeside;
  double y = legend.y + 18.0;  // of the heading
  const bool hasShares =
      scene.content.HasSeveralEvents() && !scene.content.IsComparison();
  if (hasShares) {
    const Box& map = scene.layout.map;
    AddShareKey(scene, {map.MiddleX(), map.Bottom() + 40.0}, group);
    if (!isBeside) y += 24.0;
  }
  const std::vector<std::string> heading =
      scene.ruler.Wrap(HeadingOf(scene.content), kHeadingFont, legend.width, 2);
  for (const std::string& line : heading) {
    group.items.emplace_back(Text{line,
                                  {legend.x, y},
                                  kHeadingFont,
                                  scene.theme.text,
                                  eAnchor::kStart,
                                  std::nullopt});
    y += 16.0;
  }
  y += 9.0;  // the middle of the first row
  const std::vector<Entry> entries = MakeEntries(scene);
  const std::size_t rows = isBeside ? entries.size() : 3;
  Point at;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::size_t column = i / rows;
    at = {legend.x + kColumn * static_cast<double>(column),
          y + kLegendRow * static_cast<double>(i % rows)};
    AddEntry(scene, entries[i], at, group);
  }
  // Below "No path". On a comparison the ninth entry has this place, and the
  // footnote gives the reasons.
  if (!scene.content.IsComparison()) {
    group.items.emplace_back(
        Text{scene.ruler.Shorten("(" + ReasonsOf(scene.content) + ")",
                                 kNoteFont, kPercentX - kNameX),
             {at.x + kNameX, at.y + kLegendRow},
             kNoteFont,
             scene.theme.secondText,
             eAnchor::kStart,
             std::nullopt});
  }
  const double end =
      y + kLegendRow * static_cast<double>(isBeside ? rows + 1 : rows);
  AddLines(scene,
           scene.ruler.Wrap(FootnoteOf(scene.content), kNoteFont, legend.width,
                            isBeside ? 4 : 2),
           {legend.x, end + 9.0}, group);
  return group;
}

}  // namespace ZARN::Display

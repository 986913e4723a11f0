// What has changed between two sets of tables.

#include "display/MapScene.hpp"
#include "display/MapWords.hpp"

namespace ZARN::Display {
namespace {

constexpr double kRow = 25.0;
constexpr double kName = 24.0;  // after a mark
constexpr double kArrow = 142.0;
constexpr double kNow = 164.0;  // the second mark

void Write(const MapScene& scene, const std::string& words, const Point& at,
           double width, const Font& font, const Colour& colour, Group& group) {
  group.items.emplace_back(Text{scene.ruler.Shorten(words, font, width), at,
                                font, colour, eAnchor::kStart, std::nullopt});
}

// Mark and name of a verdict.
void AddVerdict(const MapScene& scene, eMapLook look, const Point& at,
                double width, Group& group) {
  for (Item& item : MakeSwatch(scene.palette, scene.theme, look, scene.Shape(),
                               eComponentState::kTested, {at.x + 8.0, at.y})) {
    group.items.push_back(std::move(item));
  }
  Write(scene, NameOf(scene.palette, look), {at.x + kName, at.y + 4.5},
        width - kName, kNoteFont, scene.theme.text, group);
}

std::string AmountOf(const MapContent& content, std::uint64_t count) {
  return content.pixels ? WordOfShare(count, content.counts.All())
                        : WordOfCount(count);
}

void AddAmount(const MapScene& scene, std::uint64_t count, double y,
               Group& group) {
  group.items.emplace_back(Text{AmountOf(scene.content, count),
                                {scene.layout.panel.Right(), y + 4.5},
                                kNoteFont,
                                scene.theme.text,
                                eAnchor::kEnd,
                                std::nullopt});
}

}  // namespace

Group DrawChanges(const MapScene& scene) {
  Group group = {"changes", {}, {}};
  const Box& box = scene.layout.panel;
  const Theme& theme = scene.theme;
  const auto& comparison = *scene.content.comparison;
  Write(scene, "What changed", {box.x, box.y + 17.0}, box.width,
        kPanelTitleFont, theme.text, group);
  Write(scene, "before: " + MakePlain(comparison.before), {box.x, box.y + 42.0},
        box.width, kNoteFont, theme.secondText, group);
  Write(scene, "now: " + MakePlain(comparison.after), {box.x, box.y + 60.0},
        box.width, kNoteFont, theme.secondText, group);
  double y = box.y + 92.0;
  const auto& changes = comparison.changes;
  if (changes.empty()) {
    Write(scene, "No verdict changed.", {box.x, y}, box.width, kLabelFont,
          theme.text, group);
    return group;
  }
  // The last row sums up what the table has no room for.
  const auto room = static_cast<std::size_t>((box.Bottom() - y) / kRow);
  const std::size_t rows = changes.size() <= room ? changes.size() : room - 1;
  std::uint64_t rest = ChangesIn(scene.content);
  for (std::size_t i = 0; i < rows; ++i) {
    const MapChange& change = changes[i];
    const double width =
        box.width - kNow -
        scene.ruler.WidthOf(AmountOf(scene.content, change.count), kNoteFont) -
        8.0;
    AddVerdict(scene, LookOfChanged(change.before), {box.x, y}, kArrow - 4.0,
               group);
    Write(scene, "\u2192", {box.x + kArrow, y + 4.5}, kRow, kNoteFont,
          theme.secondText, group);
    AddVerdict(scene, LookOfChanged(change.after), {box.x + kNow, y}, width,
               group);
    AddAmount(scene, change.count, y, group);
    rest -= change.count;
    y += kRow;
  }
  if (rows < changes.size()) {
    Write(scene, WordOfCount(changes.size() - rows) + " other changes",
          {box.x + kName, y + 4.5}, kNow, kNoteFont, theme.secondText, group);
    AddAmount(scene, rest, y, group);
  }
  return group;
}

}  // namespace ZARN::Display

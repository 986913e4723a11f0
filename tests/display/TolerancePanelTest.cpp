#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>

#include "display/SkyMap.hpp"
#include "tests/display/Drawings.hpp"
#include "tests/display/MapContents.hpp"

namespace ZARN::Display {
namespace {

TEST(TolerancePanel, KeepsNamesOfBandsBetweenTitleAndAxis) {
  MapContent content = WithPanel(MakeMarks(8));
  for (const std::uint64_t clear : {0U, 6000U, 100000000U}) {
    SCOPED_TRACE(clear);
    for (auto& counts : content.panel->counts) {
      counts.Add(DU::eShadowingComponent::kNone, clear);
      counts.Add(DU::eShadowingComponent::kAVHDRope, 100000);
    }
    const Drawing drawing = DrawSkyMap(content);
    const Group panel = GroupOf(drawing, "tolerances");
    std::map<std::string, double> places;
    for (const Item& item : panel.items) {
      const auto* text = std::get_if<Text>(&item);
      if (text != nullptr) places[text->words] = text->position.y;
    }
    for (const auto component : DU::kShadowingComponents) {
      const double name = places.at(GetPalette().Of(component).name);
      EXPECT_GT(name - 12.0, places.at("Shadowed PMTs against tolerance"));
      EXPECT_LT(name, places.at("0"));
    }
  }
}

TEST(TolerancePanel, EndsTheAxisOfPercentsAt100) {
  MapContent content = WithPanel(MakeMarks(80));
  for (auto& counts : content.panel->counts) {
    counts.Add(DU::eShadowingComponent::kAVHDRope, 100000);
  }
  const Drawing drawing = DrawSkyMap(content);
  EXPECT_TRUE(HasText(drawing, "100 %"));
  EXPECT_FALSE(HasText(drawing, "120 %"));
  // Two grids, below and above the bands, with a line for each number.
  const Group panel = GroupOf(drawing, "tolerances");
  const auto& grid = std::get<Lines>(panel.items.front());
  EXPECT_EQ(grid.lines.size(), 5U);
}

TEST(TolerancePanel, CountsWhatItsTitleSays) {
  MapContent content = WithPanel(MakeMarks(80));
  EXPECT_TRUE(HasText(DrawSkyMap(content), "Shadowed PMTs against tolerance"));
  content.panel->unit = eMapPanelUnit::kDirections;
  EXPECT_TRUE(
      HasText(DrawSkyMap(content), "Shadowed directions against tolerance"));
  EXPECT_TRUE(HasText(DrawSkyMap(content), "at 150 mm"));
  content.tolerance = 151.0;
  EXPECT_FALSE(HasText(DrawSkyMap(content), "at 151 mm"));
}

TEST(TolerancePanel, IsDrawnForAnyTolerances) {
  const TextRuler ruler;
  MapContent content = WithPanel(MakeMarks(8));
  for (const auto& [first, step] :
       {std::pair(-300.0, 20.0), {1e18, 1024.0}, {0.0, 1e-9}, {-1e30, 1e29}}) {
    SCOPED_TRACE(first);
    for (std::size_t i = 0; i < content.panel->tolerances.size(); ++i) {
      content.panel->tolerances[i] = first + step * static_cast<double>(i);
    }
    for (const std::size_t run : {0U, 3U, 8U, 16U}) {
      content.tolerance = content.panel->tolerances[run];
      ExpectTextsApart(ruler, DrawSkyMap(content));
    }
  }
}

TEST(TolerancePanel, SaysThatThereAreNoLightPaths) {
  MapContent content = MakeEmptyContent();
  content.panel = MapPanel{eMapPanelUnit::kPMTs, {10.0, 150.0}, {{}, {}}};
  Drawing drawing = DrawSkyMap(content);
  EXPECT_TRUE(HasText(drawing, "No light paths."));
  EXPECT_FALSE(HasText(drawing, "Nothing is shadowed at any tolerance."));
  EXPECT_FALSE(HasText(drawing, "at 150 mm"));
  EXPECT_FALSE(HasText(drawing, "0.02 %"));
  EXPECT_FALSE(HasText(drawing, "Why some bands shrink"));
  for (auto& counts : content.panel->counts) {
    counts.Add(DU::eShadowingComponent::kNone);
  }
  drawing = DrawSkyMap(content);
  EXPECT_FALSE(HasText(drawing, "No light paths."));
  EXPECT_TRUE(HasText(drawing, "Nothing is shadowed at any tolerance."));
  EXPECT_TRUE(HasText(drawing, "at 150 mm"));
}

TEST(TolerancePanel, TellsWhyBandsShrinkOnlyIfSomeCan) {
  MapContent content = WithPanel(MakeMarks(80));
  const std::string heading = "Why some bands shrink";
  content.components[4] = eComponentState::kNothingToTest;
  EXPECT_TRUE(HasText(DrawSkyMap(content), heading));
  content.components[5] = eComponentState::kNotLoaded;
  EXPECT_FALSE(HasText(DrawSkyMap(content), heading));
}

TEST(TolerancePanel, WritesEachToleranceOnce) {
  MapContent content = WithPanel(MakeMarks(8));
  for (const auto& [first, step] :
       {std::pair(0.0, 1e-9), {150.0, 1e-4}, {1e18, 1024.0}}) {
    SCOPED_TRACE(first);
    for (std::size_t i = 0; i < content.panel->tolerances.size(); ++i) {
      content.panel->tolerances[i] = first + step * static_cast<double>(i);
    }
    const Drawing drawing = DrawSkyMap(content);
    std::set<std::string> labels;
    double baseline = 0.0;
    for (const Item& item : GroupOf(drawing, "tolerances").items) {
      const auto* text = std::get_if<Text>(&item);
      if (text == nullptr || text->anchor != eAnchor::kMiddle) continue;
      if (baseline == 0.0) baseline = text->position.y;
      if (text->position.y != baseline) continue;
      EXPECT_TRUE(labels.insert(text->words).second) << text->words;
    }
    EXPECT_FALSE(labels.empty());
  }
}

}  // namespace
}  // namespace ZARN::Display

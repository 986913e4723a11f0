#include "display/SkyMap.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>

#include "display/CairoWriter.hpp"
#include "display/MapLayout.hpp"
#include "display/SvgWriter.hpp"
#include "display/TextRuler.hpp"
#include "tests/display/Drawings.hpp"
#include "tests/display/MapContents.hpp"
#include "tests/display/Pictures.hpp"
#include "tests/support/Repetitions.hpp"

namespace ZARN::Display {
namespace {

using DU::eVerdict;

MapContent MakeShares() {
  MapContent content = MakeMarks(60);
  content.events.resize(5);
  for (std::size_t i = 0; i < content.marks.size(); ++i) {
    MapMark& mark = content.marks[i];
    mark.paths = i % 7 == 6 ? 0 : 5;
    mark.shadowed = mark.paths == 0 ? 0 : i % 6;
  }
  return content;
}

// A comparison with every change there can be.
MapContent MakeComparison() {
  MapContent content = MakeMarks(64);
  content.comparison = MapContent::Comparison{"before", "after", {}};
  std::map<std::pair<eVerdict, eVerdict>, std::uint64_t> changes;
  for (std::size_t i = 0; i < content.marks.size(); ++i) {
    MapMark& mark = content.marks[i];
    mark.before = static_cast<eVerdict>(i / 8);
    if (mark.before != mark.verdict) ++changes[{mark.before, mark.verdict}];
  }
  for (const auto& [change, count] : changes) {
    content.comparison->changes.push_back({change.first, change.second, count});
  }
  return content;
}

MapContent WithLongestWords(MapContent content) {
  const std::string name(400, 'W');
  content.detector = name + " <b>&amp;</b>\n\x01\xff";
  content.eventName = name;
  content.events[0] = {-123456.789, -123456.789, -123456.789};
  content.run = std::numeric_limits<int>::min();
  content.tolerance = -123456.789;
  content.wavelength = 1234.567;
  for (std::size_t i = 0; i < 4; ++i) {
    content.counts.withoutPath[i] = std::numeric_limits<std::uint32_t>::max();
  }
  for (const auto component : DU::kShadowingComponents) {
    content.counts.paths.Add(component, 99999999);
  }
  if (content.comparison) {
    content.comparison->before = name;
    content.comparison->after = name;
    for (auto& change : content.comparison->changes) change.count = 99999999;
  }
  return content;
}

std::vector<MapContent> AllKindsOfContent() {
  const MapGrid grid = {100, 50};
  MapContent states = WithPanel(MakeMarks(80));
  states.components = {eComponentState::kNotLoaded,
                       eComponentState::kNothingToTest};
  MapContent flat = WithPanel(MakeMarks(80));
  for (auto& counts : flat.panel->counts) counts = flat.panel->counts.back();
  flat.tolerance = 10.0;
  MapContent thin = WithPanel(MakeMarks(80));
  for (auto& counts : thin.panel->counts) {
    counts.Add(DU::eShadowingComponent::kAVHDRope, 100000);
  }
  // All names of bands want to be near the top of the axis.
  MapContent high = thin;
  high.panel->unit = eMapPanelUnit::kLightPaths;
  for (auto& counts : high.panel->counts) {
    counts.Add(DU::eShadowingComponent::kNone, 5500);
  }
  MapContent noPaths = MakeEmptyContent();
  noPaths.counts.Add(eVerdict::kTotalReflection, 7);
  noPaths.panel = MapPanel{eMapPanelUnit::kDirections, {-5.0, 1e-3}, {{}, {}}};
  std::vector<MapContent> contents = {MakeMarks(80),
                                      states,
                                      flat,
                                      thin,
                                      high,
                                      noPaths,
                                      MakeShares(),
                                      WithPanel(MakeShares()),
                                      MakeComparison(),
                                      WithPanel(MakePixels(grid, SectorOf)),
                                      MakePixels(grid, SectorOf)};
  const std::size_t kinds = contents.size();
  for (std::size_t i = 0; i < kinds; ++i) {
    contents.push_back(WithLongestWords(contents[i]));
  }
  contents.push_back(MakeEmptyContent());
  return contents;
}

TEST(SkyMap, KeepsWordsApartAndInsideThePicture) {
  const TextRuler ruler;
  const std::vector<MapContent> contents = AllKindsOfContent();
  constexpr std::array<std::array<double, 2>, 8> kSizes = {{{1200, 700},
                                                            {300, 175},
                                                            {100, 100},
                                                            {200, 1000},
                                                            {2000, 300},
                                                            {800, 1200},
                                                            {1000, 900},
                                                            {4000, 4000}}};
  for (std::size_t i = 0; i < contents.size(); ++i) {
    for (const auto& [width, height] : kSizes) {
      SCOPED_TRACE(testing::Message()
                   << "content " << i << ", " << width << " x " << height);
      const eTheme theme = i % 2 == 0 ? eTheme::kLight : eTheme::kDark;
      ExpectTextsApart(ruler, DrawSkyMap(contents[i], {width, height, theme}));
    }
  }
}

// The mark of the event covers no words.
void ExpectEventApart(const TextRuler& ruler, const Drawing& drawing) {
  constexpr double kRadius = 8.0;
  for (const Group& group : drawing.groups) {
    if (group.name != "degrees") continue;
    for (const Item& item : group.items) {
      const auto* ring = std::get_if<Shapes>(&item);
      if (ring == nullptr) continue;
      const Point& event = ring->positions.front();
      for (const Text& text : TextsOf(drawing)) {
        const Box box = BoxOf(ruler, text);
        EXPECT_FALSE(
            box.x < event.x + kRadius && box.Right() > event.x - kRadius &&
            box.y < event.y + kRadius && box.Bottom() > event.y - kRadius)
            << text.words;
      }
    }
  }
}

TEST(SkyMap, KeepsWordsApartWhereverTheEventIs) {
  const TextRuler ruler;
  MapContent content = MakeMarks(8);
  constexpr auto kEvents = Testing::Repetitions<std::size_t>(60, 12);
  for (std::size_t i = 0; i < kEvents; ++i) {
    content.events[0] = SpreadDirection(i, kEvents) * 3000.0;
    SCOPED_TRACE(i);
    const Drawing drawing = DrawSkyMap(content);
    ExpectTextsApart(ruler, drawing);
    ExpectEventApart(ruler, drawing);
  }
  for (const TVector3& event :
       {TVector3(0, 0, 1), TVector3(0, 0, -1), TVector3(-1, 1e-9, 0),
        TVector3(-1, -1e-9, 0), TVector3(1, 0, 0)}) {
    content.events[0] = event;
    const Drawing drawing = DrawSkyMap(content);
    ExpectTextsApart(ruler, drawing);
    ExpectEventApart(ruler, drawing);
  }
}

// A part of the map away from its edge.
Box MiddleOf(const Box& map) {
  return {map.x + 0.1 * map.width, map.y + 0.25 * map.height, 0.8 * map.width,
          0.5 * map.height};
}

// The connected regions of one colour.
std::size_t CountMarks(const Picture& picture, const Colour& colour,
                       const Box& map) {
  const Box place = MiddleOf(map);
  const std::uint32_t wanted = PixelOf(colour);
  const auto right = static_cast<std::size_t>(2.0 * place.Right());
  const auto bottom = static_cast<std::size_t>(2.0 * place.Bottom());
  std::set<std::pair<std::size_t, std::size_t>> seen;
  std::size_t marks = 0;
  for (auto row = static_cast<std::size_t>(2.0 * place.y); row < bottom;
       ++row) {
    for (auto column = static_cast<std::size_t>(2.0 * place.x); column < right;
         ++column) {
      if (picture.At(column, row) != wanted ||
          !seen.insert({column, row}).second) {
        continue;
      }
      ++marks;
      std::vector<std::pair<std::size_t, std::size_t>> open = {{column, row}};
      while (!open.empty()) {
        const auto [x, y] = open.back();
        open.pop_back();
        for (std::size_t b = y - 1; b <= y + 1; ++b) {
          for (std::size_t a = x - 1; a <= x + 1; ++a) {
            if (picture.At(a, b) == wanted && seen.insert({a, b}).second) {
              open.emplace_back(a, b);
            }
          }
        }
      }
    }
  }
  return marks;
}

TEST(SkyMap, DrawsAMarkOfItsColourForEachPMT) {
  MapContent content = MakeMarks(0);
  content.view = eMapView::kEvent;
  constexpr std::array<int, 8> kCounts = {9, 8, 7, 6, 5, 4, 3, 2};
  int mark = 0;
  for (std::size_t verdict = 0; verdict < kCounts.size(); ++verdict) {
    for (int i = 0; i < kCounts[verdict]; ++i, ++mark) {
      // Away from the edge and from the degrees, and far apart.
      const int column = mark / 4;
      const double z = -0.3 + 0.3 * (mark % 4);
      const double azimuth = -2.3 + 0.43 * column;
      const double across = std::sqrt(1.0 - z * z);
      content.marks.push_back(
          {{across * std::cos(azimuth), across * std::sin(azimuth), z},
           static_cast<eVerdict>(verdict)});
      content.counts.Add(static_cast<eVerdict>(verdict));
    }
  }
  for (const auto kind : {eTheme::kLight, eTheme::kDark}) {
    const MapStyle style = {1200, 700, kind};
    const Picture picture = Decode(WritePng(DrawSkyMap(content, style)));
    const Box map = LayOutMap(style, eMapColumn::kNone).map;
    const Theme& theme = GetPalette().Of(kind);
    EXPECT_EQ(CountMarks(picture, theme.clear, map), 9U);
    EXPECT_EQ(CountMarks(picture, theme.noPath, map), 2U);
    for (const auto component : DU::kShadowingComponents) {
      SCOPED_TRACE(DU::NameOf(component));
      EXPECT_EQ(CountMarks(picture, theme.Of(component), map),
                content.counts.paths.Of(component));
    }
  }
}

// The share of the map that has exactly this colour.
double ShareOf(const Picture& picture, const Colour& colour, const Box& map) {
  std::size_t pixels = 0;
  for (auto row = static_cast<std::size_t>(2.0 * map.y);
       row < static_cast<std::size_t>(2.0 * map.Bottom()); ++row) {
    for (auto column = static_cast<std::size_t>(2.0 * map.x);
         column < static_cast<std::size_t>(2.0 * map.Right()); ++column) {
      if (picture.At(column, row) == PixelOf(colour)) ++pixels;
    }
  }
  return static_cast<double>(pixels) /
         (4.0 * M_PI / 4.0 * map.width * map.height);
}

TEST(SkyMap, GivesEachDirectionTheColourOfItsVerdict) {
  const MapStyle style;
  MapContent content =
      MakePixels(FindMapGrid(style, eMapColumn::kNone), SectorOf);
  content.view = eMapView::kEvent;
  const Picture picture = Decode(WritePng(DrawSkyMap(content, style)));
  const Box map = LayOutMap(style, eMapColumn::kNone).map;
  for (const auto component : DU::kShadowingComponents) {
    SCOPED_TRACE(DU::NameOf(component));
    const double share =
        ShareOf(picture, GetPalette().light.Of(component), map);
    // Lines of the graticule, words and edges cover some of it.
    EXPECT_LT(share, 1.0 / 6.0);
    EXPECT_GT(share, 0.94 / 6.0);
  }
  // The middle of the second sector from the left: azimuth 90 degrees, and
  // azimuth grows to the left.
  const auto column =
      static_cast<std::size_t>(2.0 * (map.x + map.width * 0.25));
  const auto row = static_cast<std::size_t>(2.0 * map.MiddleY() + 20.0);
  EXPECT_EQ(picture.At(column, row), PixelOf(GetPalette().light.components[4]));
}

TEST(SkyMap, ShowsTheNearestOfManyPMTs) {
  constexpr std::size_t kCount = 60000;
  MapContent content = MakeMarks(0);
  content.view = eMapView::kEvent;
  for (std::size_t i = 0; i < kCount; ++i) {
    MapMark mark;
    mark.direction = SpreadDirection(i, kCount);
    mark.verdict = SectorOf(mark.direction);
    content.counts.Add(mark.verdict);
    content.marks.push_back(mark);
  }
  const Picture picture = Decode(WritePng(DrawSkyMap(content)));
  const Box map = LayOutMap({}, eMapColumn::kNone).map;
  for (const auto component : DU::kShadowingComponents) {
    SCOPED_TRACE(DU::NameOf(component));
    const double share =
        ShareOf(picture, GetPalette().light.Of(component), map);
    EXPECT_LT(share, 1.01 / 6.0);
    EXPECT_GT(share, 0.93 / 6.0);
  }
}

TEST(SkyMap, HatchesDirectionsWithoutAPath) {
  const auto noPath = [](const TVector3& direction) {
    return direction.Z() > 0.0 ? eVerdict::kTotalReflection : eVerdict::kClear;
  };
  const MapStyle style;
  const MapContent content =
      MakePixels(FindMapGrid(style, eMapColumn::kNone), noPath);
  const Drawing drawing = DrawSkyMap(content, style);
  const Box map = LayOutMap(style, eMapColumn::kNone).map;
  bool hasHatch = false;
  for (const Item& item : drawing.groups.front().items) {
    const auto* lines = std::get_if<Lines>(&item);
    if (lines == nullptr) continue;
    hasHatch = true;
    for (const auto& line : lines->lines) {
      for (const Point& point : line) EXPECT_LE(point.y, map.MiddleY() + 1.0);
      // From the bottom left to the top right, at 45 degrees.
      EXPECT_NEAR(line[0].x + line[0].y, line[1].x + line[1].y, 1e-9);
    }
  }
  EXPECT_TRUE(hasHatch);
}

TEST(SkyMap, SaysWhatIsNotTested) {
  MapContent content = MakeMarks(80);
  content.components[0] = eComponentState::kNotLoaded;
  content.components[5] = eComponentState::kNothingToTest;
  const Drawing drawing = DrawSkyMap(content);
  EXPECT_TRUE(HasText(drawing, "not loaded"));
  EXPECT_TRUE(HasText(drawing, "nothing to test"));
  EXPECT_FALSE(HasText(DrawSkyMap(MakeMarks(80)), "not loaded"));
}

TEST(SkyMap, SumsUpTheRestOfManyChanges) {
  const Drawing drawing = DrawSkyMap(MakeComparison());
  EXPECT_TRUE(HasText(drawing, "What changed"));
  std::uint64_t sum = 0;
  bool hasRest = false;
  for (const Group& group : drawing.groups) {
    if (group.name != "changes") continue;
    for (const Item& item : group.items) {
      const auto* text = std::get_if<Text>(&item);
      if (text == nullptr) continue;
      if (text->anchor == eAnchor::kEnd) sum += std::stoull(text->words);
      hasRest |= text->words.find("other changes") != std::string::npos;
    }
  }
  EXPECT_TRUE(hasRest);
  EXPECT_EQ(sum, 64U - 8U);
}

TEST(SkyMap, CountsWhatDidNotChange) {
  const Drawing drawing = DrawSkyMap(MakeComparison());
  EXPECT_TRUE(HasText(drawing, "Not changed"));
  EXPECT_TRUE(HasText(drawing, "8"));
  EXPECT_TRUE(HasText(drawing, "12.5 %"));
  EXPECT_FALSE(HasText(DrawSkyMap(MakeMarks(64)), "Not changed"));
}

TEST(SkyMap, SaysThatNothingChanged) {
  MapContent content = MakeMarks(80);
  for (auto& mark : content.marks) mark.before = mark.verdict;
  content.comparison.emplace();
  EXPECT_TRUE(HasText(DrawSkyMap(content), "No verdict changed."));
}

TEST(SkyMap, ShowsOnlyPMTsThatChanged) {
  MapContent content = MakeMarks(0);
  content.marks = {{{1, 0, 0.5}, eVerdict::kClear, 0, 0, eVerdict::kAVPipe},
                   {{1, 1, 0.5}, eVerdict::kAVPipe, 0, 0, eVerdict::kAVPipe},
                   {{1, -1, 0.5},
                    eVerdict::kPMTNotInWater,
                    0,
                    0,
                    eVerdict::kTotalReflection}};
  content.comparison = MapContent::Comparison{
      "a", "b", {{eVerdict::kAVPipe, eVerdict::kClear, 1}}};
  const Theme& theme = GetPalette().light;
  const Picture picture = Decode(WritePng(DrawSkyMap(content)));
  const Box map = LayOutMap({}, eMapColumn::kShown).map;
  EXPECT_EQ(
      CountMarks(picture, theme.Of(DU::eShadowingComponent::kAVPipe), map), 0U);
  EXPECT_EQ(CountMarks(picture, theme.clear, map), 2U);
}

TEST(SkyMap, DrawsPMTsThatHaveADirection) {
  MapContent content = MakeMarks(1);
  content.marks.push_back({TVector3(), eVerdict::kEventAtPMT});
  content.marks.push_back(
      {TVector3(std::nan(""), 0, 0), eVerdict::kPositionNotFinite});
  std::size_t marks = 0;
  for (const Group& group : DrawSkyMap(content).groups) {
    if (group.name != "pmts") continue;
    for (const Item& item : group.items) {
      marks += std::get<Shapes>(item).positions.size();
    }
  }
  EXPECT_EQ(marks, 1U);
}

TEST(SkyMap, FitsTheGridToTheSize) {
  const MapGrid grid = FindMapGrid({}, eMapColumn::kShown);
  EXPECT_EQ(grid.columns, 1504U);
  EXPECT_EQ(grid.rows, 752U);
  const MapGrid largest = FindMapGrid({8000, 8000}, eMapColumn::kNone);
  EXPECT_EQ(largest.columns, 4000U);
  EXPECT_GT(FindMapGrid({}, eMapColumn::kNone).columns, grid.columns);
}

TEST(SkyMap, RefusesContentThatContradictsItself) {
  const auto refused = [](const std::function<void(MapContent&)>& spoil,
                          MapContent content) {
    spoil(content);
    EXPECT_THROW(DrawSkyMap(content), std::invalid_argument);
  };
  const MapContent pixels = MakePixels({100, 50}, SectorOf);
  refused([](MapContent& c) { c.pixels->verdicts.pop_back(); }, pixels);
  refused([](MapContent& c) { c.pixels->rows = 0; }, pixels);
  refused([](MapContent& c) { c.comparison.emplace(); }, pixels);
  refused([](MapContent& c) { c.marks.emplace_back(); }, pixels);
  refused([](MapContent& c) { c.events.resize(2); }, pixels);
  refused([](MapContent& c) { c.events.resize(2); }, MakeComparison());
  const MapContent panel = WithPanel(MakeMarks(8));
  refused([](MapContent& c) { c.panel->counts.pop_back(); }, panel);
  refused([](MapContent& c) { c.panel = MapPanel(); }, panel);
  refused([](MapContent& c) { c.panel->tolerances[1] = 0.0; }, panel);
  refused([](MapContent& c) { c.panel->tolerances[1] = std::nan(""); }, panel);
  refused(
      [](MapContent& c) {
        c.panel->tolerances.back() = std::numeric_limits<double>::infinity();
      },
      panel);
  EXPECT_THROW(DrawSkyMap(panel, {99, 700}), std::invalid_argument);
  EXPECT_THROW(DrawSkyMap(panel, {1200, 8001}), std::invalid_argument);
  EXPECT_THROW(DrawSkyMap(panel, {std::nan(""), 700}), std::invalid_argument);
}

TEST(SkyMap, WritesSvgThatAnXmlParserReads) {
  const auto folder =
      std::filesystem::temp_directory_path() / "zarn-sky-map-test";
  std::filesystem::create_directories(folder);
  const std::vector<MapContent> contents = AllKindsOfContent();
  for (std::size_t i = 0; i < contents.size(); ++i) {
    std::ofstream(folder / (std::to_string(i) + ".svg"))
        << WriteSvg(DrawSkyMap(contents[i]));
  }
  const std::string command =
      ZARN_PYTHON3
      " -c \"import pathlib, sys, xml.etree.ElementTree as E\n"
      "for f in pathlib.Path(sys.argv[1]).iterdir(): E.parse(f)\" " +
      folder.string();
  // NOLINTNEXTLINE(cert-env33-c,bugprone-command-processor): a full path
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::filesystem::remove_all(folder);
}

TEST(SkyMap, GivesEachPartOfTheSvgItsOwnId) {
  const std::string attribute = " id=\"";
  for (const MapContent& content : AllKindsOfContent()) {
    const std::string svg = WriteSvg(DrawSkyMap(content));
    std::set<std::string> ids;
    std::size_t at = 0;
    while ((at = svg.find(attribute, at)) != std::string::npos) {
      at += attribute.size();
      const std::string id = svg.substr(at, svg.find('"', at) - at);
      EXPECT_TRUE(ids.insert(id).second) << id;
    }
    EXPECT_EQ(ids.count("title"), 1U);
  }
}

TEST(SkyMap, KeepsTheSvgOf8000PMTsSmall) {
  EXPECT_LT(WriteSvg(DrawSkyMap(WithPanel(MakeMarks(8000)))).size(), 2000000U);
}

}  // namespace
}  // namespace ZARN::Display

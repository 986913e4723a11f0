#include <gtest/gtest.h>

#include <utility>

#include "display/SkyMap.hpp"
#include "tests/display/Drawings.hpp"
#include "tests/display/MapContents.hpp"
#include "tests/display/Pictures.hpp"

namespace ZARN::Display {
namespace {

using DU::eVerdict;

// How many items are filled with a colour.
std::size_t CountFilled(const Group& group, const Colour& colour) {
  std::size_t filled = 0;
  for (const Item& item : group.items) {
    const auto* shapes = std::get_if<Shapes>(&item);
    if (shapes == nullptr || !shapes->fill) continue;
    if (PixelOf(*shapes->fill) == PixelOf(colour)) ++filled;
  }
  return filled;
}

TEST(ChangesTable, ShowsClearAndNotChangedDifferently) {
  MapContent pixels = MakePixels({100, 50}, SectorOf);
  pixels.pixels->before.assign(pixels.pixels->verdicts.size(),
                               eVerdict::kClear);
  pixels.comparison = MapContent::Comparison{
      "a", "b", {{eVerdict::kClear, eVerdict::kAVPipe, 1}}};
  MapContent marks = MakeMarks(8);
  marks.comparison = pixels.comparison;
  const Theme& theme = GetPalette().light;
  for (const auto& [content, colour] :
       {std::pair(pixels, theme.clearArea), std::pair(marks, theme.clear)}) {
    const Drawing drawing = DrawSkyMap(content);
    EXPECT_EQ(CountFilled(GroupOf(drawing, "changes"), colour), 0U);
    EXPECT_EQ(CountFilled(GroupOf(drawing, "legend"), colour), 1U);
  }
}

}  // namespace
}  // namespace ZARN::Display

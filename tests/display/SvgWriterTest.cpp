#include "display/SvgWriter.hpp"

#include <glib.h>
#include <gtest/gtest.h>

#include <set>

#include "display/CairoWriter.hpp"

namespace ZARN::Display {
namespace {

Drawing MakeSvgDrawing() {
  Drawing drawing;
  drawing.width = 60.0;
  drawing.height = 30.0;
  drawing.scale = 2.0;
  drawing.background = {255, 255, 255};
  drawing.title = "squares & <more>";
  drawing.description = "\"two\" squares";
  Shapes squares;
  squares.outline = {{-2, -2}, {2, -2}, {2, 2.01}, {-2, 2}};
  squares.positions = {{5, 5}, {15.126, 5}};
  squares.fill = Colour{200, 10, 20, 0.5};
  drawing.groups.push_back({"squares", {squares}, {}});
  return drawing;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(SvgWriter, WritesSizeTitleAndDescription) {
  const std::string svg = WriteSvg(MakeSvgDrawing());
  EXPECT_TRUE(
      Contains(svg, " width=\"120\" height=\"60\" viewBox=\"0 0 60 30\""));
  EXPECT_TRUE(
      Contains(svg, "<title id=\"title\">squares &amp; &lt;more&gt;</title>"));
  EXPECT_TRUE(
      Contains(svg, "<desc id=\"description\">&quot;two&quot; squares</desc>"));
}

TEST(SvgWriter, WritesAPathForShapesOfOneKind) {
  const std::string svg = WriteSvg(MakeSvgDrawing());
  EXPECT_TRUE(Contains(
      svg,
      "<path d=\"M3 3l4 0 0 4.01 -4-0.01zM13.13 3l4 0 0 4.01 -4-0.01z\" "
      "fill=\"#c80a14\" fill-opacity=\"0.5\"/>"))
      << svg;
}

TEST(SvgWriter, WritesWordsAsText) {
  Drawing drawing = MakeSvgDrawing();
  drawing.groups.push_back({"words",
                            {Text{"a < b & c",
                                  {1.5, 20},
                                  {12.0, eWeight::kBold},
                                  {0, 0, 0},
                                  eAnchor::kMiddle,
                                  Stroke{{255, 255, 255}, 3.0}}},
                            {{0, 0}, {9, 0}, {9, 9}}});
  const std::string svg = WriteSvg(drawing);
  EXPECT_TRUE(Contains(
      svg,
      "<text x=\"1.5\" y=\"20\" font-size=\"12\" fill=\"#000000\" "
      "font-weight=\"bold\" text-anchor=\"middle\" paint-order=\"stroke\" "
      "stroke=\"#ffffff\" stroke-width=\"3\">a &lt; b &amp; c</text>"));
  EXPECT_TRUE(Contains(svg, "<clipPath id=\"clip-1\">"));
  EXPECT_TRUE(Contains(svg, "clip-path=\"url(#clip-1)\""));
}

TEST(SvgWriter, EmbedsImagesAsPng) {
  // PNGs of several lengths: base64 writes three bytes at a time.
  std::set<std::size_t> lengths;
  for (std::size_t columns = 1; columns < 20; ++columns) {
    Image image = {{1, 2, 3, 4}, columns, 1, {}};
    for (std::size_t i = 0; i < columns; ++i) {
      image.pixels.push_back(static_cast<std::uint32_t>(i * i * 0xF1D3E7U));
    }
    Drawing drawing = MakeSvgDrawing();
    drawing.groups = {{"image", {image}, {}}};
    const std::string svg = WriteSvg(drawing);
    const std::string start =
        "<image x=\"1\" y=\"2\" width=\"3\" height=\"4\" "
        "preserveAspectRatio=\"none\" xlink:href=\"data:image/png;base64,";
    const std::size_t begin = svg.find(start);
    ASSERT_NE(begin, std::string::npos);
    const std::string code =
        svg.substr(begin + start.size(),
                   svg.find('"', begin + start.size()) - begin - start.size());
    gsize length = 0;
    guchar* const bytes = g_base64_decode(code.c_str(), &length);
    EXPECT_EQ(std::string(bytes, bytes + length), EncodePng(image));
    EXPECT_EQ(code.size() % 4, 0U);
    g_free(bytes);
    lengths.insert(length % 3);
  }
  EXPECT_GT(lengths.size(), 1U);
}

TEST(SvgWriter, LeavesOutWhatIsEmpty) {
  Drawing drawing = MakeSvgDrawing();
  drawing.groups = {{"nothing", {Shapes{{}, {}, {}, {}}, Lines{}}, {}}};
  EXPECT_FALSE(Contains(WriteSvg(drawing), "<path"));
}

}  // namespace
}  // namespace ZARN::Display

#include "display/CairoWriter.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/display/Pictures.hpp"

namespace ZARN::Display {
namespace {

// Red squares on white, an image and a word.
Drawing MakeDrawing() {
  Drawing drawing;
  drawing.width = 60.0;
  drawing.height = 30.0;
  drawing.background = {255, 255, 255};
  drawing.title = "squares";
  Shapes squares;
  squares.outline = {{-2, -2}, {2, -2}, {2, 2}, {-2, 2}};
  squares.positions = {{5, 5}, {15, 5}, {25, 5}};
  squares.fill = Colour{200, 10, 20};
  drawing.groups.push_back({"squares", {squares}, {}});
  Image image = {{40, 10, 2, 1}, 2, 1, {0x102030, 0x405060}};
  drawing.groups.push_back({"image", {image}, {}});
  return drawing;
}

std::size_t Count(const Picture& picture, std::uint32_t pixel) {
  return static_cast<std::size_t>(
      std::count(picture.pixels.begin(), picture.pixels.end(), pixel));
}

TEST(CairoWriter, DrawsShapesAtTheirPlaces) {
  for (const double density : {1.0, 2.0, 3.0}) {
    const Picture picture = Decode(WritePng(MakeDrawing(), density));
    const auto side = static_cast<std::size_t>(density);
    EXPECT_EQ(picture.columns, 60 * side);
    EXPECT_EQ(picture.rows, 30 * side);
    EXPECT_EQ(Count(picture, 0xC80A14), 48 * side * side);
    EXPECT_EQ(picture.At(15 * side, 5 * side), 0xC80A14U);
    EXPECT_EQ(picture.At(20 * side, 5 * side), 0xFFFFFFU);
  }
}

TEST(CairoWriter, ScalesWithTheDrawing) {
  Drawing drawing = MakeDrawing();
  drawing.scale = 1.5;
  const Picture picture = Decode(WritePng(drawing, 2.0));
  EXPECT_EQ(picture.columns, 180U);
  EXPECT_EQ(Count(picture, 0xC80A14), 3U * 12U * 12U);
}

TEST(CairoWriter, KeepsThePixelsOfImages) {
  const Picture picture = Decode(WritePng(MakeDrawing(), 1.0));
  EXPECT_EQ(picture.At(40, 10), 0x102030U);
  EXPECT_EQ(picture.At(41, 10), 0x405060U);
}

TEST(CairoWriter, DrawsOnlyInsideAClip) {
  Drawing drawing = MakeDrawing();
  drawing.groups[0].clip = {{0, 0}, {15, 0}, {15, 30}, {0, 30}};
  const Picture picture = Decode(WritePng(drawing, 1.0));
  EXPECT_EQ(Count(picture, 0xC80A14), 16U + 8U);
}

TEST(CairoWriter, PlacesWordsByTheirAnchor) {
  for (const auto anchor : {eAnchor::kStart, eAnchor::kMiddle, eAnchor::kEnd}) {
    Drawing drawing = MakeDrawing();
    drawing.groups = {{"words",
                       {Text{"IIII",
                             {30, 20},
                             {10.0, eWeight::kBold},
                             {0, 0, 0},
                             anchor,
                             std::nullopt}},
                       {}}};
    const Picture picture = Decode(WritePng(drawing, 4.0));
    std::size_t left = 0;
    std::size_t right = 0;
    for (std::size_t row = 0; row < picture.rows; ++row) {
      for (std::size_t column = 0; column < picture.columns; ++column) {
        if (picture.At(column, row) != 0xFFFFFFU) {
          (column < picture.columns / 2 ? left : right) += 1;
        }
      }
    }
    SCOPED_TRACE(static_cast<int>(anchor));
    EXPECT_EQ(left > 0, anchor != eAnchor::kStart);
    EXPECT_EQ(right > 0, anchor != eAnchor::kEnd);
  }
}

TEST(CairoWriter, WritesAPdfOfOnePageWithTheSameBytesEachTime) {
  const std::string pdf = WritePdf(MakeDrawing());
  EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
  EXPECT_NE(pdf.find("%%EOF"), std::string::npos);
  EXPECT_EQ(pdf.find("CreationDate"), std::string::npos);
  EXPECT_EQ(WritePdf(MakeDrawing()), pdf);
}

TEST(CairoWriter, EncodesPixelsAsPng) {
  Image image = {{}, 3, 2, {1, 2, 3, 0xFFFFFF, 5, 6}};
  const Picture picture = Decode(EncodePng(image));
  EXPECT_EQ(picture.columns, 3U);
  EXPECT_EQ(picture.pixels, image.pixels);
}

TEST(CairoWriter, RefusesWhatNoPictureCanBe) {
  Drawing drawing = MakeDrawing();
  EXPECT_THROW(WritePng(drawing, 1000.0), std::runtime_error);
  EXPECT_THROW(WritePng(drawing, 0.0), std::runtime_error);
  EXPECT_THROW(EncodePng({{}, 2, 2, {1, 2, 3}}), std::runtime_error);
  EXPECT_THROW(EncodePng({{}, 0, 0, {}}), std::runtime_error);
  std::get<Image>(drawing.groups[1].items[0]).pixels.pop_back();
  EXPECT_THROW(WritePng(drawing), std::runtime_error);
}

}  // namespace
}  // namespace ZARN::Display

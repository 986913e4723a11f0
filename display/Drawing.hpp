#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace ZARN::Display {

/// A colour of a screen (sRGB).
struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  double opacity = 1.0;
};

/// A place in a drawing: x to the right, y downwards, from the top left.
struct Point {
  double x = 0.0;
  double y = 0.0;
};

/// A rectangle with its top left corner.
struct Box {
  double x = 0.0;
  double y = 0.0;
  double width = 0.0;
  double height = 0.0;

  double Right() const { return x + width; }
  double Bottom() const { return y + height; }
  double MiddleX() const { return x + 0.5 * width; }
  double MiddleY() const { return y + 0.5 * height; }
};

struct Stroke {
  Colour colour;
  double width = 1.0;
};

/// One closed polygon, drawn at each of several positions (its origin).
struct Shapes {
  std::vector<Point> outline;
  std::vector<Point> positions = {{0.0, 0.0}};
  std::optional<Colour> fill;
  std::optional<Stroke> stroke;
};

/// Open lines through points, with round joints.
struct Lines {
  std::vector<std::vector<Point>> lines;
  Stroke stroke;
};

enum class eWeight { kNormal, kBold };
enum class eAnchor { kStart, kMiddle, kEnd };

struct Font {
  double size = 13.0;  ///< height of the em square
  eWeight weight = eWeight::kNormal;
};

/// One line of words.
struct Text {
  std::string words;  ///< UTF-8 without control characters (MakePlain)
  Point position;     ///< on the baseline: start, middle or end of the line
  Font font;
  Colour colour;
  eAnchor anchor = eAnchor::kStart;
  std::optional<Stroke> halo;  ///< around the letters, on top of a picture
};

/// Opaque pixels in rows from the top left, stretched to a box.
struct Image {
  Box box;
  std::size_t columns = 0;
  std::size_t rows = 0;
  std::vector<std::uint32_t> pixels;  ///< 0xRRGGBB
};

using Item = std::variant<Shapes, Lines, Text, Image>;

/// Items that belong together, drawn one after the other.
struct Group {
  std::string name;  ///< a word for people who edit the file
  std::vector<Item> items;
  std::vector<Point> clip;  ///< only inside this polygon; empty for everywhere
};

/// A picture, independent of the format of its file.
struct Drawing {
  double width = 0.0;  ///< units, which all items use
  double height = 0.0;
  double scale = 1.0;  ///< pixels a unit, in the picture's nominal size
  Colour background;
  std::string title;
  std::string description;
  std::vector<Group> groups;
};

}  // namespace ZARN::Display

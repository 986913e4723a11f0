#include "display/SvgWriter.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "display/CairoWriter.hpp"
#include "display/TextRuler.hpp"

namespace ZARN::Display {
namespace {

// A hundredth of a unit is a fiftieth of a pixel on a sharp screen.
constexpr int kDecimals = 2;
constexpr double kRounding = 100.0;

std::string Number(double value, int decimals = kDecimals) {
  std::array<char, 32> digits = {};
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), value,
                    std::chars_format::fixed, decimals);
  std::string text(digits.data(), result.ptr);
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string Escaped(const std::string& words) {
  std::string text;
  for (const char character : words) {
    switch (character) {
      case '&':
        text += "&amp;";
        break;
      case '<':
        text += "&lt;";
        break;
      case '>':
        text += "&gt;";
        break;
      case '"':
        text += "&quot;";
        break;
      default:
        text += character;
    }
  }
  return text;
}

std::string Attribute(std::string_view name, const std::string& value) {
  return " " + std::string(name) + "=\"" + value + "\"";
}

std::string NameOf(const Colour& colour) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text = "#";
  for (const unsigned part : {colour.red, colour.green, colour.blue}) {
    text += kDigits[part >> 4U];
    text += kDigits[part & 0xFU];
  }
  return text;
}

// fill="..." or stroke="...", with its opacity.
std::string Paint(const std::string& kind, const Colour& colour) {
  std::string text = Attribute(kind, NameOf(colour));
  if (colour.opacity < 1.0) {
    text += Attribute(kind + "-opacity", Number(colour.opacity));
  }
  return text;
}

std::string Paint(const Stroke& stroke) {
  return Paint("stroke", stroke.colour) +
         Attribute("stroke-width", Number(stroke.width));
}

// Points of a path after the first one, relative to the one before. The sums
// are rounded, not the steps, so that errors do not add up.
std::string Steps(const std::vector<Point>& points) {
  std::string text;
  double x = std::round(points.front().x * kRounding);
  double y = std::round(points.front().y * kRounding);
  for (std::size_t i = 1; i < points.size(); ++i) {
    const double nextX = std::round(points[i].x * kRounding);
    const double nextY = std::round(points[i].y * kRounding);
    const std::string stepY = Number((nextY - y) / kRounding);
    text += (i == 1 ? "l" : " ") + Number((nextX - x) / kRounding);
    if (stepY.front() != '-') text += ' ';
    text += stepY;
    x = nextX;
    y = nextY;
  }
  return text;
}

std::string Start(const Point& point, const Point& origin) {
  return "M" + Number(origin.x + point.x) + " " + Number(origin.y + point.y);
}

std::string Base64(const std::string& bytes) {
  constexpr std::string_view kLetters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t three = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      three = (three << 8U) |
              (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      const bool isPadding = i + j > bytes.size();
      text += isPadding ? '=' : kLetters[(three >> (18U - 6U * j)) & 0x3FU];
    }
  }
  return text;
}

// Writes items, one kind each.
class Writer {
 public:
  void operator()(const Shapes& shapes) {
    if (shapes.positions.empty() || shapes.outline.empty()) return;
    const std::string steps = Steps(shapes.outline) + "z";
    out_ += "<path d=\"";
    for (const Point& position : shapes.positions) {
      out_ += Start(shapes.outline.front(), position) + steps;
    }
    out_ += '"';
    out_ +=
        shapes.fill ? Paint("fill", *shapes.fill) : Attribute("fill", "none");
    if (shapes.stroke) out_ += Paint(*shapes.stroke);
    out_ += "/>\n";
  }

  void operator()(const Lines& lines) {
    if (lines.lines.empty()) return;
    out_ += "<path d=\"";
    for (const auto& line : lines.lines) {
      if (!line.empty()) out_ += Start(line.front(), {}) + Steps(line);
    }
    out_ += "\"" + Attribute("fill", "none") + Paint(lines.stroke) + "/>\n";
  }

  void operator()(const Text& text) {
    out_ += "<text" + Attribute("x", Number(text.position.x)) +
            Attribute("y", Number(text.position.y)) +
            Attribute("font-size", Number(text.font.size)) +
            Paint("fill", text.colour);
    if (text.font.weight == eWeight::kBold) {
      out_ += Attribute("font-weight", "bold");
    }
    if (text.anchor != eAnchor::kStart) {
      out_ += Attribute("text-anchor",
                        text.anchor == eAnchor::kEnd ? "end" : "middle");
    }
    if (text.halo) {
      out_ += Attribute("paint-order", "stroke") + Paint(*text.halo);
    }
    out_ += ">" + Escaped(text.words) + "</text>\n";
  }

  void operator()(const Image& image) {
    out_ += "<image" + Attribute("x", Number(image.box.x)) +
            Attribute("y", Number(image.box.y)) +
            Attribute("width", Number(image.box.width)) +
            Attribute("height", Number(image.box.height)) +
            Attribute("preserveAspectRatio", "none") +
            Attribute("xlink:href",
                      "data:image/png;base64," + Base64(EncodePng(image))) +
            "/>\n";
  }

  std::string Write(const Drawing& drawing) {
    WriteHead(drawing);
    std::size_t clips = 0;
    for (const Group& group : drawing.groups) {
      std::string clip;
      if (!group.clip.empty()) {
        clip = "clip-" + std::to_string(++clips);
        out_ += "<clipPath" + Attribute("id", clip) + "><path d=\"" +
                Start(group.clip.front(), {}) + Steps(group.clip) +
                "z\"/></clipPath>\n";
      }
      out_ += "<g" + Attribute("id", Escaped(group.name));
      if (!clip.empty()) out_ += Attribute("clip-path", "url(#" + clip + ")");
      out_ += ">\n";
      for (const Item& item : group.items) std::visit(*this, item);
      out_ += "</g>\n";
    }
    out_ += "</svg>\n";
    return std::move(out_);
  }

 private:
  void WriteHead(const Drawing& drawing) {
    out_ =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\""
        " xmlns:xlink=\"http://www.w3.org/1999/xlink\"";
    out_ += Attribute("width", Number(drawing.width * drawing.scale)) +
            Attribute("height", Number(drawing.height * drawing.scale)) +
            Attribute("viewBox", "0 0 " + Number(drawing.width) + " " +
                                     Number(drawing.height)) +
            Attribute("role", "img") +
            Attribute("aria-labelledby", "title description") +
            Attribute("font-family", kFontFamilies) +
            Attribute("stroke-linejoin", "round") + ">\n";
    out_ += "<title id=\"title\">" + Escaped(drawing.title) + "</title>\n";
    out_ += "<desc id=\"description\">" + Escaped(drawing.description) +
            "</desc>\n";
    out_ += "<rect" + Attribute("width", Number(drawing.width)) +
            Attribute("height", Number(drawing.height)) +
            Paint("fill", drawing.background) + "/>\n";
  }

  std::string out_;
};

}  // namespace

std::string WriteSvg(const Drawing& drawing) { return Writer().Write(drawing); }

}  // namespace ZARN::Display

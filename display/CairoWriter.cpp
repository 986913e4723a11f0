#include "display/CairoWriter.hpp"

#include <cairo-pdf.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>

#include "display/PangoText.hpp"

namespace ZARN::Display {
namespace {

constexpr int kLargestSide = 32767;  // of cairo's images

struct SurfaceRelease {
  void operator()(cairo_surface_t* surface) const {
    cairo_surface_destroy(surface);
  }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceRelease>;

struct ContextRelease {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using Context = std::unique_ptr<cairo_t, ContextRelease>;

void Check(cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(std::string("cannot draw: ") +
                             cairo_status_to_string(status));
  }
}

cairo_status_t Append(void* bytes, const unsigned char* data,
                      unsigned int length) {
  static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data),
                                           length);
  return CAIRO_STATUS_SUCCESS;
}

void CheckImage(const Image& image) {
  if (image.columns == 0 || image.rows == 0 || image.columns > kLargestSide ||
      image.rows > kLargestSide ||
      image.pixels.size() != image.columns * image.rows) {
    throw std::runtime_error("cannot draw an image of " +
                             std::to_string(image.columns) + " x " +
                             std::to_string(image.rows) + " pixels");
  }
}

// The pixels of an image; cairo's rows of four bytes a pixel have no gaps.
std::uint32_t* PixelsOf(cairo_surface_t* surface) {
  return reinterpret_cast<std::uint32_t*>(
      cairo_image_surface_get_data(surface));
}

Surface SurfaceOf(const Image& image) {
  CheckImage(image);
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                             static_cast<int>(image.columns),
                                             static_cast<int>(image.rows)));
  Check(cairo_surface_status(surface.get()));
  std::copy(image.pixels.begin(), image.pixels.end(), PixelsOf(surface.get()));
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

std::string PngOf(cairo_surface_t* surface) {
  std::string bytes;
  Check(cairo_surface_write_to_png_stream(surface, Append, &bytes));
  return bytes;
}

// Draws items, one kind each.
class Painter {
 public:
  explicit Painter(cairo_t* context) : context_(context) {}

  void operator()(const Shapes& shapes) {
    for (const Point& position : shapes.positions) {
      AddLine(shapes.outline, position);
      cairo_close_path(context_);
    }
    if (shapes.fill) {
      SetColour(*shapes.fill);
      cairo_fill_preserve(context_);
    }
    if (shapes.stroke) DrawStroke(*shapes.stroke);
    cairo_new_path(context_);
  }

  void operator()(const Lines& lines) {
    for (const auto& line : lines.lines) AddLine(line, {});
    DrawStroke(lines.stroke);
    cairo_new_path(context_);
  }

  void operator()(const Text& text) {
    PangoLayoutLine* const line = text_.LayOut(text.words, text.font);
    PangoRectangle logical;
    pango_layout_line_get_extents(line, nullptr, &logical);
    const double width = static_cast<double>(logical.width) / PANGO_SCALE;
    const double shift = text.anchor == eAnchor::kStart    ? 0.0
                         : text.anchor == eAnchor::kMiddle ? 0.5
                                                           : 1.0;
    const double x = text.position.x - shift * width;
    if (text.halo) {
      cairo_move_to(context_, x, text.position.y);
      pango_cairo_layout_line_path(context_, line);
      DrawStroke(*text.halo);
      cairo_new_path(context_);
    }
    SetColour(text.colour);
    cairo_move_to(context_, x, text.position.y);
    pango_cairo_show_layout_line(context_, line);
    cairo_new_path(context_);
  }

  void operator()(const Image& image) {
    const Surface surface = SurfaceOf(image);
    cairo_save(context_);
    cairo_translate(context_, image.box.x, image.box.y);
    cairo_scale(context_, image.box.width / static_cast<double>(image.columns),
                image.box.height / static_cast<double>(image.rows));
    cairo_set_source_surface(context_, surface.get(), 0.0, 0.0);
    cairo_pattern_set_extend(cairo_get_source(context_), CAIRO_EXTEND_PAD);
    cairo_rectangle(context_, 0.0, 0.0, static_cast<double>(image.columns),
                    static_cast<double>(image.rows));
    cairo_fill(context_);
    cairo_restore(context_);
  }

  void Draw(const Drawing& drawing) {
    SetColour(drawing.background);
    cairo_paint(context_);
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
    for (const Group& group : drawing.groups) {
      cairo_save(context_);
      if (!group.clip.empty()) {
        AddLine(group.clip, {});
        cairo_clip(context_);
      }
      for (const Item& item : group.items) std::visit(*this, item);
      cairo_restore(context_);
    }
    Check(cairo_status(context_));
  }

 private:
  void AddLine(const std::vector<Point>& points, const Point& origin) {
    cairo_new_sub_path(context_);
    for (const Point& point : points) {
      cairo_line_to(context_, origin.x + point.x, origin.y + point.y);
    }
  }

  void SetColour(const Colour& colour) {
    constexpr double kFull = 255.0;
    cairo_set_source_rgba(context_, colour.red / kFull, colour.green / kFull,
                          colour.blue / kFull, colour.opacity);
  }

  void DrawStroke(const Stroke& stroke) {
    SetColour(stroke.colour);
    cairo_set_line_width(context_, stroke.width);
    cairo_stroke_preserve(context_);
  }

  cairo_t* context_;
  PangoText text_;
};

void DrawOn(cairo_surface_t* surface, const Drawing& drawing, double scale) {
  Check(cairo_surface_status(surface));
  const Context context(cairo_create(surface));
  cairo_scale(context.get(), scale, scale);
  Painter(context.get()).Draw(drawing);
}

}  // namespace

std::string WritePng(const Drawing& drawing, double density) {
  const double scale = drawing.scale * density;
  const double width = std::round(drawing.width * scale);
  const double height = std::round(drawing.height * scale);
  if (!(width >= 1 && height >= 1 && width <= kLargestSide &&
        height <= kLargestSide)) {
    throw std::runtime_error("a PNG cannot have more than " +
                             std::to_string(kLargestSide) +
                             " pixels in a row or column");
  }
  const Surface surface(cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height)));
  DrawOn(surface.get(), drawing, scale);
  return PngOf(surface.get());
}

std::string WritePdf(const Drawing& drawing) {
  std::string bytes;
  const Surface surface(cairo_pdf_surface_create_for_stream(
      Append, &bytes, drawing.width * drawing.scale,
      drawing.height * drawing.scale));
  Check(cairo_surface_status(surface.get()));
  cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE,
                                 drawing.title.c_str());
  cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_SUBJECT,
                                 drawing.description.c_str());
  // Without the date, the same drawing gives the same bytes.
  cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE,
                                 "");
  DrawOn(surface.get(), drawing, drawing.scale);
  cairo_surface_finish(surface.get());
  Check(cairo_surface_status(surface.get()));
  return bytes;
}

std::string EncodePng(const Image& image) {
  return PngOf(SurfaceOf(image).get());
}

}  // namespace ZARN::Display

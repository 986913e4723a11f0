#include "display/PangoText.hpp"

#include <stdexcept>

#include "display/TextRuler.hpp"

namespace ZARN::Display {
namespace {

struct DescriptionRelease {
  void operator()(PangoFontDescription* description) const {
    pango_font_description_free(description);
  }
};
using Description = std::unique_ptr<PangoFontDescription, DescriptionRelease>;

Description Describe(const Font& font) {
  Description description(pango_font_description_new());
  pango_font_description_set_family_static(description.get(), kFontFamilies);
  pango_font_description_set_absolute_size(description.get(),
                                           font.size * PANGO_SCALE);
  pango_font_description_set_weight(
      description.get(),
      font.weight == eWeight::kBold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  return description;
}

}  // namespace

PangoText::PangoText()
    : fonts_(pango_cairo_font_map_new()),
      context_(pango_font_map_create_context(fonts_.get())) {
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(context_.get(), options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context_.get(), FALSE);

  const Description description = Describe({});
  const ObjectPointer<PangoFont> font(pango_font_map_load_font(
      fonts_.get(), context_.get(), description.get()));
  if (font == nullptr) {
    throw std::runtime_error(
        "no font is installed: a picture needs one for its words, for example "
        "Liberation Sans (Debian: fonts-liberation2)");
  }
  layout_.reset(pango_layout_new(context_.get()));
  pango_layout_set_single_paragraph_mode(layout_.get(), TRUE);
  // Names in any script start where they are placed.
  pango_layout_set_auto_dir(layout_.get(), FALSE);
}

PangoLayoutLine* PangoText::LayOut(const std::string& words, const Font& font) {
  pango_layout_set_font_description(layout_.get(), Describe(font).get());
  pango_layout_set_text(layout_.get(), words.data(),
                        static_cast<int>(words.size()));
  return pango_layout_get_line_readonly(layout_.get(), 0);
}

}  // namespace ZARN::Display

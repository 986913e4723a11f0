#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <string>

#include "display/Drawing.hpp"

namespace ZARN::Display {

/// Frees objects of GLib.
struct ObjectRelease {
  void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using ObjectPointer = std::unique_ptr<T, ObjectRelease>;

/// Lays out single lines of words with the installed fonts. Sizes scale
/// exactly: nothing is fitted to pixels.
class PangoText {
 public:
  /// @throws std::runtime_error if no font is installed
  PangoText();

  /// Lay out words; the line is valid until the next call.
  PangoLayoutLine* LayOut(const std::string& words, const Font& font);

 private:
  ObjectPointer<PangoFontMap> fonts_;
  ObjectPointer<PangoContext> context_;
  ObjectPointer<PangoLayout> layout_;
};

}  // namespace ZARN::Display

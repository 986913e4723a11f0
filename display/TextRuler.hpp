#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "display/Drawing.hpp"

namespace ZARN::Display {

class PangoText;

/// The fonts of words, the first that is installed. Those named have letters
/// of the same widths, so that a layout fits wherever the picture is shown.
inline constexpr char kFontFamilies[] =
    "Helvetica,Liberation Sans,Arial,sans-serif";

/// Make words from any bytes: control characters and white space become
/// spaces, and what is not UTF-8 becomes the replacement character. Characters
/// that only set a direction of writing are left out, since they could turn
/// round the words that follow; letters keep the direction they have.
std::string MakePlain(std::string_view bytes);

/// Measures words with the installed fonts, and makes them fit.
class TextRuler {
 public:
  /// @throws std::runtime_error if no font is installed
  TextRuler();
  ~TextRuler();
  TextRuler(const TextRuler&) = delete;
  TextRuler& operator=(const TextRuler&) = delete;

  /// The width of plain words, units of the font's size.
  double WidthOf(const std::string& words, const Font& font) const;

  /// The words if they fit into @p width, else as many letters of them as fit
  /// with an ellipsis.
  std::string Shorten(const std::string& words, const Font& font,
                      double width) const;

  /// Break words into lines that fit into @p width. What does not fit into
  /// @p mostLines (> 0) is left out, and the last line ends with an ellipsis.
  std::vector<std::string> Wrap(const std::string& words, const Font& font,
                                double width, std::size_t mostLines) const;

 private:
  std::unique_ptr<PangoText> text_;
};

}  // namespace ZARN::Display

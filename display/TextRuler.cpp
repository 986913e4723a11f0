#include "display/TextRuler.hpp"

#include <algorithm>

#include "display/PangoText.hpp"

namespace ZARN::Display {
namespace {

constexpr char kEllipsis[] = "\u2026";

// The ends of the characters of UTF-8 words.
std::vector<std::size_t> EndsOfCharacters(const std::string& words) {
  std::vector<std::size_t> ends;
  for (std::size_t i = 1; i <= words.size(); ++i) {
    const bool isInside =
        i < words.size() &&
        (static_cast<unsigned char>(words[i]) & 0xC0U) == 0x80U;
    if (!isInside) ends.push_back(i);
  }
  return ends;
}

std::string WithoutSpaceAtEnd(std::string words) {
  words.erase(words.find_last_not_of(' ') + 1);
  return words;
}

// Marks, embeddings and isolates of the Unicode bidirectional algorithm.
bool TurnsWords(gunichar character) {
  return character == 0x200EU || character == 0x200FU || character == 0x061CU ||
         (character >= 0x202AU && character <= 0x202EU) ||
         (character >= 0x2066U && character <= 0x2069U);
}

}  // namespace

std::string MakePlain(std::string_view bytes) {
  std::string words;
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while (at < end) {
    // GLib takes a zero for the end.
    const gunichar character =
        *at == '\0' ? 0 : g_utf8_get_char_validated(at, end - at);
    if (character >= 0x110000U) {  // an error: of this byte or of the last ones
      words += "\uFFFD";
      ++at;
      continue;
    }
    const char* const next = g_utf8_next_char(at);
    // XML has no characters for the last two, either.
    if (g_unichar_iscntrl(character) || g_unichar_isspace(character)) {
      // The no-break space is a letter like any other.
      words += character == 0xA0U ? "\u00A0" : " ";
    } else if ((character & 0xFFFEU) == 0xFFFEU) {
      words += "\uFFFD";
    } else if (!TurnsWords(character)) {
      words.append(at, next);
    }
    at = next;
  }
  return words;
}

TextRuler::TextRuler() : text_(std::make_unique<PangoText>()) {}

TextRuler::~TextRuler() = default;

double TextRuler::WidthOf(const std::string& words, const Font& font) const {
  PangoRectangle logical;
  pango_layout_line_get_extents(text_->LayOut(words, font), nullptr, &logical);
  return static_cast<double>(logical.width) / PANGO_SCALE;
}

std::string TextRuler::Shorten(const std::string& words, const Font& font,
                               double width) const {
  if (WidthOf(words, font) <= width) return words;
  const std::vector<std::size_t> ends = EndsOfCharacters(words);
  const auto shortened = [&](std::size_t characters) {
    const std::size_t length = characters > 0 ? ends[characters - 1] : 0;
    return WithoutSpaceAtEnd(words.substr(0, length)) + kEllipsis;
  };
  std::size_t fits = 0;
  std::size_t tooMany = ends.size();
  while (fits + 1 < tooMany) {
    const std::size_t middle = (fits + tooMany) / 2;
    (WidthOf(shortened(middle), font) <= width ? fits : tooMany) = middle;
  }
  return shortened(fits);
}

std::vector<std::string> TextRuler::Wrap(const std::string& words,
                                         const Font& font, double width,
                                         std::size_t mostLines) const {
  std::vector<std::string> lines;
  std::string rest = words;
  while (!rest.empty()) {
    if (lines.size() + 1 == mostLines) {
      lines.push_back(Shorten(rest, font, width));
      break;
    }
    std::size_t fits = 0;  // the end of the words that fit
    for (std::size_t end = 0; end < rest.size();) {
      end = std::min(rest.find(' ', end + 1), rest.size());
      if (fits > 0 && WidthOf(rest.substr(0, end), font) > width) break;
      fits = end;
    }
    lines.push_back(Shorten(rest.substr(0, fits), font, width));
    rest.erase(0, std::min(fits + 1, rest.size()));
  }
  return lines;
}

}  // namespace ZARN::Display

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "display/Drawing.hpp"
#include "display/TextRuler.hpp"

namespace ZARN::Display {

/// What drawings contain.

/// All texts, in the order of drawing.
inline std::vector<Text> TextsOf(const Drawing& drawing) {
  std::vector<Text> texts;
  for (const Group& group : drawing.groups) {
    for (const Item& item : group.items) {
      if (const auto* text = std::get_if<Text>(&item)) texts.push_back(*text);
    }
  }
  return texts;
}

/// Whether a text has exactly these words.
inline bool HasText(const Drawing& drawing, const std::string& words) {
  for (const Text& text : TextsOf(drawing)) {
    if (text.words == words) return true;
  }
  return false;
}

/// The room of letters: from the top of capitals to below the baseline.
inline Box BoxOf(const TextRuler& ruler, const Text& text) {
  const double width = ruler.WidthOf(text.words, text.font);
  const double shift = text.anchor == eAnchor::kStart    ? 0.0
                       : text.anchor == eAnchor::kMiddle ? 0.5
                                                         : 1.0;
  return {text.position.x - shift * width,
          text.position.y - 0.73 * text.font.size, width,
          0.94 * text.font.size};
}

/// Expect that texts are inside the picture and do not overlap.
inline void ExpectTextsApart(const TextRuler& ruler, const Drawing& drawing) {
  const std::vector<Text> texts = TextsOf(drawing);
  std::vector<Box> boxes;
  for (const Text& text : texts) boxes.push_back(BoxOf(ruler, text));
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    const Box& box = boxes[i];
    EXPECT_GE(box.x, 0.0) << texts[i].words;
    EXPECT_GE(box.y, 0.0) << texts[i].words;
    EXPECT_LE(box.Right(), drawing.width) << texts[i].words;
    EXPECT_LE(box.Bottom(), drawing.height) << texts[i].words;
    for (std::size_t j = 0; j < i; ++j) {
      const Box& other = boxes[j];
      EXPECT_FALSE(box.x < other.Right() && other.x < box.Right() &&
                   box.y < other.Bottom() && other.y < box.Bottom())
          << '"' << texts[i].words << "\" and \"" << texts[j].words << '"';
    }
  }
}

/// The part of a name.
inline Group GroupOf(const Drawing& drawing, const std::string& name) {
  for (const Group& group : drawing.groups) {
    if (group.name == name) return group;
  }
  ADD_FAILURE() << "no group " << name;
  return {};
}

}  // namespace ZARN::Display

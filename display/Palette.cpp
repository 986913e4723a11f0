#include "display/Palette.hpp"

#include <charconv>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "display/PaletteJson.hpp"

namespace ZARN::Display {
namespace {

using Json = nlohmann::json;

Colour ColourAt(const Json& object, const char* key) {
  return ReadColour(object.at(key).get_ref<const std::string&>());
}

Theme ReadTheme(const Json& palette, const char* name) {
  const Json& colours = palette.at("themes").at(name);
  Theme theme;
  for (const auto component : DU::kShadowingComponents) {
    theme.components[static_cast<std::size_t>(component) - 1] =
        ColourAt(palette.at("components").at(DU::NameOf(component)), name);
  }
  theme.view = ColourAt(colours, "view");
  theme.text = ColourAt(colours, "text");
  theme.secondText = ColourAt(colours, "secondText");
  theme.hairline = ColourAt(colours, "hairline");
  theme.clear = ColourAt(colours, "clear");
  theme.clearArea = ColourAt(colours, "clearArea");
  theme.noPath = ColourAt(colours, "noPath");
  theme.vessel = ColourAt(colours, "vessel");
  for (std::size_t step = 0; step < kShareSteps; ++step) {
    theme.share[step] =
        ReadColour(colours.at("share").at(step).get<std::string>());
  }
  return theme;
}

ComponentLook ReadLook(const Json& palette, const char* component) {
  const Json& entry = palette.at("components").at(component);
  ComponentLook look;
  look.name = entry.at("name").get<std::string>();
  const Json& shape =
      palette.at("shapes").at(entry.at("shape").get_ref<const std::string&>());
  for (const Json& point : shape) {
    look.shape.push_back(
        {point.at(0).get<double>(), point.at(1).get<double>()});
  }
  return look;
}

}  // namespace

Colour ReadColour(std::string_view text) {
  constexpr int kHexadecimal = 16;
  std::uint32_t value = 0;
  const char* const end = text.data() + text.size();
  if (text.size() == 7 && text.front() == '#') {
    const auto result =
        std::from_chars(text.data() + 1, end, value, kHexadecimal);
    if (result.ec == std::errc() && result.ptr == end) {
      return {static_cast<std::uint8_t>(value >> 16U),
              static_cast<std::uint8_t>((value >> 8U) & 0xFFU),
              static_cast<std::uint8_t>(value & 0xFFU)};
    }
  }
  throw std::runtime_error("not a colour like #08406f: " + std::string(text));
}

Palette ReadPalette(std::string_view json) {
  try {
    const Json file = Json::parse(json);
    Palette palette;
    for (const auto component : DU::kShadowingComponents) {
      palette.looks[static_cast<std::size_t>(component) - 1] =
          ReadLook(file, DU::NameOf(component));
    }
    palette.clear = file.at("clear").get<std::string>();
    palette.noPath = file.at("noPath").get<std::string>();
    palette.light = ReadTheme(file, "light");
    palette.dark = ReadTheme(file, "dark");
    const Json& sizes = file.at("sizes");
    palette.shapeSize = sizes.at("shape").get<double>();
    palette.clearSize = sizes.at("clear").get<double>();
    palette.largestSize = sizes.at("largest").get<double>();
    return palette;
  } catch (const Json::exception& error) {
    throw std::runtime_error(std::string("not a palette: ") + error.what());
  }
}

const Palette& GetPalette() {
  static const Palette palette = ReadPalette(kPaletteJson);
  return palette;
}

}  // namespace ZARN::Display

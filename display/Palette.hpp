#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "display/Drawing.hpp"
#include "du/hardware/ShadowingComponent.hpp"

namespace ZARN::Display {

enum class eTheme { kLight, kDark };

/// The number of steps of the scale for shares of events: each covers a fifth.
inline constexpr std::size_t kShareSteps = 5;

/// The colours of one theme.
struct Theme {
  std::array<Colour, DU::kNumberOfComponents> components;  ///< as tested
  Colour view;                                             ///< ground of a map
  Colour text;        ///< also for what is selected, and for the event
  Colour secondText;  ///< captions, axes
  Colour hairline;
  Colour clear;      ///< the dot of a clear PMT
  Colour clearArea;  ///< clear directions
  Colour noPath;
  Colour vessel;
  std::array<Colour, kShareSteps> share;  ///< from no event to all

  const Colour& Of(DU::eShadowingComponent component) const {
    return components[static_cast<std::size_t>(component) - 1];
  }
};

/// How a component is called and drawn.
struct ComponentLook {
  std::string name;  ///< "Hold-down ropes"
  /// A polygon around the origin, y downwards, about 1 across.
  std::vector<Point> shape;
};

/// Names, shapes and colours of everything that is drawn, from palette.json,
/// which is compiled into the library and which the Python package reads, too.
struct Palette {
  std::array<ComponentLook, DU::kNumberOfComponents> looks;  ///< as tested
  std::string clear;   ///< the name "Clear"
  std::string noPath;  ///< the name "No path"
  Theme light;
  Theme dark;
  // Sizes of marks, in units of the side of the square that each PMT would have
  // if they shared the map evenly.
  double shapeSize = 0.0;
  double clearSize = 0.0;
  double largestSize = 0.0;  ///< units of the drawing

  const ComponentLook& Of(DU::eShadowingComponent component) const {
    return looks[static_cast<std::size_t>(component) - 1];
  }
  const Theme& Of(eTheme theme) const {
    return theme == eTheme::kDark ? dark : light;
  }
};

/// The palette. It is read once.
const Palette& GetPalette();

/// Read a palette.
///
/// @throws std::runtime_error if the text is not a complete palette
Palette ReadPalette(std::string_view json);

/// Read a colour: "#08406f".
///
/// @throws std::runtime_error if it is anything else
Colour ReadColour(std::string_view text);

}  // namespace ZARN::Display

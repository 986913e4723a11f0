#pragma once

#include <cstdint>
#include <string>

#include "display/Drawing.hpp"
#include "display/MapContent.hpp"
#include "display/Palette.hpp"

namespace ZARN::Display {

/// How a mark, a pixel or an entry of a legend looks. Clear and components have
/// the numbers of their verdicts.
enum class eMapLook : std::uint8_t {
  kClear,
  kAVHDRope,
  kSupportRope,
  kBellyPlate,
  kNCDAnchor,
  kAVPipe,
  kNeckBoss,
  kNoPath,
  kUnchanged,   ///< on a comparison: not what a verdict is, but that it is
  kClearNow,    ///< on a comparison: clear, where it has changed
  kFirstShare,  ///< the steps of the scale for shares of events
  kSecondShare,
  kThirdShare,
  kFourthShare,
  kLastShare,
  kOutside  ///< no PMT or direction
};
inline constexpr std::size_t kMapLooks =
    static_cast<std::size_t>(eMapLook::kOutside) + 1;

/// The look of a step of shares.
constexpr eMapLook LookOfStep(std::size_t step) {
  return static_cast<eMapLook>(static_cast<std::size_t>(eMapLook::kFirstShare) +
                               step);
}

static_assert(static_cast<std::size_t>(eMapLook::kNeckBoss) ==
              DU::kNumberOfComponents);
static_assert(LookOfStep(kShareSteps - 1) == eMapLook::kLastShare);

/// Whether something is drawn as a mark, or as an area in a map of pixels.
enum class eMapShape { kMark, kArea };

/// The look of a component's shadow.
constexpr eMapLook LookOf(DU::eShadowingComponent component) {
  return static_cast<eMapLook>(component);
}
/// The look of a verdict.
eMapLook LookOf(DU::eVerdict verdict);
/// The look of a verdict that has changed, before or now.
eMapLook LookOfChanged(DU::eVerdict verdict);
/// The look on a comparison: what blocks now, if that has changed.
eMapLook LookOfChange(DU::eVerdict before, DU::eVerdict after);
/// The look of a PMT on a map of several events.
eMapLook LookOfShare(std::uint64_t shadowed, std::uint64_t paths);
/// The look of a PMT in this map.
eMapLook LookOf(const MapContent& content, const MapMark& mark);

/// Whether two verdicts differ on a comparison. All reasons why there is no
/// path are one.
bool IsChange(DU::eVerdict before, DU::eVerdict after);

/// The name in a legend: "Hold-down ropes", "No path".
std::string NameOf(const Palette& palette, eMapLook look);

/// The colour of a mark or an area; that of its lines, where it has lines.
Colour ColourOf(const Theme& theme, eMapLook look, eMapShape shape);

/// Whether an area is filled by lines instead of a colour.
constexpr bool IsHatched(eMapLook look) {
  return look == eMapLook::kNoPath || look == eMapLook::kClearNow;
}

/// A polygon with corners on a circle.
std::vector<Point> MakeCircle(double radius);

/// Marks of one look at several places.
///
/// @param size  of a component's shape, units
Shapes MakeMarks(const Palette& palette, const Theme& theme, eMapLook look,
                 double size, std::vector<Point> positions);

/// An entry of a legend around a point: a mark, or a square that is coloured
/// like an area. In outline, for a component that blocks nothing because it
/// is not tested.
std::vector<Item> MakeSwatch(const Palette& palette, const Theme& theme,
                             eMapLook look, eMapShape shape,
                             eComponentState state, const Point& centre);

/// The distance between the lines of a hatched area, units.
double HatchSpacing(eMapLook look);

/// The direction of its lines: 1 from the bottom left to the top right, -1 the
/// other.
double HatchSlope(eMapLook look);

}  // namespace ZARN::Display

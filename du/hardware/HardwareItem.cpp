#include "du/hardware/HardwareItem.hpp"

#include <algorithm>
#include <cmath>

#include "du/geometry/Constants.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;
using ePart = HardwareItem::ePart;

constexpr const char* kTable = "GEO_LOCATIONS";

HardwareItem SurfaceItem(const AVHDRopeModel& ropes, std::size_t point) {
  const auto& begins = ropes.AVHDRopeSurfaceBegins;
  const auto next = std::upper_bound(begins.begin(), begins.end(), point);
  const bool isOnRing =
      ropes.AVHDRopeSurfaceParts[point] == eAVHDRopePart::kRing;
  return {eComponent::kAVHDRope, kTable, ropes.AVHDRopeLocations,
          static_cast<std::size_t>(next - begins.begin()) - 1,
          isOnRing ? ePart::kRingArc : ePart::kOverVessel};
}

HardwareItem LegItem(const AVHDRopeModel& ropes, std::size_t leg) {
  const std::size_t rope = leg / 2;
  HardwareItem item = {eComponent::kAVHDRope, kTable, ropes.AVHDRopeLocations,
                       rope, ePart::kLegP4};
  if (leg % 2 == 0) return item;
  item.part = ePart::kLegP1;
  // Rolls in tables have a few digits. So ropes that are half a turn apart are
  // much nearer to it than this, and others much farther away.
  constexpr double kSameRoll = 1e-6;  // rad
  const auto& rolls = ropes.AVHDRopeRolls;
  const auto opposite =
      std::find_if(rolls.begin(), rolls.end(), [&](double roll) {
        return std::abs(std::remainder(roll - rolls[rope] - kPi, kTwoPi)) <
               kSameRoll;
      });
  item.isOpposite = opposite == rolls.end();
  if (!item.isOpposite) {
    item.position = static_cast<std::size_t>(opposite - rolls.begin());
  }
  return item;
}

const char* ListName(eComponent component) {
  switch (component) {
    case eComponent::kAVHDRope:
      return "rope ";
    case eComponent::kSupportRope:
      return "support ropes ";
    case eComponent::kBellyPlate:
      return "plate ";
    case eComponent::kNCDAnchor:
      return "anchor ";
    default:
      return "";
  }
}

}  // namespace

std::optional<HardwareItem> ItemOf(const Hardware& hardware,
                                   eShadowingRule rule, std::size_t position) {
  switch (rule) {
    case eShadowingRule::kSurfacePoint:
      return SurfaceItem(hardware.AVHDRopes, position);
    case eShadowingRule::kLeg:
      return LegItem(hardware.AVHDRopes, position);
    case eShadowingRule::kSupportRope:
      return HardwareItem{eComponent::kSupportRope, kTable,
                          hardware.SupportRopes.SupportRopeLocations,
                          position / 2,
                          position % 2 == 0 ? ePart::kForward : ePart::kBack};
    case eShadowingRule::kBellyPlate:
      return HardwareItem{eComponent::kBellyPlate, kTable,
                          hardware.BellyPlates.BellyPlateLocations, position};
    case eShadowingRule::kNCDAnchor:
      return HardwareItem{eComponent::kNCDAnchor, kTable,
                          hardware.NCDAnchors.NCDAnchorLocations, position};
    default:
      return std::nullopt;
  }
}

const char* NameOf(ePart part) {
  switch (part) {
    case ePart::kWhole:
      return "whole";
    case ePart::kOverVessel:
      return "over the vessel";
    case ePart::kRingArc:
      return "arc of the ring";
    case ePart::kLegP1:
      return "leg P1";
    case ePart::kLegP4:
      return "leg P4";
    case ePart::kForward:
      return "forward";
    case ePart::kBack:
      return "back";
  }
  return "";
}

std::string NameOf(const HardwareItem& item) {
  std::string name = ListName(item.component) + std::to_string(item.position);
  if (item.part != ePart::kWhole) name += std::string(", ") + NameOf(item.part);
  return item.isOpposite ? name + " opposite" : name;
}

}  // namespace ZARN::DU

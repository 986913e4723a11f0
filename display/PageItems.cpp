#include "display/PageItems.hpp"

#include <limits>

#include "du/hardware/AVHDRopeShadowing.hpp"
#include "du/hardware/HardwareItem.hpp"

namespace ZARN::Display {

using DU::eShadowingRule;

PageItems::PageItems(const DU::Hardware& hardware) {
  std::unordered_map<std::string, std::uint16_t> known;
  const auto addList = [&](eShadowingRule rule, std::size_t size) {
    std::vector<std::uint16_t>& numbers = numbers_[rule];
    for (std::size_t i = 0; i < size; ++i) {
      const std::string name = DU::NameOf(*DU::ItemOf(hardware, rule, i));
      auto number = known.find(name);
      if (number == known.end() &&
          names_.size() <= std::numeric_limits<std::uint16_t>::max()) {
        number = known.emplace(name, names_.size()).first;
        names_.push_back(name);
      }
      numbers.push_back(number == known.end() ? std::uint16_t(0)
                                              : number->second);
    }
  };
  using eComponent = DU::eShadowingComponent;
  if (hardware.IsReady(eComponent::kAVHDRope)) {
    addList(eShadowingRule::kSurfacePoint,
            hardware.AVHDRopes.AVHDRopeSurfacePoints.size());
  }
  // The support ropes test them, too, even if the hold-down ropes are off.
  if (DU::HasAVHDRopes(hardware.AVHDRopes)) {
    addList(eShadowingRule::kLeg, 2 * hardware.AVHDRopes.AVHDRopeRolls.size());
  }
  if (hardware.IsReady(eComponent::kSupportRope)) {
    addList(eShadowingRule::kSupportRope,
            hardware.SupportRopes.SupportRopePositions.size());
  }
  if (hardware.IsReady(eComponent::kBellyPlate)) {
    addList(eShadowingRule::kBellyPlate,
            hardware.BellyPlates.BellyPlatePositions.size());
  }
  if (hardware.IsReady(eComponent::kNCDAnchor)) {
    addList(eShadowingRule::kNCDAnchor,
            hardware.NCDAnchors.NCDAnchorPositions.size());
  }
}

std::uint16_t PageItems::NumberOf(const DU::ShadowingTest& test) const {
  const auto numbers = numbers_.find(test.rule);
  return numbers == numbers_.end() ? std::uint16_t(0)
                                   : numbers->second[test.position];
}

}  // namespace ZARN::Display

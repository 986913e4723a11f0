#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "du/hardware/Hardware.hpp"
#include "du/hardware/ShadowingTest.hpp"

namespace ZARN::Display {

/// Numbers the ropes, plates and anchors that can block a path, for a page.
class PageItems {
 public:
  explicit PageItems(const DU::Hardware& hardware);

  /// By number; the first is empty.
  const std::vector<std::string>& Names() const { return names_; }

  /// The number of what a test of this hardware is about; 0 if it is about no
  /// item, and for items after the 65,535th.
  std::uint16_t NumberOf(const DU::ShadowingTest& test) const;

 private:
  std::vector<std::string> names_ = {""};
  /// By rule and position in the list that the rule tests.
  std::unordered_map<DU::eShadowingRule, std::vector<std::uint16_t>> numbers_;
};

}  // namespace ZARN::Display

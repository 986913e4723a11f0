#include "du/hardware/ShadowingComponent.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;

TEST(ShadowingComponents, AreNumberedFromOneInTheOrderOfTesting) {
  const std::vector<eComponent> expected = {
      eComponent::kAVHDRope,  eComponent::kSupportRope, eComponent::kBellyPlate,
      eComponent::kNCDAnchor, eComponent::kAVPipe,      eComponent::kNeckBoss};
  EXPECT_EQ(std::vector<eComponent>(kShadowingComponents.begin(),
                                    kShadowingComponents.end()),
            expected);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(expected[i]), i + 1);
  }
  EXPECT_EQ(static_cast<int>(eComponent::kNone), 0);
}

TEST(FirstComponentThat, TestsInOrderUntilOneBlocks) {
  for (const eComponent blocking : kShadowingComponents) {
    std::vector<eComponent> asked;
    const eComponent found = FirstComponentThat([&](eComponent component) {
      asked.push_back(component);
      return component == blocking;
    });
    EXPECT_EQ(found, blocking);
    EXPECT_EQ(asked, std::vector<eComponent>(
                         kShadowingComponents.begin(),
                         kShadowingComponents.begin() +
                             static_cast<std::ptrdiff_t>(blocking)));
  }
}

TEST(FirstComponentThat, IsNoneIfNoneBlocks) {
  EXPECT_EQ(FirstComponentThat([](eComponent) { return false; }),
            eComponent::kNone);
}

}  // namespace
}  // namespace ZARN::DU

#include <gtest/gtest.h>

#include "tests/du/Detector.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;
using Testing::CalculatorOf;

TEST(LastVerdict, IsNoneAtFirst) {
  EXPECT_EQ(ShadowingCalculator().LastVerdict(), eComponent::kNone);
}

TEST(LastVerdict, NamesTheComponentWhoseFlagIsSet) {
  LightPathCalculator blocked = CalculatorOf(Testing::BlockedPath());
  LightPathCalculator clear = CalculatorOf(Testing::FreePath());
  for (const eComponent component : kShadowingComponents) {
    ShadowingCalculator calculator = Testing::InRun(Testing::Only({component}));
    EXPECT_TRUE(calculator.CheckForShadowing(blocked));
    EXPECT_EQ(calculator.LastVerdict(), component);
    calculator.FindShadowing(Testing::FreePath());
    EXPECT_EQ(calculator.LastVerdict(), component);
    EXPECT_FALSE(calculator.CheckForShadowing(clear));
    EXPECT_EQ(calculator.LastVerdict(), eComponent::kNone);
  }
}

TEST(LastVerdict, IsNoneAfterBeginOfRunAlthoughShadowedIsKept) {
  ShadowingCalculator calculator = Testing::InRun(Testing::DetectorTables());
  LightPathCalculator blocked = CalculatorOf(Testing::BlockedPath());
  ASSERT_TRUE(calculator.CheckForShadowing(blocked));
  Testing::BeginOfRun(calculator, Testing::DetectorTables());
  EXPECT_TRUE(calculator.IsShadowed());
  EXPECT_EQ(calculator.LastVerdict(), eComponent::kNone);
}

}  // namespace
}  // namespace ZARN::DU

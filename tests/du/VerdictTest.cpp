#include "du/Verdict.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace ZARN::DU {
namespace {

constexpr int kVerdicts = 12;

TEST(Verdict, OfAComponentHasTheComponentsNumber) {
  EXPECT_EQ(VerdictOf(eShadowingComponent::kNone), eVerdict::kClear);
  for (const eShadowingComponent component : kShadowingComponents) {
    const eVerdict verdict = VerdictOf(component);
    EXPECT_EQ(static_cast<int>(verdict), static_cast<int>(component));
    EXPECT_TRUE(HasPath(verdict));
    EXPECT_TRUE(IsShadowed(verdict));
    EXPECT_EQ(ComponentOf(verdict), component);
    EXPECT_STREQ(NameOf(verdict), NameOf(component));
  }
}

TEST(Verdict, TellsWhetherThereIsAPathAndWhetherItIsShadowed) {
  EXPECT_TRUE(HasPath(eVerdict::kClear));
  EXPECT_FALSE(IsShadowed(eVerdict::kClear));
  for (int number = 7; number < kVerdicts; ++number) {
    const auto verdict = static_cast<eVerdict>(number);
    EXPECT_FALSE(HasPath(verdict));
    EXPECT_FALSE(IsShadowed(verdict));
    EXPECT_EQ(ComponentOf(verdict), eShadowingComponent::kNone);
  }
}

TEST(Verdict, HasAFixedNumberForFiles) {
  EXPECT_EQ(static_cast<int>(eVerdict::kTotalReflection), 7);
  EXPECT_EQ(static_cast<int>(eVerdict::kPMTNotInWater), 8);
  EXPECT_EQ(static_cast<int>(eVerdict::kEventAtPMT), 9);
  EXPECT_EQ(static_cast<int>(eVerdict::kPositionNotFinite), 10);
  EXPECT_EQ(static_cast<int>(eVerdict::kNoReflectedPath), 11);
}

TEST(Verdict, HasAUniqueName) {
  std::set<std::string> names;
  for (int number = 0; number < kVerdicts; ++number) {
    names.insert(NameOf(static_cast<eVerdict>(number)));
  }
  EXPECT_EQ(names.size(), static_cast<std::size_t>(kVerdicts));
  EXPECT_EQ(names.count(""), 0U);
}

}  // namespace
}  // namespace ZARN::DU

#include "display/MapLook.hpp"

#include <gtest/gtest.h>

namespace ZARN::Display {
namespace {

using DU::eVerdict;

TEST(MapLook, DividesSharesIntoFifths) {
  EXPECT_EQ(LookOfShare(0, 0), eMapLook::kNoPath);
  EXPECT_EQ(LookOfShare(0, 50), eMapLook::kFirstShare);
  EXPECT_EQ(LookOfShare(9, 50), eMapLook::kFirstShare);
  EXPECT_EQ(LookOfShare(10, 50), eMapLook::kSecondShare);
  EXPECT_EQ(LookOfShare(29, 50), eMapLook::kThirdShare);
  EXPECT_EQ(LookOfShare(30, 50), eMapLook::kFourthShare);
  EXPECT_EQ(LookOfShare(40, 50), eMapLook::kLastShare);
  EXPECT_EQ(LookOfShare(50, 50), eMapLook::kLastShare);
}

TEST(MapLook, ShowsOnAComparisonWhatBlocksNow) {
  EXPECT_EQ(LookOfChange(eVerdict::kClear, eVerdict::kAVPipe),
            eMapLook::kAVPipe);
  EXPECT_EQ(LookOfChange(eVerdict::kAVPipe, eVerdict::kClear),
            eMapLook::kClearNow);
  EXPECT_EQ(LookOfChange(eVerdict::kClear, eVerdict::kClear),
            eMapLook::kUnchanged);
  EXPECT_EQ(LookOfChange(eVerdict::kClear, eVerdict::kEventAtPMT),
            eMapLook::kNoPath);
  EXPECT_EQ(LookOfChange(eVerdict::kTotalReflection, eVerdict::kEventAtPMT),
            eMapLook::kUnchanged);
}

TEST(MapLook, DependsOnTheKindOfMap) {
  MapMark mark;
  mark.verdict = eVerdict::kBellyPlate;
  mark.before = eVerdict::kBellyPlate;
  mark.paths = 10;
  mark.shadowed = 10;
  MapContent content;
  content.events.resize(1);
  EXPECT_EQ(LookOf(content, mark), eMapLook::kBellyPlate);
  content.events.resize(2);
  EXPECT_EQ(LookOf(content, mark), eMapLook::kLastShare);
  content.events.resize(1);
  content.comparison.emplace();
  EXPECT_EQ(LookOf(content, mark), eMapLook::kUnchanged);
}

TEST(MapLook, HasOneColourForEachArea) {
  const Theme& theme = GetPalette().light;
  for (std::size_t i = 0; i < DU::kNumberOfComponents; ++i) {
    const Colour colour =
        ColourOf(theme, LookOf(DU::kShadowingComponents[i]), eMapShape::kArea);
    EXPECT_EQ(colour.red, theme.components[i].red);
  }
  EXPECT_NE(ColourOf(theme, eMapLook::kClear, eMapShape::kArea).red,
            ColourOf(theme, eMapLook::kClear, eMapShape::kMark).red);
}

}  // namespace
}  // namespace ZARN::Display

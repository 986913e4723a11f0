#include "display/Palette.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/display/ColourDifference.hpp"

namespace ZARN::Display {
namespace {

struct Pair {
  Triple one;
  Triple other;
  double difference;
};

// The published pairs: Sharma et al. (2005), table 1.
constexpr Pair kPairs[] = {
    {{50, 2.6772, -79.7751}, {50, 0, -82.7485}, 2.0425},
    {{50, 3.1571, -77.2803}, {50, 0, -82.7485}, 2.8615},
    {{50, 2.8361, -74.0200}, {50, 0, -82.7485}, 3.4412},
    {{50, -1.3802, -84.2814}, {50, 0, -82.7485}, 1.0000},
    {{50, -1.1848, -84.8006}, {50, 0, -82.7485}, 1.0000},
    {{50, -0.9009, -85.5211}, {50, 0, -82.7485}, 1.0000},
    {{50, 0, 0}, {50, -1, 2}, 2.3669},
    {{50, -1, 2}, {50, 0, 0}, 2.3669},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0009}, 7.1792},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0010}, 7.1792},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0011}, 7.2195},
    {{50, 2.4900, -0.0010}, {50, -2.4900, 0.0012}, 7.2195},
    {{50, -0.0010, 2.4900}, {50, 0.0009, -2.4900}, 4.8045},
    {{50, -0.0010, 2.4900}, {50, 0.0010, -2.4900}, 4.8045},
    {{50, -0.0010, 2.4900}, {50, 0.0011, -2.4900}, 4.7461},
    {{50, 2.5, 0}, {50, 0, -2.5}, 4.3065},
    {{50, 2.5, 0}, {73, 25, -18}, 27.1492},
    {{50, 2.5, 0}, {61, -5, 29}, 22.8977},
    {{50, 2.5, 0}, {56, -27, -3}, 31.9030},
    {{50, 2.5, 0}, {58, 24, 15}, 19.4535},
    {{50, 2.5, 0}, {50, 3.1736, 0.5854}, 1.0000},
    {{50, 2.5, 0}, {50, 3.2972, 0}, 1.0000},
    {{50, 2.5, 0}, {50, 1.8634, 0.5757}, 1.0000},
    {{50, 2.5, 0}, {50, 3.2592, 0.3350}, 1.0000},
    {{60.2574, -34.0099, 36.2677}, {60.4626, -34.1751, 39.4387}, 1.2644},
    {{63.0109, -31.0961, -5.8663}, {62.8187, -29.7946, -4.0864}, 1.2630},
    {{61.2901, 3.7196, -5.3901}, {61.4292, 2.2480, -4.9620}, 1.8731},
    {{35.0831, -44.1164, 3.7933}, {35.0232, -40.0716, 1.5901}, 1.8645},
    {{22.7233, 20.0904, -46.6940}, {23.0331, 14.9730, -42.5619}, 2.0373},
    {{36.4612, 47.8580, 18.3852}, {36.2715, 50.5065, 21.2231}, 1.4146},
    {{90.8027, -2.0831, 1.4410}, {91.1528, -1.6435, 0.0447}, 1.4441},
    {{90.9257, -0.5406, -0.9208}, {88.6381, -0.8985, -0.7239}, 1.5381},
    {{6.7747, -0.2908, -2.4247}, {5.8714, -0.0985, -2.2286}, 0.6377},
    {{2.0776, 0.0795, -1.1350}, {0.9033, -0.0636, -0.5514}, 0.9082},
};

TEST(ColourDifference, AgreesWithItsPublishedPairs) {
  for (const Pair& pair : kPairs) {
    SCOPED_TRACE(pair.difference);
    EXPECT_NEAR(DifferenceOf(pair.one, pair.other), pair.difference, 5e-5);
  }
}

constexpr Matrix kVisions[] = {kNormalVision, kDeuteranopia, kProtanopia,
                               kTritanopia};

double Difference(const Colour& one, const Colour& other,
                  const Matrix& vision) {
  return DifferenceOf(LabOf(one, vision), LabOf(other, vision));
}

double SmallestBetweenComponents(const Theme& theme, const Matrix& vision) {
  double smallest = 100.0;
  for (const Colour& one : theme.components) {
    for (const Colour& other : theme.components) {
      if (&one != &other) {
        smallest = std::min(smallest, Difference(one, other, vision));
      }
    }
  }
  return smallest;
}

// The smallest difference of any component to a ground, for any eyes.
double SmallestTo(const Colour& ground, const Theme& theme) {
  double smallest = 100.0;
  for (const Matrix& vision : kVisions) {
    for (const Colour& colour : theme.components) {
      smallest = std::min(smallest, Difference(colour, ground, vision));
    }
  }
  return smallest;
}

constexpr double kRounding = 0.05;

TEST(Palette, KeepsComponentsApartForAllEyes) {
  const double light[] = {28.8, 20.2, 19.6, 20.1};
  const double dark[] = {25.6, 18.3, 18.3, 17.2};
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    EXPECT_GE(SmallestBetweenComponents(GetPalette().light, kVisions[i]),
              light[i] - kRounding);
    EXPECT_GE(SmallestBetweenComponents(GetPalette().dark, kVisions[i]),
              dark[i] - kRounding);
  }
}

TEST(Palette, KeepsComponentsApartFromClearAndFromTheGround) {
  const Theme& light = GetPalette().light;
  const Theme& dark = GetPalette().dark;
  EXPECT_GE(SmallestTo(light.clear, light), 22.7 - kRounding);
  EXPECT_GE(SmallestTo(dark.clear, dark), 27.4 - kRounding);
  EXPECT_GE(SmallestTo(light.view, light), 32.0 - kRounding);
  EXPECT_GE(SmallestTo(dark.view, dark), 41.6 - kRounding);
}

TEST(Palette, HasContrastThatGraphicsAndWordsNeed) {
  for (const auto kind : {eTheme::kLight, eTheme::kDark}) {
    SCOPED_TRACE(static_cast<int>(kind));
    const Theme& theme = GetPalette().Of(kind);
    for (const Colour& colour : theme.components) {
      EXPECT_GE(ContrastOf(colour, theme.view), 3.0);
    }
    EXPECT_GE(ContrastOf(theme.noPath, theme.view), 3.0);
    EXPECT_GE(ContrastOf(theme.text, theme.view), 7.0);
    EXPECT_GE(ContrastOf(theme.secondText, theme.view), 5.6);
  }
}

TEST(Palette, OrdersTheSharesFromTheGroundOn) {
  for (const auto kind : {eTheme::kLight, eTheme::kDark}) {
    const Theme& theme = GetPalette().Of(kind);
    double before = 1.0;
    for (const Colour& colour : theme.share) {
      const double contrast = ContrastOf(colour, theme.view);
      EXPECT_GT(contrast, 1.25 * before);
      before = contrast;
    }
  }
}

TEST(Palette, NamesAndDrawsEveryComponent) {
  EXPECT_EQ(GetPalette().Of(DU::eShadowingComponent::kAVHDRope).name,
            "Hold-down ropes");
  for (const auto component : DU::kShadowingComponents) {
    const ComponentLook& look = GetPalette().Of(component);
    EXPECT_FALSE(look.name.empty());
    EXPECT_GE(look.shape.size(), 3U);
  }
  const Colour rope = GetPalette().light.Of(DU::eShadowingComponent::kAVHDRope);
  EXPECT_EQ(rope.red, 0x08);
  EXPECT_EQ(rope.green, 0x40);
  EXPECT_EQ(rope.blue, 0x6f);
}

TEST(Palette, RefusesWhatIsNoPalette) {
  EXPECT_THROW(ReadPalette("{"), std::runtime_error);
  EXPECT_THROW(ReadPalette("{}"), std::runtime_error);
  for (const char* text : {"", "#12345", "#1234567", "123456", "#12345g"}) {
    EXPECT_THROW(ReadColour(text), std::runtime_error) << text;
  }
}

}  // namespace
}  // namespace ZARN::Display

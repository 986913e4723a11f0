#include "du/hardware/Hardware.hpp"

#include <gtest/gtest.h>

#include "db/DB.hpp"
#include "tests/du/Detector.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;

Hardware Loaded(const Testing::Tables& tables) {
  const Testing::Captured messages(warn);
  tables.Load();
  Hardware hardware;
  hardware.LoadRadii(DB::Get());
  for (const eComponent component : kShadowingComponents) {
    hardware.Load(DB::Get(), component);
    hardware.SetInfoLoaded(component, true);
  }
  return hardware;
}

TEST(Hardware, HasSomethingToTestForEveryComponentWithParts) {
  const Hardware hardware = Loaded(Testing::DetectorTables());
  for (const eComponent component : kShadowingComponents) {
    EXPECT_FALSE(hardware.HasNothingToTest(component)) << NameOf(component);
  }
  EXPECT_FALSE(hardware.HasNothingToTest(eComponent::kNone));
}

TEST(Hardware, HasNothingToTestForComponentsLoadedWithoutParts) {
  Testing::Tables tables = Testing::DetectorTables();
  tables.Set("GEO_LOCATIONS", "rolls", "roll", std::vector<double>{});
  for (const char* index : {"rope_anchors", "plates", "anchors"}) {
    tables.Set("GEO_LOCATIONS", index, "x", std::vector<double>{1, 2, 3, 4});
  }
  const Hardware hardware = Loaded(tables);
  for (const eComponent component : kShadowingComponents) {
    const bool canBeEmpty =
        component != eComponent::kAVPipe && component != eComponent::kNeckBoss;
    EXPECT_EQ(hardware.HasNothingToTest(component), canBeEmpty)
        << NameOf(component);
  }
}

TEST(Hardware, ThatIsNotLoadedDoesNotCountAsEmpty) {
  const Hardware hardware;
  for (const eComponent component : kShadowingComponents) {
    EXPECT_FALSE(hardware.HasNothingToTest(component)) << NameOf(component);
  }
}

}  // namespace
}  // namespace ZARN::DU

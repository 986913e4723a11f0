#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "du/ShadowingCalculator.hpp"
#include "tests/du/CalculatorState.hpp"
#include "tests/du/Detector.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::BeginOfRun;
using Testing::DetectorTables;
using Testing::InRun;
using Testing::Tables;

TEST(LoadError, NamesTableIndexAndFieldOfWhatIsMissing) {
  Tables tables = DetectorTables();
  tables.RemoveField("SOLID", "up_rope", "r_rope");
  const ShadowingCalculator calculator = InRun(tables);
  EXPECT_EQ(calculator.GetLoadError(eShadowingComponent::kSupportRope),
            "table SOLID, index up_rope: there is no field r_rope");
}

TEST(LoadError, IsOfEachComponentOnItsOwn) {
  const ShadowingCalculator calculator = InRun(Testing::VesselTables());
  for (const auto& [component, index] :
       {std::pair(eShadowingComponent::kAVHDRope, "hold_down_ropes"),
        std::pair(eShadowingComponent::kSupportRope, "hold_up_ropes"),
        std::pair(eShadowingComponent::kBellyPlate, "belly_plate_vintar"),
        std::pair(eShadowingComponent::kNCDAnchor, "inner_av"),
        std::pair(eShadowingComponent::kAVPipe, "av_pipe-1"),
        std::pair(eShadowingComponent::kNeckBoss, "av")}) {
    EXPECT_NE(calculator.GetLoadError(component).find(index), std::string::npos)
        << calculator.GetLoadError(component);
  }
}

TEST(LoadError, IsEmptyOfAComponentThatIsLoaded) {
  ShadowingCalculator calculator;
  for (const Tables& tables : {Testing::VesselTables(), DetectorTables()}) {
    BeginOfRun(calculator, tables);
  }
  for (const eShadowingComponent component : kShadowingComponents) {
    EXPECT_EQ(calculator.GetLoadError(component), "");
  }
}

TEST(LoadError, IsEmptyBeforeTheFirstRunAndForNoComponent) {
  const ShadowingCalculator calculator;
  EXPECT_EQ(calculator.GetLoadError(eShadowingComponent::kNeckBoss), "");
  EXPECT_EQ(
      InRun(Testing::VesselTables()).GetLoadError(eShadowingComponent::kNone),
      "");
}

}  // namespace
}  // namespace ZARN::DU

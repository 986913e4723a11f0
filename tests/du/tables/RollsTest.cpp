#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/du/tables/ImplausibleInTables.hpp"

namespace ZARN::DU {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ImplausibleRolls : public ImplausibleInTables {};

TEST_F(ImplausibleRolls, RollsInRadians) {
  Rolls() = {0.0, 3.141592653589793};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: hold_down_ropes.json:9:69: "
                          "GEO_LOCATIONS/hold_down_rolls roll: the rolls look "
                          "like rad: [0, 3.141592653589793]; rolls are in "
                          "degrees"));
}

TEST_F(ImplausibleRolls, RollsConvertedTwice) {
  Rolls() = {0.0, 180.0 * 57.29577951308232};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: hold_down_ropes.json:9:69: "
                          "GEO_LOCATIONS/hold_down_rolls roll: a roll is more "
                          "than a full turn: 10313.240312354817; rolls are in "
                          "degrees, -360 to 360: were they converted twice?"));
}

TEST_F(ImplausibleRolls, RollsGivenTwice) {
  Rolls() = {0.0, 180.0, -180.0};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: hold_down_ropes.json:9:69: "
                          "GEO_LOCATIONS/hold_down_rolls roll: rolls 2 and 3 "
                          "are the same: -180; write each rope once"));
}

TEST_F(ImplausibleRolls, RollsWithoutAnOppositeOne) {
  Rolls() = {0.0, 180.0, 30.0};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: hold_down_ropes.json:9:69: "
                          "GEO_LOCATIONS/hold_down_rolls roll: no other roll "
                          "differs by 180 degrees from this one: 30; legs are "
                          "expected opposite to each other, so ropes come in "
                          "pairs"));
  Rolls() = {0.0, 180.0, 30.0, -150.0};
  EXPECT_THAT(tables_.Texts(), IsEmpty());
}

}  // namespace
}  // namespace ZARN::DU

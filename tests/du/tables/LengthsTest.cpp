#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/du/tables/MinimalTables.hpp"

namespace ZARN::DU {
namespace {

using testing::ElementsAre;
using Numbers = std::vector<double>;

class LengthsInTables : public testing::Test {
 protected:
  Testing::MinimalTables tables_;
};

TEST_F(LengthsInTables, NamesTheArrayThatDiffersFromTheOthers) {
  tables_.Field("GEO_LOCATIONS", "anchors", "y") = Numbers{0, 1800, 0};
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre("error: ncd_anchors.json:5:5: GEO_LOCATIONS/anchors y: x, y "
                  "and z have different lengths: 4, 3 and 4; write one number "
                  "of each for every point"));
}

TEST_F(LengthsInTables, NamesTheEntryIfAllArraysDiffer) {
  tables_.Field("SOLID", "av_pipe-6", "y") = Numbers{3100};
  tables_.Field("SOLID", "av_pipe-6", "z") = Numbers{};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: av_pipes.json:12:3: SOLID/av_pipe-6: x, y "
                          "and z have different lengths: 2, 1 and 0; write one "
                          "number of each for every point"));
}

TEST_F(LengthsInTables, NamesATemplateWithFewerThanSixPoints) {
  for (const char* const field : {"rope_x", "rope_y", "rope_z"}) {
    auto& numbers =
        std::get<Numbers>(tables_.Field("SOLID", "hold_down_rope", field));
    numbers.resize(4);
  }
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: hold_down_ropes.json:4:3: "
                          "SOLID/hold_down_rope: the template rope has fewer "
                          "than six points: 4; write the points P0 to P5"));
}

TEST_F(LengthsInTables, WarnsOfATemplateWithMoreThanSixPoints) {
  for (const char* const field : {"rope_x", "rope_y", "rope_z"}) {
    auto& numbers =
        std::get<Numbers>(tables_.Field("SOLID", "hold_down_rope", field));
    numbers.resize(8, 1000.0);
  }
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: hold_down_ropes.json:4:3: "
                          "SOLID/hold_down_rope: the template rope has more "
                          "than six points: 8; only P0 to P5 are used"));
}

TEST_F(LengthsInTables, NamesWhatIsEmpty) {
  tables_.Field("GEO_LOCATIONS", "hold_down_rolls", "roll") = Numbers{};
  for (const char* const field : {"x", "y", "z"}) {
    tables_.Field("GEO_LOCATIONS", "plates", field) = Numbers{};
    tables_.Field("SOLID", "av_pipe-1", field) = Numbers{};
  }
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "error: hold_down_ropes.json:9:69: GEO_LOCATIONS/hold_down_rolls "
          "roll: there are no rolls, so no ropes: []; write one roll for each "
          "rope, in degrees",
          "error: belly_plates.json:3:3: GEO_LOCATIONS/plates: there are no "
          "positions; write at least one",
          "error: av_pipes.json:2:3: SOLID/av_pipe-1: the pipe has no points; "
          "write at least one"));
}

TEST_F(LengthsInTables, NamesWhatMediaRefuse) {
  tables_.Field("OPTICS", "inner_av", "refractive_index") = 0.5;
  tables_.Field("OPTICS", "water", "wavelength") = Numbers{300, 500, 400};
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre("error: optics.json:2:55: OPTICS/inner_av refractive_index: "
                  "this is not a finite number >= 1: 0.5; write one refractive "
                  "index for each wavelength, or one number for all",
                  "error: optics.json:5:5: OPTICS/water wavelength: this is "
                  "not positive and increasing at position 3: [300, 500, 400]; "
                  "write increasing wavelengths in nm"));
}

TEST_F(LengthsInTables, NamesUnequalLengthsInAMedium) {
  tables_.Field("OPTICS", "water", "refractive_index") = Numbers{1.3, 1.2};
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre("error: optics.json:6:5: OPTICS/water refractive_index: this "
                  "has 2 values for 3 wavelengths: [1.3, 1.2]; write one "
                  "refractive index for each wavelength, or one number for "
                  "all"));
}

}  // namespace
}  // namespace ZARN::DU

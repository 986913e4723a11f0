#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/du/tables/MinimalTables.hpp"

namespace ZARN::DU {
namespace {

using testing::ElementsAre;
using Numbers = std::vector<double>;

class MissingInTables : public testing::Test {
 protected:
  Testing::MinimalTables tables_;
};

TEST_F(MissingInTables, NamesTheFieldWithATypingError) {
  tables_.Rename(tables_.Entry("SOLID", "hold_down_rope"), "r_rope", "r_rop");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: hold_down_ropes.json:4:3: "
                          "SOLID/hold_down_rope: there is no field r_rope; "
                          "found r_rop: a typo?"));
}

TEST_F(MissingInTables, TellsOnceOfATypingErrorInAReference) {
  tables_.Rename(tables_.Entry("GEO", "hold_down_ropes"), "locations",
                 "location");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: hold_down_ropes.json:2:3: "
                          "GEO/hold_down_ropes: there is no field locations; "
                          "found location: a typo?"));
}

TEST_F(MissingInTables, NamesTheOnlyOtherFieldThatMayBeMeant) {
  tables_.Rename(tables_.Entry("SOLID", "hold_down_rope"), "r_rope", "radius");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: hold_down_ropes.json:4:3: "
                          "SOLID/hold_down_rope: there is no field r_rope; "
                          "nothing reads radius: is it meant?"));
}

TEST_F(MissingInTables, SaysWhatToAddForAField) {
  tables_.Entry("SOLID", "neck_boss").fields.erase("half_height2");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: neck_boss.json:3:3: SOLID/neck_boss: there "
                          "is no field half_height2; add it, a number in mm"));
}

TEST_F(MissingInTables, NamesTheEntryWithATypingError) {
  tables_.Entry("SOLID", "av_pipe-3").index = "av_pipe_3";
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: SOLID/av_pipe-3: there is no such entry for "
                          "run 0; found av_pipe_3 at av_pipes.json:6:3: a "
                          "typo?"));
}

TEST_F(MissingInTables, NamesTheEntryInTheWrongTable) {
  tables_.Entry("GEO", "av").table = "SOLID";
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: GEO/av: there is no such entry for run 0; "
                          "found SOLID/av at neck_boss.json:2:3: the wrong "
                          "table?"));
}

TEST_F(MissingInTables, SaysWhatToAddForAnEntry) {
  tables_.Remove("SOLID", "neck_boss");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: SOLID/neck_boss: there is no such entry for "
                          "run 0; add an entry SOLID/neck_boss with the fields "
                          "half_height1 and half_height2"));
}

TEST_F(MissingInTables, SaysForWhichRunsAnEntryIs) {
  tables_.Entry("GEO", "av").runs = {1000, 1999};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: GEO/av: there is no such entry for run 0; "
                          "the entry is valid for runs 1000 to 1999: extend "
                          "its runs, or choose another run"));
}

TEST_F(MissingInTables, NamesAReferenceWithATypingError) {
  tables_.Field("GEO", "inner_av", "ncd_anchor_locations") = "anchor";
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre("error: vessel.json:8:5: GEO/inner_av ncd_anchor_locations: "
                  "table GEO_LOCATIONS has no entry of this name for run 0: "
                  "\"anchor\"; found anchors at ncd_anchors.json:3:3: a "
                  "typo?"));
}

TEST_F(MissingInTables, NamesWhatAMissingReferenceMayMean) {
  tables_.Entry("GEO", "inner_av").fields.erase("belly_plate_locations");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: vessel.json:5:3: GEO/inner_av: there is no "
                          "field belly_plate_locations; add it, a string: "
                          "nothing names GEO_LOCATIONS/plates"));
}

TEST_F(MissingInTables, NamesWhatAnUnknownReferenceMayMean) {
  tables_.Field("GEO", "hold_up_ropes", "locations") = "elsewhere";
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre("error: support_ropes.json:3:41: GEO/hold_up_ropes "
                  "locations: table GEO_LOCATIONS has no entry of this name "
                  "for run 0: \"elsewhere\"; add an entry "
                  "GEO_LOCATIONS/elsewhere with the fields x, y and z: nothing "
                  "names GEO_LOCATIONS/support_rope_feet"));
}

TEST_F(MissingInTables, TellsOnceOfAnEntryThatNamesOthers) {
  tables_.Remove("GEO", "hold_down_ropes");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: GEO/hold_down_ropes: there is no such entry "
                          "for run 0; add an entry GEO/hold_down_ropes with "
                          "the fields solid_definition and locations: nothing "
                          "names SOLID/hold_down_rope and "
                          "GEO_LOCATIONS/hold_down_rolls"));
}

TEST_F(MissingInTables, TellsOnceWhatTwoComponentsRead) {
  tables_.Remove("SOLID", "belly_plate_vintar");
  const auto findings = tables_.Findings();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].component, eShadowingComponent::kSupportRope);
  EXPECT_EQ(findings[0].index, "belly_plate_vintar");
}

TEST_F(MissingInTables, TellsOnceOfAMissingVessel) {
  tables_.Remove("SOLID", "acrylic_vessel_outer");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: SOLID/acrylic_vessel_outer: there is no such "
                          "entry for run 0; add an entry "
                          "SOLID/acrylic_vessel_outer with the fields r_sphere "
                          "and r_neck"));
}

TEST_F(MissingInTables, SaysThatAnotherPassHasTheField) {
  TableEntry newer = tables_.Entry("GEO", "av");
  newer.fields = {};
  newer.pass = 1;
  newer.source = "newer.json";
  newer.place = {1, 2};
  tables_.Add(newer);
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: newer.json:1:2: GEO/av: there is no field "
                          "neck_boss_z; the entry at neck_boss.json:2:3 has "
                          "it, but only one entry counts: write all fields "
                          "into that"));
}

TEST_F(MissingInTables, NamesAValueOfTheWrongType) {
  tables_.Field("SOLID", "hold_down_rope", "r_rope") = "10";
  tables_.Field("GEO_LOCATIONS", "hold_down_rolls", "roll") = 180.0;
  tables_.Field("GEO", "av", "neck_boss_z") = Numbers{3000.0};
  tables_.Field("GEO", "inner_av", "belly_plate_locations") = 7.0;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "error: hold_down_ropes.json:5:5: SOLID/hold_down_rope r_rope: this "
          "is not a number: \"10\"; write a number, without quotation marks",
          "error: hold_down_ropes.json:9:69: GEO_LOCATIONS/hold_down_rolls "
          "roll: this is not an array of numbers: 180; write the number in "
          "brackets",
          "error: vessel.json:6:5: GEO/inner_av belly_plate_locations: this is "
          "not a string: 7; write the index of an entry in quotation marks: "
          "nothing names GEO_LOCATIONS/plates",
          "error: neck_boss.json:2:46: GEO/av neck_boss_z: this is not a "
          "number: [3000]; write one number, without brackets"));
}

TEST_F(MissingInTables, MissesNoMediaWhereThereAreNone) {
  for (const char* const medium : {"inner_av", "acrylic", "water"}) {
    tables_.Remove("OPTICS", medium);
  }
  EXPECT_THAT(tables_.Texts(), ElementsAre());
}

TEST_F(MissingInTables, MissesAMediumBesideOthers) {
  tables_.Remove("OPTICS", "acrylic");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: OPTICS/acrylic: there is no such entry for "
                          "run 0; add an entry OPTICS/acrylic with the field "
                          "refractive_index"));
}

TEST_F(MissingInTables, MissesWavelengthsOnlyBesideAnArray) {
  tables_.Rename(tables_.Entry("OPTICS", "water"), "wavelength", "wavelenght");
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: optics.json:4:3: OPTICS/water: there is no "
                          "field wavelength; found wavelenght: a typo?"));
}

TEST_F(MissingInTables, ShowsThePlaceInADatabase) {
  TableEntry& entry = tables_.Entry("GEO", "av");
  entry.source = "sqlite:tables.db";
  entry.place = {};
  entry.places.clear();
  entry.pass = 2;
  entry.runs = {-5, 1999};
  entry.fields.clear();
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("error: sqlite:tables.db, pass 2, runs -5 to 1999: "
                          "GEO/av: there is no field neck_boss_z; add it, a "
                          "number in mm"));
}

}  // namespace
}  // namespace ZARN::DU

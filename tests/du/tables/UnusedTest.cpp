#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/du/tables/MinimalTables.hpp"

namespace ZARN::DU {
namespace {

using testing::ElementsAre;
using Numbers = std::vector<double>;

class UnusedInTables : public testing::Test {
 protected:
  void Add(const std::string& table, const std::string& index,
           const std::string& field, TableField value = 1.0) {
    TableEntry entry;
    entry.table = table;
    entry.index = index;
    entry.fields[field] = std::move(value);
    tables_.Add(std::move(entry));
  }

  Testing::MinimalTables tables_;
};

TEST_F(UnusedInTables, NotesFields) {
  tables_.Field("SOLID", "neck_boss", "colour") = "red";
  tables_.Field("SOLID", "neck_boss", "half_heigth1") = 3.0;
  tables_.Field("SOLID", "av_pipe-2", "r_max") = 25.0;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "note: av_pipes.json:4:3: SOLID/av_pipe-2 r_max: nothing reads this "
          "field: 25; remove it",
          "note: neck_boss.json:3:3: SOLID/neck_boss colour: nothing reads "
          "this field: \"red\"; remove it",
          "note: neck_boss.json:3:3: SOLID/neck_boss half_heigth1: nothing "
          "reads this field: 3; is half_height1 meant?"));
}

TEST_F(UnusedInTables, NotesWavelengthsOfOneRefractiveIndex) {
  tables_.Field("OPTICS", "acrylic", "wavelength") = Numbers{400};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("note: optics.json:3:3: OPTICS/acrylic wavelength: "
                          "nothing reads this field: [400]; refractive_index "
                          "is one number, for all wavelengths"));
}

TEST_F(UnusedInTables, NotesEntries) {
  Add("GEO_LOCATIONS", "more_plates", "x", Numbers{});
  Add("OPTIC", "oil", "refractive_index");
  Add("PMT", "positions", "x", Numbers{});
  Add("RUNS", "first", "number");
  Add("SOLID", "neck_bos", "half_height1");
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "note: pass 0, all runs: GEO_LOCATIONS/more_plates: nothing reads "
          "this entry; remove it, or name it in GEO",
          "note: pass 0, all runs: OPTIC/oil: nothing reads this entry; is "
          "table OPTICS meant?",
          "note: pass 0, all runs: PMT/positions: nothing reads this entry; "
          "the commands read PMTs from --pmts",
          "note: pass 0, all runs: RUNS/first: nothing reads this entry; the "
          "tables are SOLID, GEO, GEO_LOCATIONS and OPTICS",
          "note: pass 0, all runs: SOLID/neck_bos: nothing reads this entry; "
          "is neck_boss meant?"));
}

}  // namespace
}  // namespace ZARN::DU

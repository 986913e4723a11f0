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
using testing::StartsWith;

class ImplausiblePlaces : public ImplausibleInTables {};

TEST_F(ImplausiblePlaces, PositionsInMetres) {
  for (const char* const field : {"x", "y", "z"}) {
    InMetres(Anchors(field));
    InMetres(Feet(field));
    InMetres(Plates(field));
    InMetres(Array("SOLID", "av_pipe-2", field));
    InMetres(Rope(std::string("rope_") + field));
  }
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "warning: hold_down_ropes.json:4:3: SOLID/hold_down_rope: point P1 "
          "of the rope looks like m beside a vessel of 3050 mm: (1.86, 2.48, "
          "0); lengths are in mm",
          "warning: support_ropes.json:5:3: GEO_LOCATIONS/support_rope_feet: "
          "position 1, and 1 more: the position looks like m beside a vessel "
          "of 3050 mm: (3.1, 0, 0); lengths are in mm",
          "warning: belly_plates.json:3:3: GEO_LOCATIONS/plates: position 1, "
          "and 1 more: the position looks like m beside a vessel of 3050 mm: "
          "(3.05, 0, 0); lengths are in mm",
          "warning: ncd_anchors.json:3:3: GEO_LOCATIONS/anchors: position 1, "
          "and 3 more: the position looks like m beside a vessel of 3050 mm: "
          "(1.8, 0, -2.4); lengths are in mm",
          "note: av_pipes.json:4:3: SOLID/av_pipe-2: position 1, and 1 more: "
          "the position looks like m beside a vessel of 3050 mm: (-0.1, 3.1, "
          "2); lengths are in mm"));
}

TEST_F(ImplausiblePlaces, PositionsInsideTheVessel) {
  Anchors("z")[2] = -2000.0;  // 2691 from the centre
  Feet("x")[1] = -3000.0;
  Plates("x")[0] = 2900.0;
  Array("SOLID", "av_pipe-2", "y")[1] = 900.0;
  Rope("rope_x")[4] = -1000.0;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "warning: hold_down_ropes.json:4:3: SOLID/hold_down_rope: point P4 "
          "of the rope is inside the vessel of 3050 mm, 2674 mm from the axis: "
          "(-1000, 2480, 0); P1 and P4 are just outside the wall, with z near "
          "0",
          "warning: support_ropes.json:5:3: GEO_LOCATIONS/support_rope_feet: "
          "position 2: the position is inside the vessel of 3050 mm, 3000 mm "
          "from the axis: (-3000, 0, 0); support ropes stand just outside the "
          "wall, with z near 0",
          "warning: belly_plates.json:3:3: GEO_LOCATIONS/plates: position 1: "
          "the position is inside the vessel of 3050 mm, 2900 mm from the "
          "centre: (2900, 0, 0); plates are on the outer surface, with z = 0",
          "warning: ncd_anchors.json:3:3: GEO_LOCATIONS/anchors: position 3: "
          "the position is inside the vessel of 3050 mm, 2690.7 mm from the "
          "centre: (-1800, 0, -2000); anchors are at the wall",
          "note: av_pipes.json:4:3: SOLID/av_pipe-2: position 2: the position "
          "is inside the vessel of 3050 mm, 2195.4 mm from the centre: (-100, "
          "900, -2000); pipes run outside the vessel; no verdict depends on "
          "it"));
}

TEST_F(ImplausiblePlaces, PositionsFarFromTheVessel) {
  Anchors("z")[2] = -24000.0;
  Feet("x")[1] = -31000.0;
  Plates("x")[0] = 30500.0;
  Array("SOLID", "av_pipe-2", "y")[1] = 31000.0;
  Rope("rope_x")[1] = 18600.0;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          StartsWith("warning: hold_down_ropes.json:4:3: SOLID/hold_down_rope: "
                     "point P1 of the rope is far from the vessel of 3050 mm, "
                     "18764.6 mm from the axis: "),
          StartsWith("warning: support_ropes.json:5:3: "
                     "GEO_LOCATIONS/support_rope_feet: position 2: the "
                     "position is far from the vessel of 3050 mm, 31000 mm "
                     "from the axis: "),
          StartsWith("warning: belly_plates.json:3:3: GEO_LOCATIONS/plates: "
                     "position 1: the position is far from the vessel of 3050 "
                     "mm, 30500 mm from the centre: "),
          StartsWith("warning: ncd_anchors.json:3:3: GEO_LOCATIONS/anchors: "
                     "position 3: the position is far from the vessel of 3050 "
                     "mm, 24067.4 mm from the centre: "),
          StartsWith("note: av_pipes.json:4:3: SOLID/av_pipe-2: position 2: "
                     "the position is far from the vessel of 3050 mm, 31064.6 "
                     "mm from the centre: ")));
}

TEST_F(ImplausiblePlaces, AnchorsThatTouchTheWallFromInsideArePlausible) {
  Anchors("x")[0] = 1764.0;  // 2940 from the centre: half_z from the wall
  Anchors("z")[0] = -2352.0;
  EXPECT_THAT(tables_.Texts(), IsEmpty());
}

TEST_F(ImplausiblePlaces, RopesTooHighToBlockAnything) {
  Feet("z")[1] = 161.0;  // r_rope 10 plus tolerance 150
  Rope("rope_z")[1] = -160.0;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "warning: hold_down_ropes.json:4:3: SOLID/hold_down_rope: "
          "point P1 of the rope has a leg that "
          "blocks nothing: |z| is not below r_rope plus the default tolerance, "
          "160 mm: (1860, 2480, -160); P1 and P4 are just outside the "
          "wall, with z near 0",
          "warning: support_ropes.json:5:3: "
          "GEO_LOCATIONS/support_rope_feet: position 2: the rope "
          "blocks nothing: |z| is not below r_rope plus the default tolerance, "
          "160 mm: (-3100, 0, 161); support ropes stand just outside "
          "the wall, with z near 0"));
  Feet("z")[1] = 159.0;
  Rope("rope_z")[1] = 159.0;
  EXPECT_THAT(tables_.Texts(), IsEmpty());
}

TEST_F(ImplausiblePlaces, RopesBeyondTheSphereOnWhichTheyEnd) {
  Number("SOLID", "acrylic_vessel_inner", "r_sphere") = 8400.0;
  Number("SOLID", "acrylic_vessel_outer", "r_sphere") = 8450.0;
  Feet("x") = {8600.0, -8600.0};
  const auto texts = tables_.Texts();
  EXPECT_THAT(texts, testing::Contains(testing::HasSubstr(
                         "the rope blocks nothing: it is not nearer to the "
                         "axis than 8500 mm: (8600, 0, 0)")));
}

TEST_F(ImplausiblePlaces, PlatesAwayFromTheEquator) {
  Plates("x")[1] = -3000.0;
  Plates("z")[1] = 300.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: belly_plates.json:3:3: "
                          "GEO_LOCATIONS/plates: position 2: z is not within "
                          "octahedron_half_height, 300 mm: (-3000, 0, 300); "
                          "plates are on the outer surface, with z = 0"));
}

TEST_F(ImplausiblePlaces, RingOutsideTheVessel) {
  Rope("rope_z")[2] = 2900.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: hold_down_ropes.json:4:3: "
                          "SOLID/hold_down_rope: point P2 of the rope is "
                          "outside the vessel of 3050 mm, 3265 mm from the "
                          "centre: (900, 1200, 2900); P2 and P3 are less than "
                          "the outer radius from the centre"));
}

TEST_F(ImplausiblePlaces, EndsOnOppositeSidesOfTheAxis) {
  Rope("rope_y")[4] = -2480.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: hold_down_ropes.json:4:3: "
                          "SOLID/hold_down_rope: point P4 of the rope is on "
                          "the other side of the axis than P1, 180 degrees "
                          "from it: (-1860, -2480, 0); the rope passes the "
                          "neck half way between them"));
}

TEST_F(ImplausiblePlaces, PositionsGivenTwice) {
  for (const char* const field : {"x", "y", "z"}) {
    Anchors(field).push_back(Anchors(field)[1]);
    Anchors(field).push_back(Anchors(field)[1]);
    Feet(field).push_back(Feet(field)[0]);
    Plates(field).push_back(Plates(field)[0]);
  }
  Anchors("x")[5] += 0.9;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(
          "warning: support_ropes.json:5:3: GEO_LOCATIONS/support_rope_feet: "
          "positions 1 and 3 are the same: (3100, 0, 0); write each once",
          "warning: belly_plates.json:3:3: GEO_LOCATIONS/plates: positions 1 "
          "and 3 are the same: (3050, 0, 0); write each once",
          "warning: ncd_anchors.json:3:3: GEO_LOCATIONS/anchors: positions 2 "
          "and 5 are the same, and 1 more: (0, 1800, -2400); write each "
          "once"));
}

}  // namespace
}  // namespace ZARN::DU

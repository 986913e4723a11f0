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

class ImplausibleSizes : public ImplausibleInTables {};

TEST_F(ImplausibleSizes, RadiusOfTheVesselThatIsNotAboveZero) {
  RemoveMedia();
  for (const double radius : {0.0, -3000.0}) {
    Number("SOLID", "acrylic_vessel_inner", "r_sphere") = radius;
    EXPECT_THAT(tables_.Texts(),
                ElementsAre("warning: vessel.json:2:66: "
                            "SOLID/acrylic_vessel_inner r_sphere: the radius "
                            "is not a finite number > 0: " +
                            std::to_string(static_cast<int>(radius)) +
                            "; write the radius in mm"));
  }
}

TEST_F(ImplausibleSizes, RadiiOfTheVesselOutOfOrder) {
  RemoveMedia();
  Number("SOLID", "acrylic_vessel_outer", "r_sphere") = 2950.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: vessel.json:4:15: "
                          "SOLID/acrylic_vessel_outer r_sphere: the outer "
                          "radius is not larger than the inner radius, 3000: "
                          "2950; the wall is between them"));
}

TEST_F(ImplausibleSizes, WallTooThickIsToldOnce) {
  Number("SOLID", "acrylic_vessel_inner", "r_sphere") = 300.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: vessel.json:4:15: "
                          "SOLID/acrylic_vessel_outer r_sphere: the wall is "
                          "too thick: the inner radius is 300: 3050; write "
                          "both radii in mm"));
}

TEST_F(ImplausibleSizes, RadiiThatNoLightPathAcceptsAreErrorsBesideMedia) {
  Number("SOLID", "acrylic_vessel_outer", "r_sphere") = 3000.0;
  EXPECT_THAT(tables_.Texts(), ElementsAre(StartsWith("error: vessel.json:4")));
  Number("SOLID", "acrylic_vessel_outer", "r_sphere") = -3050.0;
  EXPECT_THAT(tables_.Texts(), ElementsAre(StartsWith("error: vessel.json:4")));
}

TEST_F(ImplausibleSizes, VesselInMetresIsToldOnceForAllLengths) {
  Number("SOLID", "acrylic_vessel_inner", "r_sphere") = 3.0;
  Number("SOLID", "acrylic_vessel_outer", "r_sphere") = 3.05;
  Number("SOLID", "acrylic_vessel_outer", "r_neck") = 0.4;
  Number("SOLID", "hold_down_rope", "r_rope") = 0.01;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre("warning: vessel.json:2:66: SOLID/acrylic_vessel_inner "
                  "r_sphere: the radius looks like m: 3; all lengths are in "
                  "mm: 3000?",
                  "warning: vessel.json:4:15: SOLID/acrylic_vessel_outer "
                  "r_sphere: the radius looks like m: 3.05; all lengths are in "
                  "mm: 3050?"));
}

TEST_F(ImplausibleSizes, NeckWiderThanTheVesselOrInMetres) {
  Number("SOLID", "acrylic_vessel_outer", "r_neck") = 4000.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: vessel.json:4:33: "
                          "SOLID/acrylic_vessel_outer r_neck: the neck is not "
                          "narrower than the vessel, 3000: 4000; write the "
                          "radius of the neck in mm"));
  Number("SOLID", "acrylic_vessel_outer", "r_neck") = 0.4;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: vessel.json:4:33: "
                          "SOLID/acrylic_vessel_outer r_neck: the length looks "
                          "like m: 0.4; lengths are in mm: 400?"));
}

struct Size {
  const char* name;
  const char* table;
  const char* index;
  const char* field;
  double inMetres;
  double tooLarge;
  const char* severity;
};

class SizeInTables : public testing::TestWithParam<Size> {
 protected:
  std::vector<std::string> TextsWith(double value) {
    const Size& size = GetParam();
    Testing::MinimalTables tables;
    tables.Field(size.table, size.index, size.field) = value;
    return tables.Texts();
  }
  static std::string Problem(const std::string& problem) {
    const Size& size = GetParam();
    return std::string(size.table) + "/" + size.index + " " + size.field +
           ": " + problem;
  }
};

TEST_P(SizeInTables, IsNamedIfItIsNotPlausible) {
  using testing::AllOf;
  using testing::HasSubstr;
  const Size& size = GetParam();
  const std::string severity = std::string(size.severity) + ": ";
  const auto finding = [&](const std::string& problem) {
    return ElementsAre(
        AllOf(StartsWith(severity), HasSubstr(Problem(problem))));
  };
  EXPECT_THAT(TextsWith(0.0), finding("the length is zero: 0;"));
  EXPECT_THAT(TextsWith(-7.0), finding("the length is negative: -7;"));
  EXPECT_THAT(TextsWith(size.inMetres), finding("the length looks like m: "));
  EXPECT_THAT(TextsWith(size.tooLarge),
              finding("the length is too large for a vessel of 3050 mm: "));
}

constexpr const char* kWarning = "warning";
constexpr const char* kNote = "note";

INSTANTIATE_TEST_SUITE_P(
    Sizes, SizeInTables,
    testing::Values(
        Size{"HoldDownRope", "SOLID", "hold_down_rope", "r_rope", 0.01, 10000,
             kWarning},
        Size{"SupportRope", "SOLID", "support_rope", "r_rope", 0.01, 10000,
             kWarning},
        Size{"SupportRopeLength", "SOLID", "support_rope", "z_rope", 3.9,
             3900000, kNote},
        Size{"Plate", "SOLID", "belly_plate_vintar", "octahedron_half_height",
             0.3, 300000, kWarning},
        Size{"Anchor", "SOLID", "anchor", "half_z", 0.06, 60000, kWarning},
        Size{"AnchorRadius", "SOLID", "anchor", "r_max", 0.04, 40000, kNote},
        Size{"Pipe", "SOLID", "av_pipe-labs", "r_max", 0.025, 25000, kNote}),
    [](const auto& size) { return std::string(size.param.name); });

TEST_F(ImplausibleSizes, NumbersThatAreNotFinite) {
  Anchors("y")[1] = std::numeric_limits<double>::quiet_NaN();
  Number("SOLID", "neck_boss", "half_height1") =
      std::numeric_limits<double>::infinity();
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre("warning: ncd_anchors.json:5:5: GEO_LOCATIONS/anchors y: a "
                  "value is not finite: [0, nan, 0, -1800]; write finite "
                  "numbers in mm",
                  StartsWith("warning: neck_boss.json:3:55: SOLID/neck_boss "
                             "half_height1: a value is not finite: inf;")));
}

TEST_F(ImplausibleSizes, BossThatBlocksNothing) {
  Number("GEO", "av", "neck_boss_z") = 3100.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: neck_boss.json:2:46: GEO/av neck_boss_z: "
                          "the boss blocks nothing: its base, half_height1 + "
                          "half_height2 below, is above the inner surface, "
                          "3000: 3100; write the height of the boss in mm"));
}

TEST_F(ImplausibleSizes, BossFarBelowTheTopOrInMetres) {
  Number("GEO", "av", "neck_boss_z") = -3000.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: neck_boss.json:2:46: GEO/av neck_boss_z: "
                          "the boss is far below the top of the vessel, 3000: "
                          "its base, half_height1 + half_height2 below, is at "
                          "-3100: -3000; write the height of the boss in mm"));
  Number("GEO", "av", "neck_boss_z") = 3.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: neck_boss.json:2:46: GEO/av neck_boss_z: "
                          "the height looks like m beside a vessel of 3050 mm: "
                          "3; lengths are in mm: 3000?"));
}

TEST_F(ImplausibleSizes, HeightsOfTheBoss) {
  Number("SOLID", "neck_boss", "half_height2") = 0.0;
  EXPECT_THAT(tables_.Texts(), IsEmpty());  // a boss of one ring
  Number("SOLID", "neck_boss", "half_height2") = -40.0;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: neck_boss.json:3:75: SOLID/neck_boss "
                          "half_height2: the length is negative: -40; write a "
                          "length in mm, > 0"));
  Number("SOLID", "neck_boss", "half_height2") = 0.04;
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: neck_boss.json:3:75: SOLID/neck_boss "
                          "half_height2: the length looks like m: 0.04; "
                          "lengths are in mm: 40?"));
}

TEST_F(ImplausibleSizes, RefractiveIndicesOfNoMaterial) {
  Number("OPTICS", "acrylic", "refractive_index") = 149.0;
  Array("OPTICS", "water", "refractive_index")[1] = 13.44;
  EXPECT_THAT(
      tables_.Texts(),
      ElementsAre(StartsWith("warning: optics.json:3:54: OPTICS/acrylic "
                             "refractive_index: no such material has a "
                             "refractive index above 3: 149;"),
                  StartsWith("warning: optics.json:6:5: OPTICS/water "
                             "refractive_index: no such material has a "
                             "refractive index above 3: 13.44;")));
}

TEST_F(ImplausibleSizes, WavelengthsInAnotherUnit) {
  InMetres(Array("OPTICS", "water", "wavelength"));
  EXPECT_THAT(tables_.Texts(),
              ElementsAre("warning: optics.json:5:5: OPTICS/water wavelength: "
                          "these do not look like nm: [0.3, 0.4, 0.5]; write "
                          "wavelengths in nm: visible light has 400 to 700"));
  Array("OPTICS", "water", "wavelength") = {300000, 400000, 500000};
  EXPECT_THAT(tables_.Texts(),
              ElementsAre(StartsWith("warning: optics.json:5:5")));
}

}  // namespace
}  // namespace ZARN::DU

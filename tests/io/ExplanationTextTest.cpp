#include "io/ExplanationText.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "du/ShadowingCalculator.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Paths.hpp"
#include "tests/lightpath/Vessels.hpp"

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const DU::ShadowingCalculator& Detector() {
  static const DU::ShadowingCalculator detector = Testing::InRun(Testing::Only(
      {eShadowingComponent::kBellyPlate, eShadowingComponent::kNCDAnchor,
       eShadowingComponent::kAVPipe}));
  return detector;
}

std::string TextOf(const DU::LightPath& path) {
  return ExplanationText(Testing::CalculatorOf(path), Detector().Explain(path));
}

nlohmann::json JsonOf(const DU::LightPath& path) {
  return nlohmann::json::parse(
      ExplanationJson(Testing::CalculatorOf(path), Detector().Explain(path)));
}

TEST(ExplanationText, TellsAboutEveryComponentInItsOrder) {
  EXPECT_EQ(
      TextOf(Testing::OneCrossing({0, 5860, 800})),
      "path: AV->Water\n"
      "  start: (0, 0, 0)\n"
      "  end: (0, 0, 0)\n"
      "  initial: (0, 0, 0)\n"
      "  final: (1, 0, 0)\n"
      "  av1: (0, 5860, 800)\n"
      "segment 1, in water: from (0, 5860, 800) in direction (1, 0, 0)\n"
      "AVHDRope: off, its tables are missing\n"
      "SupportRope: off, its tables are missing\n"
      "BellyPlate: clear\n"
      "  segment 1: the crossing is 800 mm above or below z = 0, outside "
      "the plates' band of 750 mm: clear\n"
      "NCDAnchor: clear\n"
      "  segment 1: nearest anchor 702.566723 mm from the crossing, limit "
      "210 mm (anchor 0): clear\n"
      "AVPipe: blocks\n"
      "  segment 1: azimuth 90 degrees, band from 80 degrees to 100 "
      "degrees: blocks\n"
      "NeckBoss: off, its tables are missing\n"
      "verdict: shadowed by AVPipe, the first in the order of tests that "
      "blocks\n");
}

TEST(ExplanationText, TellsThatAComponentDoesNotTestAPath) {
  const std::string text =
      TextOf(Testing::InWater({0, 7000, 0}, {0, 8000, 0}, {0, 1, 0}));
  EXPECT_THAT(text, HasSubstr("AVPipe: does not test paths of this type\n"));
  EXPECT_THAT(text, HasSubstr("segment 2, in water: from (0, 8000, 0)"));
  EXPECT_THAT(text, HasSubstr("verdict: not shadowed\n"));
  const std::string unknown = TextOf(Testing::AllAt(Testing::kUnnamedType, {}));
  EXPECT_THAT(unknown, StartsWith("path: unknown type\n"));
  EXPECT_THAT(unknown, HasSubstr("\n  av4: (0, 0, 0)\n"));
}

TEST(ExplanationText, HasLengthsTimeAndAngleOfAPathInARun) {
  DU::LightPathCalculator light =
      Testing::CalculatorFor({5800, 5860, {1.5, 1.49, 1.33}});
  light.CalcByPosition({0, 0, 0}, {0, 8500, 0});
  const auto explanation = Detector().Explain(light.GetLightPath());
  EXPECT_THAT(ExplanationText(light, explanation),
              HasSubstr("  length: 5800 mm inside the vessel, 60 mm in the "
                        "wall, 2640 mm in water\n  time of flight: "));
  const auto json = nlohmann::json::parse(ExplanationJson(light, explanation));
  EXPECT_EQ(json["path"]["length_inner_av"],
            light.GetLength(DU::eMedium::kInnerAV));
  EXPECT_EQ(json["path"]["length_acrylic"],
            light.GetLength(DU::eMedium::kAcrylic));
  EXPECT_EQ(json["path"]["length_water"], light.GetLength(DU::eMedium::kWater));
  EXPECT_EQ(json["path"]["time_of_flight"], light.GetTimeOfFlight());
  EXPECT_EQ(json["path"]["incidence_angle"], light.GetIncidenceAngle());
}

TEST(ExplanationJson, HasTheNumbersOfTheExplanation) {
  const DU::LightPath path = Testing::OneCrossing({1, 5860, 100.1});
  const auto json = JsonOf(path);
  EXPECT_EQ(json["path"]["type"], "AV->Water");
  EXPECT_EQ(json["path"]["av1"], nlohmann::json({1.0, 5860.0, 100.1}));
  EXPECT_FALSE(json["path"].contains("length_water")) << "no run";
  EXPECT_EQ(json["segments"].size(), 1U);
  EXPECT_EQ(json["segments"][0]["direction"], nlohmann::json({1.0, 0.0, 0.0}));
  EXPECT_EQ(json["by"], "BellyPlate");

  const auto& anchor = json["components"][3];
  const auto explained =
      Detector().Explain(path, eShadowingComponent::kNCDAnchor);
  EXPECT_EQ(anchor["component"], "NCDAnchor");
  EXPECT_EQ(anchor["state"], "on");
  EXPECT_EQ(anchor["blocks"], true);
  const auto& finding = anchor["findings"][0];
  EXPECT_EQ(finding["segments"], nlohmann::json({1}));
  EXPECT_EQ(finding["rule"], "ncd_anchor");
  EXPECT_EQ(finding["quantity"], explained.findings[0].test.quantity);
  EXPECT_EQ(finding["limit"], 210.0);
  EXPECT_EQ(finding["unit"], "mm");
  EXPECT_EQ(finding["blocks"], true);
  EXPECT_EQ(finding["item"], nlohmann::json({{"name", "anchor 0"},
                                             {"component", "NCDAnchor"},
                                             {"table", "GEO_LOCATIONS"},
                                             {"index", "anchors"},
                                             {"position", 0},
                                             {"part", "whole"},
                                             {"is_opposite", false}}));
  EXPECT_EQ(json["components"][4]["findings"][0]["lower_limit"], 80.0);
  EXPECT_EQ(json["components"][4]["findings"][0]["item"], nullptr);
  EXPECT_EQ(json["components"][5]["state"], "off");
}

TEST(ExplanationJson, HasNullForWhatIsNotANumberOrNotThere) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto json = JsonOf(Testing::OneCrossing({nan, 0, 6000}));
  EXPECT_EQ(json["path"]["av1"][0], nullptr);
  EXPECT_EQ(json["components"][3]["findings"][0]["quantity"], nullptr);
  const auto unknown = JsonOf(Testing::AllAt(Testing::kUnnamedType, {}));
  EXPECT_EQ(unknown["path"]["type"], nullptr);
  EXPECT_EQ(unknown["by"], nullptr);
}

TEST(ExplanationText, SaysWhyThereIsNoPath) {
  EXPECT_EQ(NoPathText(DU::eVerdict::kPMTNotInWater),
            "no light path: PMT not in the water\n");
  EXPECT_EQ(nlohmann::json::parse(NoPathJson(DU::eVerdict::kTotalReflection)),
            nlohmann::json::parse(
                R"({"path": null, "no_path": "total reflection"})"));
}

}  // namespace
}  // namespace ZARN::IO

#include "io/VerdictText.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ZARN::IO {
namespace {

using DU::eShadowingComponent;
using DU::eVerdict;

const std::string kLong(100, 'p');
const std::vector<NamedPosition> kPMTs = {
    {"1", "1", {0, 0, 8300}}, {kLong, kLong, {0, 0, 8300}}, {"", "", {}}};

std::string RowOf(const VerdictText& rows, const std::string& event,
                  std::size_t pmt, DU::eLightPathType type, eVerdict verdict) {
  const DU::LightPathCalculator path;
  const NamedPosition position = {event, event, {1, 2, 3}};
  PieceText text;
  rows.AppendRow(text, VerdictText::BeginOf(position), pmt, type,
                 {position.position, kPMTs[pmt].position, verdict, path});
  return std::string(text.Text());
}

TEST(VerdictText, WritesWhetherAPathIsShadowedAndByWhat) {
  std::string text = "7,";
  AppendVerdict(text, eShadowingComponent::kBellyPlate);
  EXPECT_EQ(text, "7,1,BellyPlate");
  text.clear();
  AppendVerdict(text, eShadowingComponent::kNone);
  EXPECT_EQ(text, "0,");
}

TEST(VerdictText, WritesTheTypeOfThePathOrNoPath) {
  const VerdictText rows(kPMTs, {});
  EXPECT_EQ(rows.Header(), "event,pmt,type,shadowed,by\n");
  EXPECT_EQ(RowOf(rows, "e", 0, DU::kAVToWater, eVerdict::kAVPipe),
            "e,1,AV->Water,1,AVPipe\n");
  EXPECT_EQ(RowOf(rows, "e", 0, DU::kWater, eVerdict::kClear),
            "e,1,Water,0,\n");
  for (const auto type : {DU::kUninitialised, DU::kWater}) {
    EXPECT_EQ(RowOf(rows, "e", 0, type, eVerdict::kTotalReflection),
              "e,1,,,no path\n");
  }
}

TEST(VerdictText, WritesNamesOfAnyLength) {
  const VerdictText rows(kPMTs, {});
  const std::string event(70, 'e');
  EXPECT_EQ(
      RowOf(rows, event, 1, DU::kWaterThroughInnerAV, eVerdict::kSupportRope),
      event + "," + kLong +
          ",Water->AV->Scint/InnerAV->AV->Water,1,SupportRope\n");
  EXPECT_EQ(RowOf(rows, "", 2, DU::kWater, eVerdict::kClear), ",,Water,0,\n");
}

TEST(VerdictText, WritesMoreColumnsInTheirOrder) {
  const VerdictText rows(kPMTs,
                         {FindPairColumn("code"), FindPairColumn("time"),
                          FindPairColumn("event_z"), FindPairColumn("pmt_z")});
  EXPECT_EQ(rows.Header(),
            "event,pmt,type,shadowed,by,code,time,event_z,pmt_z\n");
  EXPECT_EQ(
      RowOf(rows, "e", 0, DU::kUninitialised, eVerdict::kPositionNotFinite),
      "e,1,,,no path,10,,3,8300\n");
}

}  // namespace
}  // namespace ZARN::IO

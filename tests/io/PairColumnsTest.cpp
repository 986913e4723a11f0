#include "io/PairColumns.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "io/PathDetails.hpp"

namespace ZARN::IO {
namespace {

const TVector3 kEvent(0, 0, 6000);
const TVector3 kPMT(0, 0, 8300);

DU::LightPathCalculator PathInWater() {
  DU::LightPathCalculator path;
  path.SetLightPathType(DU::kWater);
  path.SetStartPos(kEvent);
  path.SetEndPos(kPMT);
  path.SetInitialDirection({0, 0, 1});
  path.SetFinalDirection({0, 0, 1});
  return path;
}

TEST(PairColumns, GivesWhatTheCalculatorKnowsOfThePath) {
  const DU::LightPathCalculator path = PathInWater();
  const JudgedPair pair = {kEvent, kPMT, DU::eVerdict::kNeckBoss, path};
  const auto value = [&](const char* name) {
    return FindPairColumn(name)->value(pair);
  };
  EXPECT_EQ(value("time"), path.GetTimeOfFlight());
  EXPECT_EQ(value("length_inner"), 0.0);
  EXPECT_EQ(value("length_av"), 0.0);
  EXPECT_EQ(value("length_water"), 2300.0);
  EXPECT_EQ(value("optical_length"), path.GetOpticalLength());
  EXPECT_EQ(value("angle"), 0.0);
  EXPECT_EQ(value("initial_z"), 1.0);
  EXPECT_EQ(value("final_z"), 1.0);
  EXPECT_EQ(value("final_x"), 0.0);
  EXPECT_EQ(value("code"), 6.0);
  EXPECT_EQ(value("event_z"), 6000.0);
  EXPECT_EQ(value("pmt_z"), 8300.0);
}

TEST(PairColumns, GivesNoValueOfAPathThatDoesNotExist) {
  const DU::LightPathCalculator path = PathInWater();  // of another pair
  const JudgedPair pair = {kEvent, kPMT, DU::eVerdict::kTotalReflection, path};
  for (const PairColumn& column : PairColumns()) {
    if (column.kind == eValue::kText) {
      EXPECT_EQ(column.text(pair), "") << column.name;
    } else {
      EXPECT_EQ(column.value(pair).has_value(), column.need == eNeed::kNothing)
          << column.name;
    }
  }
  EXPECT_EQ(FindPairColumn("code")->value(pair), 7.0);
}

TEST(PairColumns, GivesTheDetailsOfThePath) {
  PathDetails details;
  details.critical.of = {1.5, -2.5, 3, 4, 5, 6};
  details.item = "support ropes 2, back";
  const JudgedPair pair = JudgedPath(DU::eVerdict::kAVHDRope, details);
  EXPECT_EQ(FindPairColumn("critical_tolerance")->value(pair), -2.5);
  EXPECT_EQ(FindPairColumn("critical_by")->text(pair), "SupportRope");
  EXPECT_EQ(FindPairColumn("item")->text(pair), "support ropes 2, back");
  EXPECT_EQ(FindPairColumn("code")->value(pair), 1.0);
  for (const std::string& name : GivenPathColumns()) {
    EXPECT_NE(FindPairColumn(name), nullptr) << name;
  }
}

TEST(PairColumns, FindsEachByItsName) {
  std::set<std::string> names;
  for (const PairColumn& column : PairColumns()) {
    EXPECT_EQ(FindPairColumn(column.name), &column);
    EXPECT_TRUE(names.insert(column.name).second) << column.name;
  }
  EXPECT_EQ(FindPairColumn("tim"), nullptr);
  EXPECT_EQ(FindPairColumn(""), nullptr);
}

}  // namespace
}  // namespace ZARN::IO

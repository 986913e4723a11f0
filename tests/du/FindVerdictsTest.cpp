#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "db/JsonTables.hpp"
#include "db/TableSet.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/fast/ShadowingLayers.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {
namespace {

using DU::eVerdict;

class Rows : public testing::Test {
 protected:
  Rows() {
    LoadJsonTables(tables_, ZARN_DATA_DIR "/reference-detector");
    shadowing_.BeginOfRun(tables_);
    light_.BeginOfRun(tables_);
  }

  /// Compare a row with its pairs, each calculated exactly.
  void ExpectAsPairs(const TVector3& eventPos,
                     const std::vector<TVector3>& positions) {
    SCOPED_TRACE("event at " + std::to_string(eventPos.X()) + ", " +
                 std::to_string(eventPos.Y()) + ", " +
                 std::to_string(eventPos.Z()));
    const DU::PMTArray pmts(positions);
    std::vector<eVerdict> direct(positions.size());
    std::vector<eVerdict> reflected(positions.size());
    std::vector<std::uint8_t> types(positions.size());
    shadowing_.FindVerdicts(light_, eventPos, pmts,
                            {direct.data(), reflected.data(), types.data()});
    for (std::size_t i = 0; i < positions.size(); ++i) {
      ASSERT_EQ(direct[i],
                shadowing_.FindVerdict(light_, eventPos, positions[i]))
          << i;
      ASSERT_EQ(reflected[i],
                shadowing_.FindVerdict(light_, eventPos, positions[i],
                                       DU::eLight::kReflected))
          << i;
      light_.CalcByPosition(eventPos, positions[i]);
      ASSERT_EQ(types[i], light_.GetLightPathType()) << i;
      if (light_.HasPath()) {
        ASSERT_EQ(direct[i],
                  VerdictOf(shadowing_.FindShadowing(light_.GetLightPath())))
            << i;
      } else {
        ASSERT_FALSE(HasPath(direct[i])) << i;
      }
      light_.CalcReflectionByPosition(eventPos, positions[i]);
      ASSERT_EQ(reflected[i],
                light_.HasPath()
                    ? VerdictOf(shadowing_.FindShadowing(light_.GetLightPath()))
                    : eVerdict::kNoReflectedPath)
          << i;
    }
  }

  eVerdict VerdictOn(const TVector3& eventPos, const TVector3& pmtPos) {
    return shadowing_.FindVerdict(light_, eventPos, pmtPos);
  }

  TableSet tables_;
  DU::ShadowingCalculator shadowing_;
  DU::LightPathCalculator light_;
};

/// PMTs in random directions.
std::vector<TVector3> PMTs(double lowest, double highest, int count,
                           Random& random) {
  std::vector<TVector3> positions;
  for (int i = 0; i < count; ++i) {
    positions.push_back(random.Direction() * random.Uniform(lowest, highest));
  }
  return positions;
}

TEST_F(Rows, EqualThoseOfTheirPairs) {
  Random random(11);
  for (const double radius :
       {0.0,           1e-3,          10.0,          3000.0, 5000.0,
        5100.0,        5155.0,        5160.0,        5300.0, 5790.0,
        5800.0 - 1e-9, 5800.0,        5800.0 + 1e-9, 5830.0, 5860.0 - 1e-9,
        5860.0,        5860.0 + 1e-9, 5900.0,        7000.0, 8400.0}) {
    const TVector3 eventPos = random.Direction() * radius;
    ExpectAsPairs(eventPos, PMTs(8400.0, 8400.0008, 300, random));
  }
}

TEST_F(Rows, EqualThoseOfTheirPairsForEventsOnAxes) {
  Random random(12);
  for (const TVector3& eventPos :
       {TVector3(0, 0, 5500), TVector3(0, 0, -5500), TVector3(5000, 0, 0),
        TVector3(0, 5100, 0), TVector3(0, 0, 7000), TVector3(0, -7000, 0)}) {
    ExpectAsPairs(eventPos, PMTs(8400.0, 8400.0008, 300, random));
  }
}

TEST_F(Rows, EqualThoseOfTheirPairsAtAnyDistances) {
  Random random(13);
  for (int i = 0; i < 20; ++i) {
    const TVector3 eventPos = random.Direction() * random.Uniform(0.0, 8000.0);
    ExpectAsPairs(eventPos, PMTs(7000.0, 10000.0, 300, random));
  }
}

TEST_F(Rows, EqualThoseOfUnusualPMTs) {
  Random random(14);
  std::vector<TVector3> positions = PMTs(8400.0, 8400.0, 50, random);
  positions.emplace_back(kNaN, 0, 0);
  positions.emplace_back(0, 0, 0);
  positions.emplace_back(0, 5830, 0);
  positions.emplace_back(0, 5860, 0);
  positions.emplace_back(0, 0, 1e100);
  const TVector3 eventPos = positions[7];
  ExpectAsPairs(eventPos, positions);
  ExpectAsPairs({0, 0, 3000}, positions);
  ExpectAsPairs({kNaN, 0, 3000}, positions);
  ExpectAsPairs(-positions[9], positions);
}

TEST_F(Rows, TellWhyThereIsNoPath) {
  const TVector3 pmt(0, 0, 8400);
  EXPECT_EQ(VerdictOn({5790, 0, 0}, pmt), eVerdict::kTotalReflection);
  EXPECT_EQ(VerdictOn({0, 0, 1}, {0, 0, 5850}), eVerdict::kPMTNotInWater);
  EXPECT_EQ(VerdictOn(pmt, pmt), eVerdict::kEventAtPMT);
  EXPECT_EQ(VerdictOn({0, kNaN, 0}, pmt), eVerdict::kPositionNotFinite);
  EXPECT_EQ(VerdictOn({0, 0, 1e90}, pmt), eVerdict::kPositionNotFinite);
  EXPECT_EQ(VerdictOn({0, 0, 1}, {0, kNaN, 0}), eVerdict::kPositionNotFinite);
}

TEST_F(Rows, AreTheSameByFormulasAlone) {
  Random random(15);
  const std::vector<TVector3> positions = PMTs(8400.0, 8400.0008, 64, random);
  const DU::PMTArray pmts(positions);
  std::vector<eVerdict> expected(positions.size());
  shadowing_.FindVerdicts(light_, {100, 200, 3000}, pmts, {expected.data()});
  DU::ShadowingCalculator plain;
  plain.UseLayers(DU::ShadowingLayers{false, false, false});
  plain.BeginOfRun(tables_);
  std::vector<eVerdict> verdicts(positions.size());
  plain.FindVerdicts(light_, {100, 200, 3000}, pmts, {verdicts.data()});
  EXPECT_EQ(verdicts, expected);
}

TEST_F(Rows, NeedARun) {
  const DU::LightPathCalculator none;
  EXPECT_THROW(shadowing_.FindVerdict(none, {0, 0, 1}, {0, 0, 8400}),
               std::logic_error);
  for (const std::size_t count : {1U, 100U}) {
    std::vector<eVerdict> row(count);
    EXPECT_THROW(shadowing_.FindVerdicts(
                     none, {0, 0, 1},
                     DU::PMTArray(std::vector<TVector3>(count, {0, 0, 8400})),
                     {row.data()}),
                 std::logic_error);
  }
}

}  // namespace
}  // namespace ZARN::Testing

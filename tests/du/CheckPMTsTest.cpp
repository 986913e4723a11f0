#include "du/CheckTables.hpp"

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

class ImplausiblePMTs : public ImplausibleInTables {};

std::vector<std::string> TextsOfPMTs(const std::vector<TVector3>& positions,
                                     const TableSet& tables) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    names.push_back("p" + std::to_string(i));
  }
  std::vector<std::string> texts;
  for (const auto& finding : CheckPMTs(tables, names, positions)) {
    texts.push_back(TextOf(finding));
  }
  return texts;
}

TEST_F(ImplausiblePMTs, PMTsInTheWaterArePlausible) {
  EXPECT_THAT(
      TextsOfPMTs({{3050, 0, 0}, {0, 0, -9000}, {0, 0, 9000}}, tables_.AsSet()),
      IsEmpty());
}

TEST_F(ImplausiblePMTs, PMTsInsideTheVesselFarAwayOrNotFinite) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(
      TextsOfPMTs(
          {{5000, 0, 0}, {3049, 0, 0}, {0, 0, 0}, {0, 31000, 0}, {nan, 0, 0}},
          tables_.AsSet()),
      ElementsAre("warning: PMT/p4: the position is not finite: (nan, "
                  "0, 0); write finite numbers in mm",
                  "warning: PMT/p1: the PMT is inside the vessel of "
                  "3050 mm, and 1 more: (3049, 0, 0); PMTs are in the "
                  "water around the vessel: are its radii right?",
                  "warning: PMT/p3: the PMT is far from the vessel of "
                  "3050 mm: (0, 31000, 0); lengths are in mm"));
}

TEST_F(ImplausiblePMTs, PMTsInMetresOrGivenTwice) {
  EXPECT_THAT(
      TextsOfPMTs({{5, 0, 0}, {0, 8, 0}, {5, 0, 0.5}}, tables_.AsSet()),
      ElementsAre("warning: PMT/p0: the position looks like m beside a vessel "
                  "of 3050 mm, and 2 more: (5, 0, 0); lengths are in mm"));
  EXPECT_THAT(
      TextsOfPMTs({{5000, 0, 0}, {0, 8000, 0}, {5000, 0, 0.5}},
                  tables_.AsSet()),
      ElementsAre("warning: PMT/p2: the PMT has the position of p0: (5000, 0, "
                  "0.5); write each PMT once"));
}

TEST(CheckPMTsAlone, ComparesWithNoVesselThatIsMissing) {
  EXPECT_THAT(TextsOfPMTs({{5, 0, 0}, {5, 0, 0}}, TableSet()),
              ElementsAre(StartsWith("warning: PMT/p1: the PMT has the "
                                     "position of p0")));
}

}  // namespace
}  // namespace ZARN::DU

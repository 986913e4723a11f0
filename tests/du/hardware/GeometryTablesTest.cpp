#include "du/hardware/GeometryTables.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "db/DB.hpp"
#include "tests/du/PrintVectors.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::Captured;
using Testing::Tables;

using Numbers = std::vector<double>;

const std::vector<TVector3> kBefore = {{-1, -2, -3}};

void LoadCoordinates(const Numbers& x, const Numbers& y, const Numbers& z) {
  Tables tables;
  tables.Set("GEO_LOCATIONS", "anchors", "x", x);
  tables.Set("GEO_LOCATIONS", "anchors", "y", y);
  tables.Set("GEO_LOCATIONS", "anchors", "z", z);
  tables.Load();
}

void Fill(std::vector<TVector3>& positions) {
  FillXYZPositions(DB::Get(), positions, "GEO_LOCATIONS", "anchors", "x", "y",
                   "z");
}

TEST(FillXYZPositions, ReplacesTheListByThePositionsInTheirOrder) {
  LoadCoordinates({1, 2, 3}, {10, 20, 30}, {100, 200, 300});
  const Captured captured(warn);
  std::vector<TVector3> positions = kBefore;
  Fill(positions);
  EXPECT_EQ(positions,
            (std::vector<TVector3>{{1, 10, 100}, {2, 20, 200}, {3, 30, 300}}));
  EXPECT_EQ(captured.Text(), "");
}

TEST(FillXYZPositions, WarnsTwiceAndKeepsTheListWhenLengthsDiffer) {
  const std::vector<std::vector<Numbers>> inconsistent = {
      {{1, 2, 3}, {1, 2, 3}, {1, 2}},
      {{1, 2, 3}, {1, 2}, {1, 2, 3}},
      {{1, 2, 3}, {1, 2}, {1, 2}},
      {{1, 2}, {1, 2, 3}, {1, 2, 3}},
      {{}, {}, {1}},
      {{1}, {}, {}}};
  for (const auto& lists : inconsistent) {
    LoadCoordinates(lists[0], lists[1], lists[2]);
    const Captured captured(warn);
    std::vector<TVector3> positions = kBefore;
    Fill(positions);
    EXPECT_EQ(positions, kBefore);
    EXPECT_EQ(captured.Text(),
              "ShadowingCalculator::FillXYZPositions: Inequal number of "
              "elements across the (X,Y,Z) coordinate arrays!\n"
              "(X,Y,Z) positions not initialised for (GEO_LOCATIONS, "
              "anchors).\n");
  }
}

TEST(FillXYZPositions, NamesTableAndIndexInItsWarning) {
  Tables tables;
  tables.Set("SOLID", "av_pipe-1", "x", Numbers{1});
  tables.Set("SOLID", "av_pipe-1", "y", Numbers{1});
  tables.Set("SOLID", "av_pipe-1", "z", Numbers{});
  tables.Load();
  const Captured captured(warn);
  std::vector<TVector3> positions;
  FillXYZPositions(DB::Get(), positions, "SOLID", "av_pipe-1", "x", "y", "z");
  EXPECT_EQ(captured.Text(),
            "ShadowingCalculator::FillXYZPositions: Inequal number of elements "
            "across the (X,Y,Z) coordinate arrays!\n"
            "(X,Y,Z) positions not initialised for (SOLID, av_pipe-1).\n");
}

TEST(FillXYZPositions, ClearsTheListForThreeEmptyArrays) {
  LoadCoordinates({}, {}, {});
  const Captured captured(warn);
  std::vector<TVector3> positions = kBefore;
  Fill(positions);
  EXPECT_EQ(positions, std::vector<TVector3>());
  EXPECT_EQ(captured.Text(), "");
}

TEST(FillXYZPositions, KeepsTheListWhenAFieldIsMissing) {
  for (const char* field : {"x", "y", "z"}) {
    SCOPED_TRACE(field);
    Tables()
        .SetPositions("GEO_LOCATIONS", "anchors", {{1, 2, 3}})
        .RemoveField("GEO_LOCATIONS", "anchors", field)
        .Load();
    const Captured captured(warn);
    std::vector<TVector3> positions = kBefore;
    EXPECT_THROW(Fill(positions), DBNotFoundError);
    EXPECT_EQ(positions, kBefore);
    EXPECT_EQ(captured.Text(), "");
  }
}

TEST(FillXYZPositions, KeepsTheListWhenTheEntryIsMissing) {
  Tables().Load();
  std::vector<TVector3> positions = kBefore;
  EXPECT_THROW(Fill(positions), DBNotFoundError);
  EXPECT_EQ(positions, kBefore);
}

TEST(FillXYZPositions, RejectsANumberInsteadOfAList) {
  Tables()
      .SetPositions("GEO_LOCATIONS", "anchors", {{1, 2, 3}})
      .Set("GEO_LOCATIONS", "anchors", "y", 2.0)
      .Load();
  std::vector<TVector3> positions = kBefore;
  EXPECT_THROW(Fill(positions), DBNotFoundError);
  EXPECT_EQ(positions, kBefore);
}

TEST(FillXYZPositions, ReadsTheGivenFields) {
  Tables().SetPositions("SOLID", "rope", {{1, 2, 3}}, "rope_").Load();
  std::vector<TVector3> positions;
  FillXYZPositions(DB::Get(), positions, "SOLID", "rope", "rope_x", "rope_z",
                   "rope_y");
  EXPECT_EQ(positions, (std::vector<TVector3>{{1, 3, 2}}));
}

}  // namespace
}  // namespace ZARN::DU

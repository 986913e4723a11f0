#include "io/PositionReader.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class PositionReaderTest : public Testing::InFolder {
 protected:
  static std::vector<NamedPosition> Read(const std::string& text) {
    Put("pmts.csv", text);
    PositionReader reader("pmts.csv", "pmt");
    std::vector<NamedPosition> items;
    for (NamedPosition item; reader.Next(item);) items.push_back(item);
    EXPECT_EQ(reader.Done(), 1.0);
    return items;
  }

  static std::string ErrorText(const std::string& text) {
    try {
      Read(text);
    } catch (const BadInput& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(PositionReaderTest, ReadsNamesAndPositionsFromColumnsInAnyOrder) {
  const auto items =
      Read("z,other,pmt,y,x\n3,?,first,2,1\n-6e3,,\"a,\"\"b\"\"\",5.5,+4\n");
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0].name, "first");
  EXPECT_EQ(items[0].cell, "first");
  EXPECT_EQ(items[0].position, TVector3(1, 2, 3));
  EXPECT_EQ(items[1].name, "a,\"b\"");
  EXPECT_EQ(items[1].cell, "\"a,\"\"b\"\"\"");
  EXPECT_EQ(items[1].position, TVector3(4, 5.5, -6000));
}

TEST_F(PositionReaderTest, AcceptsPositionsThatAreNotFinite) {
  const auto items = Read("pmt,x,y,z\na,nan,-inf,0\n");
  EXPECT_TRUE(std::isnan(items.at(0).position.X()));
  EXPECT_TRUE(std::isinf(items.at(0).position.Y()));
}

TEST_F(PositionReaderTest, RefusesAnEmptyCoordinateAndNamesItsPlace) {
  EXPECT_EQ(ErrorText("pmt,x,y,z\na,1,2,3\nb,1,,3\n"),
            "pmts.csv: line 3 (row 1), column y: \"\" is not a number");
}

TEST_F(PositionReaderTest, NamesEveryMissingColumn) {
  EXPECT_EQ(ErrorText("event,x,Y,z\n"),
            "pmts.csv: line 1 (the header): missing columns: pmt, y");
}

TEST_F(PositionReaderTest, ReadsAllPositionsOfAFile) {
  Put("events.csv", "event,x,y,z\nfirst,1,2,3\nsecond,4,5,6\n");
  const auto items = ReadPositions("events.csv", "event");
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0].name, "first");
  EXPECT_EQ(items[1].name, "second");
  EXPECT_EQ(PositionsOf(items), (std::vector<TVector3>{{1, 2, 3}, {4, 5, 6}}));
  EXPECT_THROW(ReadPositions("events.csv", "pmt"), BadInput);
  EXPECT_THROW(ReadPositions("missing.csv", "event"), BadInput);
}

}  // namespace
}  // namespace ZARN::IO

#include "io/PositionReader.hpp"

#include <TFile.h>
#include <TTree.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::IO {
namespace {

class PositionReaderTest : public ::ZARN::Testing::InFolder {
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

TEST_F(PositionReaderTest, ReadsATreeOfAnyNames) {
  {
    TFile file("events.root", "RECREATE");
    TTree tree("events", "");
    std::uint64_t id = 0;
    float x = 0.0F;
    double y = 0.0;
    short z = 0;
    tree.Branch("id", &id);
    tree.Branch("pos_x", &x);
    tree.Branch("y", &y);
    tree.Branch("z", &z);
    for (int i = 0; i < 10'000; ++i) {
      id = i == 9999 ? ~0UL : static_cast<std::uint64_t>(i);
      x = 0.1F * static_cast<float>(i);
      y = 0.1 * i;
      z = static_cast<short>(-i);
      tree.Fill();
    }
    file.Write();
  }
  PositionReader reader("events.root", "event",
                        ColumnNames({{"event", "id"}, {"event_x", "pos_x"}}));
  EXPECT_EQ(reader.Name(), "events.root: tree \"events\"");
  NamedPosition item;
  for (int i = 0; i < 8192; ++i) {
    ASSERT_TRUE(reader.Next(item));
    ASSERT_EQ(item.name, std::to_string(i));
    ASSERT_EQ(item.cell, item.name);
    ASSERT_EQ(item.position,
              TVector3(0.1F * static_cast<float>(i), 0.1 * i, -i));
  }
  EXPECT_EQ(reader.Done(), 0.8192);
  const auto errorOf = [](const auto& work) -> std::string {
    try {
      work();
    } catch (const BadInput& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(errorOf([&] { reader.FailName("is odd"); }),
            "events.root: tree \"events\", column id, entry 8191: is odd");
  EXPECT_EQ(errorOf([&] { reader.Next(item); }),
            "events.root: tree \"events\", column id, entry 9999: cannot be "
            "read: 18446744073709551615 is too large");
}

}  // namespace
}  // namespace ZARN::IO

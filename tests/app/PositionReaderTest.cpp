#include "app/PositionReader.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "app/EventSource.hpp"
#include "app/Failure.hpp"
#include "tests/app/InFolder.hpp"

namespace ZARN::App {
namespace {

class PositionReaderTest : public Testing::InFolder {
 protected:
  static std::vector<NamedPosition> Read(const std::string& text) {
    Put("pmts.csv", text);
    InputFile input("pmts.csv");
    PositionReader reader(input, "pmt");
    std::vector<NamedPosition> items;
    for (NamedPosition item; reader.Next(item);) items.push_back(item);
    EXPECT_EQ(reader.BytesTaken(), text.size());
    return items;
  }

  static std::string Complaint(const std::string& text) {
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

TEST_F(PositionReaderTest, TakesPositionsThatAreNotFinite) {
  const auto items = Read("pmt,x,y,z\na,nan,-inf,0\n");
  EXPECT_TRUE(std::isnan(items.at(0).position.X()));
  EXPECT_TRUE(std::isinf(items.at(0).position.Y()));
}

TEST_F(PositionReaderTest, RefusesAnEmptyCoordinateAndNamesItsPlace) {
  EXPECT_EQ(Complaint("pmt,x,y,z\na,1,2,3\nb,1,,3\n"),
            "pmts.csv: line 3 (row 1), column y: \"\" is not a number");
}

TEST_F(PositionReaderTest, NamesEveryColumnThatIsMissing) {
  EXPECT_EQ(Complaint("event,x,Y,z\n"),
            "pmts.csv: line 1 (the header): missing columns: pmt, y");
}

class EventSourceTest : public Testing::InFolder {};

TEST_F(EventSourceTest, GivesAllEventsInTheirOrderSomeAtATime) {
  constexpr int kEvents = 200000;
  std::string text = "event,x,y,z\n";
  for (int i = 0; i < kEvents; ++i) text += std::to_string(i) + ",1,2,3\n";
  Put("events.csv", text);
  for (const std::size_t pmts : {0U, 1U, 100U, 100000U}) {
    EventSource source("events.csv");
    int next = 0;
    double doneBefore = 0.0;
    while (source.Next(pmts)) {
      EXPECT_LE(source.Events().size() * pmts,
                std::max<std::size_t>(1UL << 14U, pmts));
      for (const NamedPosition& event : source.Events()) {
        ASSERT_EQ(event.name, std::to_string(next++));
      }
      ASSERT_LE(doneBefore, source.Done(0.0));
      ASSERT_LT(source.Done(0.0), source.Done(0.5));
      ASSERT_LT(source.Done(0.5), source.Done(1.0));
      doneBefore = source.Done(1.0).value();
    }
    EXPECT_EQ(next, kEvents);
    EXPECT_EQ(doneBefore, 1.0);
    EXPECT_FALSE(source.Next(pmts)) << "events after the last";
  }
}

TEST_F(EventSourceTest, GivesOnePosition) {
  EventSource source(TVector3(1, 2, 3));
  ASSERT_TRUE(source.Next(10));
  ASSERT_EQ(source.Events().size(), 1U);
  EXPECT_EQ(source.Events()[0].name, "0");
  EXPECT_EQ(source.Events()[0].cell, "0");
  EXPECT_EQ(source.Events()[0].position, TVector3(1, 2, 3));
  EXPECT_EQ(source.Done(0.25), 0.25);
  EXPECT_FALSE(source.Next(10));
}

}  // namespace
}  // namespace ZARN::App

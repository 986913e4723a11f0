#include "app/EventSource.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/Errors.hpp"
#include "tests/support/InFolder.hpp"

namespace ZARN::App {
namespace {

class EventSourceTest : public Testing::InFolder {};

TEST_F(EventSourceTest, ReadsAllEventsInOrderInBlocks) {
  constexpr int kEvents = 200000;
  std::string text = "event,x,y,z\n";
  for (int i = 0; i < kEvents; ++i) text += std::to_string(i) + ",1,2,3\n";
  Put("events.csv", text);
  for (const std::size_t most : {1U, 100U, 300000U}) {
    EventSource source("events.csv");
    std::vector<IO::NamedPosition> events;
    int next = 0;
    double doneBefore = 0.0;
    while (source.Next(events, most)) {
      ASSERT_LE(events.size(), most);
      for (const IO::NamedPosition& event : events) {
        ASSERT_EQ(event.name, std::to_string(next++));
      }
      ASSERT_LT(doneBefore, source.Done());
      doneBefore = source.Done().value();
    }
    EXPECT_EQ(next, kEvents);
    EXPECT_EQ(doneBefore, 1.0);
    EXPECT_FALSE(source.Next(events, most)) << "events after the last";
  }
}

TEST_F(EventSourceTest, RefusesANameThatIsNotAnInteger) {
  Put("events.csv", "event,x,y,z\n1,0,0,0\n2,0,0,0\nz=3,0,0,0\n");
  EventSource source("events.csv");
  std::vector<IO::NamedPosition> events;
  ASSERT_TRUE(source.Next(events, 1));
  source.RequireIntegers();
  ASSERT_TRUE(source.Next(events, 1));
  try {
    source.Next(events, 1);
    FAIL() << "nothing was thrown";
  } catch (const IO::BadInput& error) {
    EXPECT_NE(std::string(error.what())
                  .find("events.csv: line 4 (row 2), column event: \"z=3\" is "
                        "not an integer"),
              std::string::npos)
        << error.what();
  }
}

TEST_F(EventSourceTest, ReturnsOnePosition) {
  EventSource source(TVector3(1, 2, 3));
  std::vector<IO::NamedPosition> events;
  ASSERT_TRUE(source.Next(events, 10));
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].name, "0");
  EXPECT_EQ(events[0].cell, "0");
  EXPECT_EQ(events[0].position, TVector3(1, 2, 3));
  EXPECT_EQ(source.Done(), 1.0);
  EXPECT_FALSE(source.Next(events, 10));
}

}  // namespace
}  // namespace ZARN::App

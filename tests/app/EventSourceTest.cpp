#include "app/EventSource.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/InFolder.hpp"

namespace ZARN::App {
namespace {

class EventSourceTest : public Testing::InFolder {};

TEST_F(EventSourceTest, ReadsAllEventsInOrderInBatches) {
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
      for (const IO::NamedPosition& event : source.Events()) {
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

TEST_F(EventSourceTest, ReturnsOnePosition) {
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

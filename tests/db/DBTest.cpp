#include "db/DB.hpp"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <type_traits>
#include <vector>

namespace ZARN {
namespace {

TEST(DB, IsOneObjectForAllThreads) {
  std::vector<DB*> seen(8);
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  for (DB*& slot : seen) threads.emplace_back([&slot] { slot = &DB::Get(); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::set<DB*>(seen.begin(), seen.end()), std::set<DB*>{&DB::Get()});
}

TEST(DB, CannotBeCopiedButItsTablesCan) {
  EXPECT_FALSE(std::is_copy_constructible_v<DB>);
  EXPECT_FALSE(std::is_copy_assignable_v<DB>);
  DB::Get().Clear();
  DB::Get().Add({{"GEO", "av", {}, 0, {{"value", 1.0}}}});
  TableSet copy = DB::Get();
  copy.Add({{"GEO", "av", {}, 0, {{"value", 2.0}}}});
  EXPECT_EQ(copy.GetLink("GEO", "av", -1)->GetD("value"), 2.0);
  EXPECT_EQ(DB::Get().GetLink("GEO", "av", -1)->GetD("value"), 1.0);
  DB::Get().Clear();
}

}  // namespace
}  // namespace ZARN

#include "db/DB.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/support/TextOf.hpp"

namespace ZARN {
namespace {

using Testing::TextOf;

TableEntry Entry(const std::string& table, const std::string& index,
                 double value, RunRange runs = {}, int pass = 0) {
  TableEntry entry;
  entry.table = table;
  entry.index = index;
  entry.runs = runs;
  entry.pass = pass;
  entry.fields["value"] = value;
  return entry;
}

class DBTest : public testing::Test {
 protected:
  DBTest() {
    db_.Clear();
    db_.SetRun(0);
  }
  ~DBTest() override { db_.Clear(); }

  double ValueAt(int run, int pass = DB::kHighestPass) {
    db_.SetRun(run);
    return db_.GetLink("GEO", "av", pass)->GetD("value");
  }

  DB& db_ = DB::Get();
};

TEST_F(DBTest, IsOneForTheProcessAlsoWhenSeveralThreadsAskFirst) {
  std::vector<DB*> seen(8);
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  for (DB*& slot : seen) threads.emplace_back([&slot] { slot = &DB::Get(); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::set<DB*>(seen.begin(), seen.end()), std::set<DB*>{&db_});
}

TEST_F(DBTest, GivesFieldsOfTheThreeTypes) {
  TableEntry entry = Entry("SOLID", "rope", 12.5);
  entry.fields["x"] = std::vector<double>{1.0, 2.0};
  entry.fields["name"] = std::string("rope-a");
  db_.Add({entry});
  const auto link = db_.GetLink("SOLID", "rope", -1);
  EXPECT_EQ(link->GetD("value"), 12.5);
  EXPECT_EQ(link->GetDArray("x"), (std::vector<double>{1.0, 2.0}));
  EXPECT_EQ(link->GetS("name"), "rope-a");
}

TEST_F(DBTest, NamesWhatIsMissing) {
  db_.Add({Entry("GEO", "av", 1.0)});
  db_.SetRun(7);
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { db_.GetLink("GEO", "rope", -1); }),
            "table GEO, index rope: there is no entry for run 7");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { db_.GetLink("SOLID", "av", -1); }),
            "table SOLID, index av: there is no entry for run 7");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { db_.GetLink("GEO", "av", 3); }),
            "table GEO, index av: there is no entry with pass 3 for run 7");
  EXPECT_EQ(
      TextOf<DBNotFoundError>([&] { db_.GetLink("GEO", "av", -1)->GetD("z"); }),
      "table GEO, index av: there is no field z");
}

TEST_F(DBTest, TreatsAFieldOfAnotherTypeAsMissing) {
  TableEntry entry = Entry("GEO", "av", 1.0);
  entry.fields["list"] = std::vector<double>{1.0};
  entry.fields["text"] = std::string("1.0");
  db_.Add({entry});
  const auto link = db_.GetLink("GEO", "av", -1);
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetD("list"); }),
            "table GEO, index av: the field list is not a number");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetD("text"); }),
            "table GEO, index av: the field text is not a number");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetDArray("value"); }),
            "table GEO, index av: the field value is not an array of numbers");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetS("value"); }),
            "table GEO, index av: the field value is not a string");
}

TEST_F(DBTest, RunRangesIncludeBothEnds) {
  db_.Add({Entry("GEO", "av", 1.0, {10, 20})});
  EXPECT_THROW(ValueAt(9), DBNotFoundError);
  EXPECT_EQ(ValueAt(10), 1.0);
  EXPECT_EQ(ValueAt(20), 1.0);
  EXPECT_THROW(ValueAt(21), DBNotFoundError);
}

TEST_F(DBTest, TakesTheHighestPassAmongTheEntriesOfTheRun) {
  db_.Add({Entry("GEO", "av", 2.0, {10, 20}, 2), Entry("GEO", "av", 1.0, {}, 1),
           Entry("GEO", "av", 0.0)});
  EXPECT_EQ(ValueAt(15), 2.0);
  EXPECT_EQ(ValueAt(21), 1.0);
}

TEST_F(DBTest, TakesTheEntryAddedLastAmongEqualPasses) {
  db_.Add({Entry("GEO", "av", 1.0), Entry("GEO", "av", 2.0)});
  EXPECT_EQ(ValueAt(0), 2.0);
  db_.Add({Entry("GEO", "av", 3.0)});
  EXPECT_EQ(ValueAt(0), 3.0);
  EXPECT_EQ(ValueAt(0, 0), 3.0);
}

TEST_F(DBTest, TakesExactlyThePassThatIsAskedFor) {
  db_.Add({Entry("GEO", "av", 0.0), Entry("GEO", "av", 1.0, {}, 1)});
  EXPECT_EQ(ValueAt(0, 0), 0.0);
  EXPECT_EQ(ValueAt(0, 1), 1.0);
  EXPECT_THROW(ValueAt(0, 2), DBNotFoundError);
}

TEST_F(DBTest, LinkOutlivesTheEntriesOfTheDatabase) {
  db_.Add({Entry("GEO", "av", 1.0)});
  const auto link = db_.GetLink("GEO", "av", -1);
  db_.Clear();
  EXPECT_EQ(link->GetD("value"), 1.0);
}

TEST(DBNotFoundError, IsARuntimeError) {
  EXPECT_TRUE((std::is_base_of_v<std::runtime_error, DBNotFoundError>));
  EXPECT_FALSE((std::is_base_of_v<DBNotFoundError, null_dereference>));
}

/// Counts how many of it are alive.
struct Counted {
  explicit Counted(int* counter) : alive(counter) { ++*alive; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { --*alive; }
  int* alive;
};

TEST(SimplePtrNoCopy, DeletesTheObjectWithTheLastHandle) {
  int alive = 0;
  {
    simple_ptr_nocopy<Counted> first(new Counted(&alive));
    {
      simple_ptr_nocopy<Counted> second;
      second = first;
      EXPECT_EQ(second->alive, &alive);
    }
    EXPECT_EQ(alive, 1);
    simple_ptr_nocopy<Counted> third(new Counted(&alive));
    EXPECT_EQ(alive, 2);
    third = first;
    EXPECT_EQ(alive, 1);
    first = simple_ptr_nocopy<Counted>();
    EXPECT_EQ(alive, 1);
  }
  EXPECT_EQ(alive, 0);
}

TEST(SimplePtrNoCopy, ThrowsWhenAnEmptyHandleIsDereferenced) {
  const simple_ptr_nocopy<Counted> empty;
  EXPECT_EQ(TextOf<null_dereference>([&] { (void)empty->alive; }),
            "null pointer dereferenced in simple_ptr_nocopy::operator->");
}

}  // namespace
}  // namespace ZARN

#include "db/TableSet.hpp"

#include <gtest/gtest.h>

#include <string>
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

class TableSetTest : public testing::Test {
 protected:
  double ValueAt(int run, int pass = TableSet::kHighestPass) {
    tables_.SetRun(run);
    return tables_.GetLink("GEO", "av", pass)->GetD("value");
  }

  TableSet tables_;
};

TEST_F(TableSetTest, ReturnsFieldsOfTheThreeTypes) {
  TableEntry entry = Entry("SOLID", "rope", 12.5);
  entry.fields["x"] = std::vector<double>{1.0, 2.0};
  entry.fields["name"] = std::string("rope-a");
  tables_.Add({entry});
  const auto link = tables_.GetLink("SOLID", "rope", -1);
  EXPECT_EQ(link->GetD("value"), 12.5);
  EXPECT_EQ(link->GetDArray("x"), (std::vector<double>{1.0, 2.0}));
  EXPECT_EQ(link->GetS("name"), "rope-a");
}

TEST_F(TableSetTest, ListsTheEntriesOfTheRun) {
  constexpr RunRange kLater = {10, 20};
  tables_.Add({Entry("SOLID", "av", 1.0), Entry("GEO", "rope", 2.0, kLater),
               Entry("GEO", "av", 3.0), Entry("GEO", "av", 4.0, kLater, 1)});
  const auto valuesAt = [this](int run) {
    tables_.SetRun(run);
    std::vector<double> values;
    for (const auto& entry : tables_.CurrentEntries()) {
      values.push_back(std::get<double>(entry->fields.at("value")));
    }
    return values;
  };
  EXPECT_EQ(valuesAt(0), (std::vector{3.0, 1.0}));
  EXPECT_EQ(valuesAt(10), (std::vector{4.0, 2.0, 1.0}));
}

TEST_F(TableSetTest, NamesWhatIsMissing) {
  tables_.Add({Entry("GEO", "av", 1.0)});
  tables_.SetRun(7);
  EXPECT_EQ(
      TextOf<DBNotFoundError>([&] { tables_.GetLink("GEO", "rope", -1); }),
      "table GEO, index rope: there is no entry for run 7");
  EXPECT_EQ(
      TextOf<DBNotFoundError>([&] { tables_.GetLink("SOLID", "av", -1); }),
      "table SOLID, index av: there is no entry for run 7");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { tables_.GetLink("GEO", "av", 3); }),
            "table GEO, index av: there is no entry with pass 3 for run 7");
  EXPECT_EQ(TextOf<DBNotFoundError>(
                [&] { tables_.GetLink("GEO", "av", -1)->GetD("z"); }),
            "table GEO, index av: there is no field z");
}

TEST_F(TableSetTest, TreatsAFieldOfAnotherTypeAsMissing) {
  TableEntry entry = Entry("GEO", "av", 1.0);
  entry.fields["list"] = std::vector<double>{1.0};
  entry.fields["text"] = std::string("1.0");
  tables_.Add({entry});
  const auto link = tables_.GetLink("GEO", "av", -1);
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetD("list"); }),
            "table GEO, index av: the field list is not a number");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetD("text"); }),
            "table GEO, index av: the field text is not a number");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetDArray("value"); }),
            "table GEO, index av: the field value is not an array of numbers");
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { link->GetS("value"); }),
            "table GEO, index av: the field value is not a string");
}

TEST_F(TableSetTest, RunRangesIncludeBothEnds) {
  tables_.Add({Entry("GEO", "av", 1.0, {10, 20})});
  EXPECT_THROW(ValueAt(9), DBNotFoundError);
  EXPECT_EQ(ValueAt(10), 1.0);
  EXPECT_EQ(ValueAt(20), 1.0);
  EXPECT_THROW(ValueAt(21), DBNotFoundError);
}

TEST_F(TableSetTest, TakesTheHighestPassValidForTheRun) {
  tables_.Add({Entry("GEO", "av", 2.0, {10, 20}, 2),
               Entry("GEO", "av", 1.0, {}, 1), Entry("GEO", "av", 0.0)});
  EXPECT_EQ(ValueAt(15), 2.0);
  EXPECT_EQ(ValueAt(21), 1.0);
}

TEST_F(TableSetTest, TakesTheEntryAddedLastAmongEqualPasses) {
  tables_.Add({Entry("GEO", "av", 1.0), Entry("GEO", "av", 2.0)});
  EXPECT_EQ(ValueAt(0), 2.0);
  tables_.Add({Entry("GEO", "av", 3.0)});
  EXPECT_EQ(ValueAt(0), 3.0);
  EXPECT_EQ(ValueAt(0, 0), 3.0);
}

TEST_F(TableSetTest, TakesExactlyTheRequestedPass) {
  tables_.Add({Entry("GEO", "av", 0.0), Entry("GEO", "av", 1.0, {}, 1)});
  EXPECT_EQ(ValueAt(0, 0), 0.0);
  EXPECT_EQ(ValueAt(0, 1), 1.0);
  EXPECT_THROW(ValueAt(0, 2), DBNotFoundError);
}

TEST_F(TableSetTest, AnOverrideReplacesAllPassesForItsRunsAndNoOthers) {
  tables_.Override({Entry("GEO", "av", 9.0, {10, 20})});
  tables_.Add({Entry("GEO", "av", 1.0), Entry("GEO", "av", 2.0, {}, 7),
               Entry("SOLID", "av", 3.0)});
  EXPECT_EQ(ValueAt(9), 2.0);
  EXPECT_EQ(ValueAt(10), 9.0);
  EXPECT_EQ(ValueAt(20), 9.0);
  EXPECT_EQ(ValueAt(21), 2.0);
  EXPECT_EQ(ValueAt(15, 0), 9.0);
  EXPECT_THROW(ValueAt(15, 7), DBNotFoundError);
  EXPECT_EQ(ValueAt(21, 7), 2.0);
  tables_.SetRun(15);
  EXPECT_EQ(tables_.GetLink("SOLID", "av", -1)->GetD("value"), 3.0);
  EXPECT_EQ(tables_.CurrentEntries().size(), 2U);
}

TEST_F(TableSetTest, PassAndOrderDecideAmongOverrides) {
  tables_.Add({Entry("GEO", "av", 1.0, {}, 9)});
  tables_.Override({Entry("GEO", "av", 2.0, {}, 1), Entry("GEO", "av", 3.0)});
  EXPECT_EQ(ValueAt(0), 2.0);
  tables_.Override({Entry("GEO", "av", 4.0, {}, 1)});
  EXPECT_EQ(ValueAt(0), 4.0);
}

TEST_F(TableSetTest, ListsAllVersionsOfAnEntry) {
  tables_.Override({Entry("GEO", "av", 3.0)});
  tables_.Add({Entry("GEO", "av", 1.0, {10, 20}), Entry("GEO", "rope", 9.0),
               Entry("GEO", "av", 2.0, {}, 1)});
  std::vector<double> values;
  for (const auto& entry : tables_.Versions("GEO", "av")) {
    values.push_back(std::get<double>(entry->fields.at("value")));
  }
  EXPECT_EQ(values, (std::vector{1.0, 2.0, 3.0}));
  EXPECT_TRUE(tables_.Versions("SOLID", "av").empty());
}

TEST_F(TableSetTest, ClearRemovesOverridesToo) {
  tables_.Override({Entry("GEO", "av", 1.0)});
  tables_.Clear();
  EXPECT_THROW(ValueAt(0), DBNotFoundError);
}

TEST_F(TableSetTest, LinkOutlivesTheEntries) {
  tables_.Add({Entry("GEO", "av", 1.0)});
  const auto link = tables_.GetLink("GEO", "av", -1);
  tables_.Clear();
  EXPECT_EQ(link->GetD("value"), 1.0);
}

TEST_F(TableSetTest, CopiesAreIndependent) {
  tables_.Add({Entry("GEO", "av", 1.0)});
  tables_.SetRun(7);
  TableSet copy = tables_;
  EXPECT_EQ(copy.GetRun(), 7);
  copy.Add({Entry("GEO", "av", 2.0)});
  copy.SetRun(8);
  EXPECT_EQ(copy.GetLink("GEO", "av", -1)->GetD("value"), 2.0);
  EXPECT_EQ(tables_.GetLink("GEO", "av", -1)->GetD("value"), 1.0);
  EXPECT_EQ(tables_.GetRun(), 7);
  tables_.Clear();
  EXPECT_EQ(copy.GetLink("GEO", "av", -1)->GetD("value"), 2.0);
}

TEST(DBValueError, NamesTheFieldAndWhatIsWrong) {
  const DBValueError error("GEO", "av", "x", "is empty");
  EXPECT_STREQ(error.what(), "table GEO, index av: the field x is empty");
  EXPECT_EQ(error.Field(), "x");
  EXPECT_EQ(error.Reason(), "is empty");
  EXPECT_TRUE(std::is_nothrow_copy_constructible_v<DBValueError>);
}

TEST(DBNotFoundError, IsARuntimeError) {
  EXPECT_TRUE((std::is_base_of_v<std::runtime_error, DBNotFoundError>));
  EXPECT_FALSE((std::is_base_of_v<DBNotFoundError, null_dereference>));
}

}  // namespace
}  // namespace ZARN

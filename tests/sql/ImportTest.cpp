#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "db/TableSet.hpp"
#include "sql/TableStore.hpp"
#include "tests/sql/StoreTest.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::SQL {
namespace {

using Testing::Entry;
using Testing::Note;
using ZARN::Testing::TextOf;

class ImportTest : public Testing::StoreTest {
 protected:
  ImportResult Import(const std::vector<TableEntry>& entries,
                      bool asNewPass = false) {
    return ToImport().Import(entries, Note(), asNewPass);
  }

  /// What readers of A/x get for a run.
  double ValueAt(int run) {
    TableSet tables;
    tables.Add(ToRead().Read({}));
    tables.SetRun(run);
    return tables.GetLink("A", "x", TableSet::kHighestPass)->GetD("value");
  }
};

INSTANTIATE_TEST_SUITE_P(Engines, ImportTest,
                         testing::ValuesIn(Testing::Engines()),
                         Testing::NameOfEngine);

TEST_P(ImportTest, LeavesOutWhatStands) {
  const std::vector<TableEntry> entries = {Entry("A", "x", 1.0),
                                           Entry("A", "x", 2.0, {10, 20}),
                                           Entry("A", "y", 3.0, {}, 1)};
  Import(entries);
  const ImportResult again = Import(entries);
  EXPECT_FALSE(again.import.has_value());
  EXPECT_EQ(again.unchanged, 3U);
  EXPECT_EQ(Import(entries, true).unchanged, 3U);
  EXPECT_EQ(ToRead().Imports().size(), 1U);
  const ImportResult more = Import({entries[2], Entry("A", "z", 4.0)});
  EXPECT_EQ(more.unchanged, 1U);
  EXPECT_EQ(more.added, std::vector{Entry("A", "z", 4.0)});
}

TEST_P(ImportTest, OverwritesNothing) {
  Import({Entry("A", "x", 1.0, {0, 100}), Entry("A", "y", 1.0)});
  const std::string text = TextOf<ImportRefused>([&] {
    Import({Entry("A", "z", 1.0), Entry("A", "x", 2.0, {100, 200})});
  });
  EXPECT_EQ(
      text,
      "A/x, pass 0, runs 100 to 200: differs from the entry of import 1 "
      "for runs 0 to 100\nan entry is never overwritten; give it a higher "
      "pass, or import with --new-pass");
  EXPECT_EQ(ToRead().Read({}).size(), 2U);
  EXPECT_THROW(Import({Entry("A", "x", 2.0, {50, 60})}), ImportRefused);
  EXPECT_THROW(Import({Entry("A", "x", 2.0)}), ImportRefused);
  EXPECT_THROW(Import({Entry("A", "x", -1.0, {0, 0})}), ImportRefused);
  EXPECT_EQ(ToRead().Imports().size(), 1U);
}

TEST_P(ImportTest, NamesTheFirstOfManyThatDiffer) {
  std::vector<TableEntry> entries;
  for (int i = 0; i < 9; ++i) {
    entries.push_back(Entry("A", "i" + std::to_string(i), 1.0));
  }
  Import(entries);
  for (TableEntry& entry : entries) entry.fields["value"] = 2.0;
  const std::string text = TextOf<ImportRefused>([&] { Import(entries); });
  EXPECT_NE(text.find("A/i4, pass 0, all runs: differs"), std::string::npos);
  EXPECT_EQ(text.find("A/i5"), std::string::npos);
  EXPECT_NE(text.find("\nand 4 more\n"), std::string::npos);
}

TEST_P(ImportTest, AcceptsAnotherPassOtherRunsAndAnotherEntry) {
  Import({Entry("A", "x", 1.0, {0, 100})});
  Import({Entry("A", "x", 2.0, {101, 200}), Entry("A", "x", 3.0, {0, 100}, 1),
          Entry("B", "x", 4.0), Entry("A", "y", 5.0)});
  EXPECT_EQ(ToRead().Read({}).size(), 5U);
  EXPECT_EQ(ValueAt(50), 3.0);
  EXPECT_EQ(ValueAt(150), 2.0);
}

TEST_P(ImportTest, AddsRunsToAnEntryWithTheSameFields) {
  Import({Entry("A", "x", 1.0, {0, 100})});
  EXPECT_EQ(Import({Entry("A", "x", 1.0, {20, 30})}).unchanged, 1U);
  EXPECT_EQ(Import({Entry("A", "x", 1.0, {50, 150})}).added.size(), 1U);
  EXPECT_EQ(Import({Entry("A", "x", 1.0, {0, 150})}).unchanged, 1U);
  EXPECT_EQ(ValueAt(150), 1.0);
}

TEST_P(ImportTest, RefusesAnOrderThatChangesWhichEntryCounts) {
  const TableEntry all = Entry("A", "x", 1.0);
  const TableEntry some = Entry("A", "x", 2.0, {10, 20});
  Import({all, some});
  EXPECT_EQ(ValueAt(15), 2.0);
  EXPECT_THROW(Import({all}), ImportRefused);
  EXPECT_THROW(Import({some, all}), ImportRefused);
  EXPECT_EQ(Import({all, some}).unchanged, 2U);
}

TEST_P(ImportTest, RefusesAnEntryThatWouldHideOneThatStands) {
  const TableEntry some = Entry("A", "x", 2.0, {10, 20});
  Import({some});
  // Hidden by the second in the import, but added after the one that stands.
  EXPECT_THROW(Import({Entry("A", "x", 1.0), some}), ImportRefused);
  EXPECT_EQ(ValueAt(15), 2.0);
}

TEST_P(ImportTest, GivesWhatDiffersTheNextFreePass) {
  Import({Entry("A", "x", 1.0), Entry("A", "y", 1.0)});
  const std::vector<TableEntry> second = {Entry("A", "x", 2.0, {10, 20}),
                                          Entry("A", "y", 1.0)};
  const ImportResult result = Import(second, true);
  EXPECT_EQ(result.added, std::vector{Entry("A", "x", 2.0, {10, 20}, 1)});
  EXPECT_EQ(result.unchanged, 1U);
  EXPECT_EQ(ValueAt(15), 2.0);
  EXPECT_EQ(ValueAt(21), 1.0);
  const ImportResult third = Import({Entry("A", "x", 3.0, {15, 15})}, true);
  EXPECT_EQ(third.added.at(0).pass, 2);
  EXPECT_EQ(ValueAt(15), 3.0);
  Import({Entry("A", "z", 1.0, {}, 3)});
  EXPECT_EQ(Import({Entry("A", "z", 2.0, {}, 3)}, true).added.at(0).pass, 4);
  // A pass is free where no entry for the same runs has it.
  EXPECT_EQ(Import({Entry("A", "x", 4.0, {90, 99})}, true).added.at(0).pass, 1);
}

TEST_P(ImportTest, AddsANewPassOnlyOnce) {
  Import({Entry("A", "x", 1.0)});
  Import({Entry("A", "x", 2.0)}, true);
  const ImportResult again = Import({Entry("A", "x", 2.0)}, true);
  EXPECT_FALSE(again.import.has_value());
  EXPECT_EQ(again.unchanged, 1U);
  // Back to what stood first: a new pass, because another one is in use.
  EXPECT_EQ(Import({Entry("A", "x", 1.0)}, true).added.at(0).pass, 2);
  EXPECT_EQ(ValueAt(0), 1.0);
}

TEST_P(ImportTest, PutsANewPassAboveAHigherOne) {
  Import({Entry("A", "x", 1.0, {}, 5)});
  Import({Entry("A", "x", 2.0, {0, 9})}, true);
  EXPECT_EQ(ValueAt(0), 2.0);
  EXPECT_EQ(ValueAt(10), 1.0);
  // Where nothing stands, nothing needs a new pass.
  EXPECT_EQ(Import({Entry("A", "y", 2.0, {0, 9}, 3)}, true).added.at(0).pass,
            3);
}

TEST_P(ImportTest, KeepsTheOrderOfPassesInANewPass) {
  const std::vector<TableEntry> entries = {Entry("A", "x", 1.0),
                                           Entry("A", "x", 2.0, {10, 20}, 1)};
  Import(entries);
  Import({Entry("A", "x", 3.0), entries[1]}, true);
  EXPECT_EQ(ValueAt(0), 3.0);
  EXPECT_EQ(ValueAt(15), 2.0);
}

TEST_P(ImportTest, RefusesAPassThatDoesNotExist) {
  constexpr int kHighest = std::numeric_limits<int>::max();
  Import({Entry("A", "x", 1.0, {}, kHighest)});
  EXPECT_EQ(TextOf<ImportRefused>(
                [&] { Import({Entry("A", "x", 2.0, {}, kHighest)}, true); }),
            "A/x, pass 2147483647, all runs: there is no higher pass");
}

TEST_P(ImportTest, RefusesWhatCannotBeStored) {
  const auto reason = [&](TableEntry entry) {
    return TextOf<ImportRefused>([&] { Import({std::move(entry)}); });
  };
  TableEntry entry = Entry("A", "x", std::numeric_limits<double>::infinity());
  EXPECT_EQ(reason(entry),
            "A/x, pass 0, all runs: the field value has a number that is not "
            "finite");
  entry.fields["value"] =
      std::vector<double>{1.0, std::numeric_limits<double>::quiet_NaN()};
  EXPECT_NE(reason(entry).find("not finite"), std::string::npos);
  entry.fields["value"] = std::string("\xff");
  EXPECT_NE(reason(entry).find("the field value is not UTF-8"),
            std::string::npos);
  EXPECT_NE(reason(Entry(std::string("A\0", 2), "x", 1.0)).find("NUL"),
            std::string::npos);
  EXPECT_NE(reason(Entry("A", "x\xc3", 1.0)).find("not UTF-8"),
            std::string::npos);
  EXPECT_NE(reason(Entry("A", "x", 1.0, {}, -1)).find("below 0"),
            std::string::npos);
  EXPECT_NE(reason(Entry("A", "x", 1.0, {2, 1})).find("before the first"),
            std::string::npos);
  EXPECT_THROW(
      ToImport().Import({Entry("A", "x", 1.0)}, {"\xff", "", ""}, false),
      ImportRefused);
  EXPECT_TRUE(ToRead().Imports().empty());
}

TEST_P(ImportTest, AcceptsNothing) {
  EXPECT_FALSE(Import({}).import.has_value());
  EXPECT_TRUE(ToRead().Read({}).empty());
}

}  // namespace
}  // namespace ZARN::SQL

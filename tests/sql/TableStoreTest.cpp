#include "sql/TableStore.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "db/Fingerprint.hpp"
#include "tests/sql/StoreTest.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::SQL {
namespace {

using Testing::Entry;
using Testing::Note;
using ZARN::Testing::TextOf;

class TableStoreTest : public Testing::StoreTest {
 protected:
  std::vector<TableEntry> AfterImport(const std::vector<TableEntry>& entries) {
    ToImport().Import(entries, Note(), false);
    return ToRead().Read({});
  }
};

INSTANTIATE_TEST_SUITE_P(Engines, TableStoreTest,
                         testing::ValuesIn(Testing::Engines()),
                         Testing::NameOfEngine);

std::vector<double> DoublesOfAllKinds() {
  using Limits = std::numeric_limits<double>;
  std::vector<double> numbers = {0.0,
                                 -0.0,
                                 0.1,
                                 1.0 / 3.0,
                                 1e22,
                                 1e23,
                                 9007199254740993.0,
                                 5e-324,
                                 2.2250738585072011e-308,
                                 Limits::min(),
                                 Limits::max(),
                                 Limits::lowest(),
                                 Limits::epsilon()};
  std::mt19937_64 random(20260131);
  while (numbers.size() < 20000) {
    const std::uint64_t bits = random();
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof number);
    if (std::isfinite(number)) numbers.push_back(number);
  }
  return numbers;
}

TEST_P(TableStoreTest, ReturnsEveryDoubleToTheLastBit) {
  const std::vector<double> numbers = DoublesOfAllKinds();
  TableEntry entry = Entry("SOLID", "rope", -0.0);
  entry.fields["list"] = numbers;
  const auto read = AfterImport({entry});
  ASSERT_EQ(read.size(), 1U);
  EXPECT_TRUE(std::signbit(std::get<double>(read[0].fields.at("value"))));
  const auto& list = std::get<std::vector<double>>(read[0].fields.at("list"));
  ASSERT_EQ(list.size(), numbers.size());
  EXPECT_EQ(
      std::memcmp(list.data(), numbers.data(), numbers.size() * sizeof(double)),
      0);
}

TEST_P(TableStoreTest, ReturnsTextOfAllKinds) {
  const std::string hostile = "'; DROP TABLE zarn_entry; -- \\ \" $1 :id % \n";
  TableEntry entry = Entry(hostile, "Größe 绳 \U0001F9F6", 1.0);
  entry.fields[hostile] = hostile + std::string("\0 and \x01", 7);
  entry.fields["empty"] = std::string();
  entry.fields["none"] = std::vector<double>();
  entry.fields[""] = 2.0;
  const ImportNote note = {hostile, "é\n'", ""};
  ToImport().Import({entry, Entry("", "", 3.0)}, note, false);
  EXPECT_EQ(ToRead().Read({}), (std::vector{entry, Entry("", "", 3.0)}));
  const auto imports = ToRead().Imports();
  ASSERT_EQ(imports.size(), 1U);
  EXPECT_EQ(imports[0].author, hostile);
  EXPECT_EQ(imports[0].reason, "é\n'");
  EXPECT_EQ(imports[0].source, "");
}

TEST_P(TableStoreTest, ReturnsRunsPassesAndOrder) {
  constexpr int kLowest = std::numeric_limits<int>::min();
  constexpr int kHighest = std::numeric_limits<int>::max();
  const std::vector<TableEntry> entries = {
      Entry("B", "x", 1.0, {5, kHighest}), Entry("A", "x", 2.0, {kLowest, 7}),
      Entry("A", "y", 3.0, {-3, -3}, kHighest), Entry("A", "y", 4.0),
      // Of equal entries, the last counts.
      Entry("A", "z", 5.0), Entry("A", "z", 6.0),
      Entry("A", "limits", 7.0, {kLowest + 1, kHighest - 1})};
  EXPECT_EQ(AfterImport(entries), entries);
  EXPECT_EQ(Count("zarn_entry WHERE first_run IS NULL"), 4);
  EXPECT_EQ(Count("zarn_entry WHERE last_run IS NULL"), 4);
}

TEST_P(TableStoreTest, NamesTheDatabaseAsTheSourceOfEntries) {
  const auto read = AfterImport({Entry("A", "x", 1.0)});
  EXPECT_EQ(read.at(0).source, Source());
  EXPECT_EQ(read.at(0).place.line, 0);
}

TEST_P(TableStoreTest, TellsWhoAddedWhatWhenAndWhy) {
  TableStore store = ToImport();
  const auto first = store.Import({Entry("A", "x", 1.0), Entry("A", "y", 2.0)},
                                  {"ann", "survey", "first.json"}, false);
  const auto second =
      store.Import({Entry("A", "x", 3.0, {}, 1)}, {"bob", "", "b"}, false);
  ASSERT_TRUE(first.import.has_value());
  EXPECT_EQ(first.import->number, 1);
  EXPECT_EQ(first.import->entries, 2U);
  EXPECT_EQ(first.added.size(), 2U);
  EXPECT_EQ(first.unchanged, 0U);
  const auto imports = ToRead().Imports();
  ASSERT_EQ(imports.size(), 2U);
  EXPECT_EQ(imports[0].author, "ann");
  EXPECT_EQ(imports[0].source, "first.json");
  EXPECT_EQ(imports[1].number, 2);
  EXPECT_EQ(imports[1].entries, 1U);
  EXPECT_EQ(imports[1].time, second.import->time);
  EXPECT_EQ(imports[1].time, ParseTime(imports[1].time));
  EXPECT_LT(imports[0].time, imports[1].time);
  const auto history = ToRead().History();
  ASSERT_EQ(history.size(), 3U);
  EXPECT_EQ(history[1].entry, Entry("A", "y", 2.0));
  EXPECT_EQ(history[1].import.author, "ann");
  EXPECT_EQ(history[2].import.number, 2);
}

TEST_P(TableStoreTest, ReadsWhatStoodAtATime) {
  TableStore store = ToImport();
  std::vector<std::string> times;
  std::vector<TableEntry> all;
  for (int pass = 0; pass < 5; ++pass) {
    all.push_back(Entry("A", "x", pass, {10 * pass, 100}, pass));
    times.push_back(store.Import({all.back()}, Note(), false).import->time);
  }
  EXPECT_EQ(store.Read("1999-12-31"), std::vector<TableEntry>());
  for (std::size_t i = 0; i < times.size(); ++i) {
    const std::vector<TableEntry> until(
        all.begin(), all.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    EXPECT_EQ(store.Read(times[i]), until);
  }
  EXPECT_EQ(store.Read("9000-01-01"), all);
  EXPECT_EQ(store.Read({}), all);
  EXPECT_THROW(store.Read("yesterday"), std::invalid_argument);
}

TEST_P(TableStoreTest, GivesEveryImportALaterTime) {
  TableStore store = ToImport();
  store.Import({Entry("A", "x", 1.0)}, Note(), false);
  // As by a machine whose clock is ahead.
  Execute("UPDATE zarn_import SET time = '2999-12-31T23:59:59.999999Z'");
  const auto next = store.Import({Entry("A", "y", 1.0)}, Note(), false);
  EXPECT_EQ(next.import->time, "3000-01-01T00:00:00.000000Z");
}

/// Random imports: new passes, new entries, for random runs.
std::vector<TableEntry> RandomEntries(std::mt19937& random, int import) {
  const auto below = [&](unsigned limit) {
    return static_cast<int>(random() % limit);
  };
  std::vector<TableEntry> entries;
  for (int i = 0; i <= below(3); ++i) {
    RunRange runs;
    if (below(3) > 0) runs.first = below(40);
    if (below(3) > 0) runs.last = std::max(runs.first, 0) + below(20);
    const double value = below(4) == 0 ? -0.0 : below(3);
    TableEntry entry =
        Entry(below(2) == 0 ? "A" : "B", below(2) == 0 ? "x" : "y", value, runs,
              10 * import + i);
    entry.fields["text"] = std::string("-0.0");
    entries.push_back(entry);
  }
  return entries;
}

TEST_P(TableStoreTest, FindsTheStateOfEveryRunByItsFingerprint) {
  std::mt19937 random(7);
  TableStore store = ToImport();
  for (int import = 0; import < 12; ++import) {
    store.Import(RandomEntries(random, import), Note(), false);
  }
  for (const Import& import : store.Imports()) {
    TableSet tables;
    tables.Add(store.Read(import.time));
    for (const int run : {-1000, -1, 0, 1, 7, 13, 20, 33, 39, 58, 60, 5000}) {
      SCOPED_TRACE("import " + std::to_string(import.number) + ", run " +
                   std::to_string(run));
      tables.SetRun(run);
      if (tables.CurrentEntries().empty()) continue;
      const std::string wanted = Fingerprint(tables);
      bool isFound = false;
      for (const TableState& state : store.FindStates(wanted)) {
        TableSet then;
        then.Add(store.Read(state.import.time));
        then.SetRun(state.runs.first);
        EXPECT_EQ(Fingerprint(then), wanted);
        then.SetRun(state.runs.last);
        EXPECT_EQ(Fingerprint(then), wanted);
        isFound = isFound || (state.import.number <= import.number &&
                              state.runs.Contains(run));
      }
      EXPECT_TRUE(isFound);
    }
  }
}

TEST_P(TableStoreTest, FindsOneStateWhereTheSameEntriesStand) {
  TableStore store = ToImport();
  store.Import({Entry("A", "x", 1.0)}, Note(), false);
  store.Import({Entry("A", "x", 2.0, {10, 20}, 1)}, Note(), false);
  TableSet tables;
  tables.Add({Entry("A", "x", 1.0)});
  const auto first = store.FindStates(Fingerprint(tables));
  ASSERT_EQ(first.size(), 1U);
  EXPECT_EQ(first[0].import.number, 1);
  EXPECT_EQ(first[0].runs.first, std::numeric_limits<int>::min());
  EXPECT_EQ(first[0].runs.last, std::numeric_limits<int>::max());
  TableSet changed;
  changed.Add({Entry("A", "x", 2.0)});
  const auto second = store.FindStates(Fingerprint(changed));
  ASSERT_EQ(second.size(), 1U);
  EXPECT_EQ(second[0].import.number, 2);
  EXPECT_EQ(second[0].runs.first, 10);
  EXPECT_EQ(second[0].runs.last, 20);
  EXPECT_TRUE(store.FindStates("none").empty());
}

TEST_P(TableStoreTest, WritesOneStateForRunsWithTheSameEntries) {
  TableStore store = ToImport();
  // Where the hidden entry begins and ends, nothing changes.
  store.Import({Entry("A", "x", 1.0, {}, 1), Entry("A", "x", 2.0, {10, 20})},
               Note(), false);
  EXPECT_EQ(Count("zarn_state"), 1);
  store.Import({Entry("B", "y", 1.0)}, Note(), false);
  EXPECT_EQ(Count("zarn_state"), 2);
}

TEST_P(TableStoreTest, WritesNoStateForRunsBetweenThoseOfAnImport) {
  TableStore store = ToImport();
  store.Import({Entry("A", "x", 1.0, {}, 5), Entry("A", "x", 2.0, {6, 9}, 6)},
               Note(), false);
  store.Import({Entry("A", "x", 3.0, {0, 5}), Entry("A", "x", 3.0, {10, 15})},
               Note(), false);
  TableSet tables;
  tables.Add({Entry("A", "x", 1.0)});
  std::vector<std::pair<int, int>> runs;
  for (const TableState& state : store.FindStates(Fingerprint(tables))) {
    if (state.import.number < 2) continue;
    runs.emplace_back(state.runs.first, state.runs.last);
  }
  EXPECT_EQ(runs, (std::vector<std::pair<int, int>>{{0, 5}, {10, 15}}));
}

TEST_P(TableStoreTest, NamesADamagedEntry) {
  ToImport().Import({Entry("A", "x", 1.0, {3, 9})}, Note(), false);
  Execute("UPDATE zarn_entry SET fields = '{\"value\":1'");
  const std::string text = TextOf<StoreError>([&] { ToRead().Read({}); });
  EXPECT_EQ(text.rfind(Source() + ": is damaged: A/x, pass 0, runs 3 to 9:", 0),
            0U)
      << text;
}

}  // namespace
}  // namespace ZARN::SQL

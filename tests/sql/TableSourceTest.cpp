#include "sql/TableSource.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "db/DBErrors.hpp"
#include "tests/sql/StoreTest.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN {
namespace {

using SQL::StoreError;
using SQL::TableStore;
using SQL::Testing::Entry;
using SQL::Testing::Note;
using Testing::TextOf;

class TableSourceTest : public SQL::Testing::StoreTest {
 protected:
  static double ValueAt(const TableSource& source, int run) {
    TableSet tables;
    LoadTables(tables, source);
    tables.SetRun(run);
    return tables.GetLink("A", "x", TableSet::kHighestPass)->GetD("value");
  }
};

INSTANTIATE_TEST_SUITE_P(Engines, TableSourceTest,
                         testing::ValuesIn(SQL::Testing::Engines()),
                         SQL::Testing::NameOfEngine);

constexpr const char* kJson =
    R"([{"table": "A", "index": "x", "fields": {"value": 1}}])";
constexpr const char* kOverride =
    R"([{"table": "A", "index": "x", "runs": [10, 20],
         "fields": {"value": 9}}])";

TEST_P(TableSourceTest, LaysLocalJsonOverADatabase) {
  ToImport().Import({Entry("A", "x", 1.0, {}, 5)}, Note(), false);
  Put("mine.json", kOverride);
  const TableSource source = {Source(), "mine.json", {}};
  EXPECT_EQ(ValueAt(source, 9), 1.0);
  EXPECT_EQ(ValueAt(source, 10), 9.0);
  EXPECT_EQ(ReadTables(source).size(), 1U);
}

TEST_P(TableSourceTest, ReadsWhatStoodThen) {
  TableStore store = ToImport();
  const auto first = store.Import({Entry("A", "x", 1.0)}, Note(), false);
  store.Import({Entry("A", "x", 2.0, {}, 1)}, Note(), false);
  EXPECT_EQ(ValueAt({Source(), "", {}}, 0), 2.0);
  EXPECT_EQ(ValueAt({Source(), "", first.import->time}, 0), 1.0);
  EXPECT_EQ(TextOf<std::invalid_argument>([&] {
              ReadTables({Source(), "", "2000-01-01"});
            }),
            Source() +
                ": there were no tables at 2000-01-01T23:59:59.999999Z; the "
                "first import was at " +
                first.import->time);
}

TEST_P(TableSourceTest, LeavesTheSetAsItWasIfItThrows) {
  ToImport().Import({Entry("A", "x", 1.0)}, Note(), false);
  Put("bad.json", "[{}]");
  TableSet tables;
  EXPECT_THROW(LoadTables(tables, {Source(), "bad.json", {}}), TableFileError);
  EXPECT_TRUE(tables.CurrentEntries().empty());
}

TEST_P(TableSourceTest, NamesTheFilesThatItReads) {
  Put("mine.json", kOverride);
  const auto files = FilesOf({Source(), "mine.json", {}});
  if (IsServer()) {
    EXPECT_EQ(files, std::vector<std::string>{"mine.json"});
  } else {
    EXPECT_EQ(files, (std::vector<std::string>{"tables.db", "mine.json"}));
  }
}

class JsonSourceTest : public Testing::InFolder {};

TEST_F(JsonSourceTest, ReadsJsonWithLocalJsonOverIt) {
  Put("tables.json", kJson);
  Put("mine.json", kOverride);
  TableSet tables;
  tables.SetRun(15);
  LoadTables(tables, {"tables.json", "mine.json", {}});
  EXPECT_EQ(tables.GetRun(), 15);
  EXPECT_EQ(tables.GetLink("A", "x", -1)->GetD("value"), 9.0);
  EXPECT_EQ(FilesOf({"tables.json", "mine.json", {}}),
            (std::vector<std::string>{"tables.json", "mine.json"}));
}

TEST_F(JsonSourceTest, HasNoHistory) {
  Put("tables.json", kJson);
  EXPECT_EQ(TextOf<std::invalid_argument>([] {
              ReadTables({"tables.json", "", "2026-01-01"});
            }),
            "tables.json: JSON has no history to read as of a time; a database "
            "has (sqlite:FILE, postgresql:CONNECTION)");
}

TEST_F(JsonSourceTest, NamesAMissingFile) {
  EXPECT_THROW(ReadTables({"none.json", "", {}}), TableFileError);
  EXPECT_THROW(ReadTables({"sqlite:none.db", "", {}}), StoreError);
}

}  // namespace
}  // namespace ZARN

#include "db/JsonText.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "db/JsonTables.hpp"

namespace ZARN {
namespace {

TableEntry EntryOf(const std::string& table, const std::string& index) {
  TableEntry entry;
  entry.table = table;
  entry.index = index;
  return entry;
}

void ExpectSame(const std::vector<TableEntry>& found,
                const std::vector<TableEntry>& wanted) {
  ASSERT_EQ(found.size(), wanted.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].table, wanted[i].table);
    EXPECT_EQ(found[i].index, wanted[i].index);
    EXPECT_EQ(found[i].pass, wanted[i].pass);
    EXPECT_EQ(found[i].runs.first, wanted[i].runs.first);
    EXPECT_EQ(found[i].runs.last, wanted[i].runs.last);
    EXPECT_EQ(found[i].fields, wanted[i].fields);
  }
}

TEST(JsonText, IsLaidOutForPeople) {
  TableEntry rope = EntryOf("SOLID", "rope");
  rope.fields = {{"r_rope", 12.5},
                 {"name", "a \"rope\""},
                 {"none", std::vector<double>{}},
                 {"x", std::vector<double>{1, -2.5, 1e300}}};
  TableEntry later = EntryOf("GEO", "av");
  later.runs.first = 1000;
  later.pass = 2;
  EXPECT_EQ(JsonText({rope, later}), R"([
  {
    "table": "SOLID",
    "index": "rope",
    "fields": {
      "name": "a \"rope\"",
      "none": [],
      "r_rope": 12.5,
      "x": [1, -2.5, 1e+300]
    }
  },
  {
    "table": "GEO",
    "index": "av",
    "runs": [1000, null],
    "pass": 2,
    "fields": {}
  }
]
)");
  EXPECT_EQ(JsonText({}), "[]\n");
}

TEST(JsonText, BreaksLongArraysIntoLinesOfAtMost100Characters) {
  TableEntry entry = EntryOf("GEO_LOCATIONS", "ncd_anchors");
  for (const std::size_t size : {10U, 13U, 14U, 15U, 16U, 100U}) {
    const std::string name = "x" + std::to_string(size);
    entry.fields[name] = std::vector<double>(size, -54.25);
  }
  const std::string text = JsonText({entry});
  std::istringstream lines(text);
  std::size_t longest = 0;
  for (std::string line; std::getline(lines, line);) {
    longest = std::max(longest, line.size());
    EXPECT_NE(line.back(), ' ');
  }
  EXPECT_LE(longest, 100U);
  EXPECT_GE(longest, 93U);
  ExpectSame(ParseJsonTables(text, "text"), {entry});
}

TEST(JsonText, ReadsBackAsTheSameEntries) {
  std::mt19937_64 random(7);  // NOLINT(cert-msc51-cpp): repeatable
  std::vector<TableEntry> entries;
  for (int i = 0; i < 200; ++i) {
    TableEntry entry =
        EntryOf("T" + std::to_string(random() % 5), "'; DROP\n\"\u00e9\\");
    entry.pass = static_cast<int>(random() % 3);
    const int first = static_cast<int>(random() % 1000) - 500;
    if (random() % 2 == 0) entry.runs.first = first;
    if (random() % 2 == 0) entry.runs.last = first + 10;
    std::vector<double> numbers;
    for (std::uint64_t k = random() % 40; k > 0; --k) {
      numbers.push_back(std::ldexp(static_cast<double>(random()) * 1e-3,
                                   static_cast<int>(random() % 400) - 200));
    }
    entry.fields = {{"x", numbers}, {"zero", -0.0}, {"", ""}};
    entries.push_back(entry);
  }
  const std::string text = JsonText(entries);
  ExpectSame(ParseJsonTables(text, "text"), entries);
  EXPECT_EQ(JsonText(ParseJsonTables(text, "text")), text);
}

TEST(JsonText, KeepsARunThatIsTheHighestOrLowestInteger) {
  TableEntry entry = EntryOf("A", "b");
  entry.runs = {std::numeric_limits<int>::max(),
                std::numeric_limits<int>::max()};
  TableEntry other = EntryOf("A", "b");
  other.runs = {std::numeric_limits<int>::min(),
                std::numeric_limits<int>::min()};
  ExpectSame(ParseJsonTables(JsonText({entry, other}), "text"), {entry, other});
}

TEST(JsonText, HoldsTheReferenceDetector) {
  const auto entries = ReadJsonTables(ZARN_DATA_DIR "/reference-detector");
  ExpectSame(ParseJsonTables(JsonText(entries), "text"), entries);
}

}  // namespace
}  // namespace ZARN

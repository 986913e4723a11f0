#include "db/Fingerprint.hpp"

#include <gtest/gtest.h>

#include <string>

#include "db/JsonTables.hpp"

namespace ZARN {
namespace {

TableSet TablesOf(const std::string& json, int run = 0) {
  TableSet tables;
  tables.Add(ParseJsonTables(json, "test"));
  tables.SetRun(run);
  return tables;
}

constexpr const char* kRopeAndVessel = R"([
  {"table": "SOLID", "index": "rope", "fields": {"r": 12.5, "x": [1, -2e3]}},
  {"table": "GEO", "index": "av", "fields": {"name": "\"é\" a\n", "none": []}}
])";

TEST(Fingerprint, HasOneCanonicalTextForAllLayouts) {
  const std::string text = R"({"GEO":{"av":{"name":"\"é\" a\n","none":[]}},)"
                           R"("SOLID":{"rope":{"r":12.5,"x":[1,-2000]}}})";
  EXPECT_EQ(CanonicalText(TablesOf(kRopeAndVessel)), text);
  TableSet parts = TablesOf(
      R"([{"fields":{"none":[],"name":"\"\u00e9\" a\u000a"},
           "index":"av","table":"GEO","runs":[null,9],"pass":4}])");
  parts.Add(ParseJsonTables(
      R"([{"table":"SOLID","index":"rope",
           "fields":{"x":[1.0,-2000.000],"r":125e-1}}])",
      "test"));
  EXPECT_EQ(CanonicalText(parts), text);
}

TEST(Fingerprint, JoinsTheEntriesOfATable) {
  EXPECT_EQ(CanonicalText(TablesOf(
                R"([{"table": "A", "index": "b", "fields": {"x": 0.1}},
                    {"table": "A", "index": "a", "fields": {}},
                    {"table": "", "index": "b", "fields": {"y": 1e300}}])")),
            R"({"":{"b":{"y":1e+300}},"A":{"a":{},"b":{"x":0.1}}})");
  EXPECT_EQ(CanonicalText(TableSet()), "{}");
}

TEST(Fingerprint, IsTheSha256OfTheText) {
  // Of the text {}, as sha256sum prints it.
  EXPECT_EQ(Fingerprint(TableSet()),
            "44136fa355b3678a1146ad16f7e8649e94fb4fc21fe77e8310c060f61caaff8a");
}

TEST(Fingerprint, ChangesWithANumberAFieldOrAName) {
  const std::string vessel =
      R"([{"table": "SOLID", "index": "av", "fields": {"r": 5800}}])";
  const std::string plain = Fingerprint(TablesOf(vessel));
  for (
      const char* const changed : {
          R"([{"table": "SOLID", "index": "av", "fields": {"r": 5800.000000000001}}])",
          R"([{"table": "SOLID", "index": "av", "fields": {"r": "5800"}}])",
          R"([{"table": "SOLID", "index": "av", "fields": {"r": [5800]}}])",
          R"([{"table": "SOLID", "index": "av", "fields": {"r": 5800, "z": 0}}])",
          R"([{"table": "SOLID", "index": "aw", "fields": {"r": 5800}}])",
          R"([{"table": "SOLIE", "index": "av", "fields": {"r": 5800}}])",
      }) {
    EXPECT_NE(Fingerprint(TablesOf(changed)), plain) << changed;
  }
}

TEST(Fingerprint, DependsOnTheEntriesThatARunReadsOnly) {
  const std::string tables =
      R"([{"table": "GEO", "index": "av", "runs": [null, 99],
           "fields": {"z": 1}},
          {"table": "GEO", "index": "av", "runs": [100, null],
           "fields": {"z": 2}},
          {"table": "GEO", "index": "av", "runs": [100, 200], "pass": 1,
           "fields": {"z": 3}}])";
  const auto of = [&tables](int run) {
    return Fingerprint(TablesOf(tables, run));
  };
  EXPECT_EQ(of(0), of(99));
  EXPECT_EQ(of(100), of(200));
  EXPECT_NE(of(0), of(100));
  EXPECT_NE(of(100), of(201));
  EXPECT_NE(of(0), of(201));
}

TEST(Fingerprint, AcceptsTextThatIsNotUtf8) {
  TableEntry entry;
  entry.table = "A\xFF";
  TableSet tables;
  tables.Add({entry});
  EXPECT_EQ(Fingerprint(tables).size(), 64U);
}

}  // namespace
}  // namespace ZARN

#include "db/CompareTables.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "db/CanonicalJson.hpp"
#include "db/Fingerprint.hpp"
#include "db/JsonTables.hpp"
#include "db/RunText.hpp"
#include "db/TableSet.hpp"

namespace ZARN {
namespace {

using eKind = EntryDifference::eKind;

/// A difference on one line: "r: 1 -> 2", "x[3]: 1 -> none".
std::string LineOf(const FieldDifference& difference) {
  const auto valueOf = [](const std::optional<TableField>& field) {
    return field.has_value() ? JsonOfFields({{"", *field}}) : "none";
  };
  std::ostringstream text;
  text << difference.field;
  if (difference.position) text << "[" << *difference.position << "]";
  text << ": " << valueOf(difference.before) << " -> "
       << valueOf(difference.after);
  return text.str();
}

std::vector<std::string> LinesOf(const std::string& before,
                                 const std::string& after,
                                 const std::optional<int>& run = {}) {
  std::vector<std::string> lines;
  for (const auto& entry :
       CompareTables(ParseJsonTables(before, "before"),
                     ParseJsonTables(after, "after"), run)) {
    const std::string name =
        entry.table + "/" + entry.index + ", " + TextOf(entry.runs);
    if (entry.kind == eKind::kOnlyBefore) lines.push_back("- " + name);
    if (entry.kind == eKind::kOnlyAfter) lines.push_back("+ " + name);
    for (const auto& field : entry.fields) {
      lines.push_back(name + ", " + LineOf(field));
    }
  }
  return lines;
}

using Lines = std::vector<std::string>;

std::string Av(const std::string& fields, const std::string& more = "") {
  return R"({"table": "GEO", "index": "av", "fields": {)" + fields + "}" +
         more + "}";
}

TEST(CompareTables, FindsNothingInEqualTables) {
  const std::string tables = "[" + Av(R"("z": 1, "x": [1, 2], "n": "a")") + "]";
  EXPECT_EQ(LinesOf(tables, tables), Lines());
  EXPECT_EQ(LinesOf("[]", "[]"), Lines());
}

TEST(CompareTables, NamesFieldsAndValues) {
  EXPECT_EQ(LinesOf("[" + Av(R"("z": 1, "n": "a", "gone": 1, "same": 3)") + "]",
                    "[" + Av(R"("z": 2, "n": 5, "new": "b", "same": 3)") + "]"),
            Lines({R"(GEO/av, all runs, gone: {"":1} -> none)",
                   R"(GEO/av, all runs, n: {"":"a"} -> {"":5})",
                   R"(GEO/av, all runs, new: none -> {"":"b"})",
                   R"(GEO/av, all runs, z: {"":1} -> {"":2})"}));
}

TEST(CompareTables, NamesThePositionsInArrays) {
  EXPECT_EQ(LinesOf("[" + Av(R"("x": [1, 2, 3], "y": [1], "z": [])") + "]",
                    "[" + Av(R"("x": [1, 5], "y": 1, "z": [])") + "]"),
            Lines({R"(GEO/av, all runs, x[1]: {"":2} -> {"":5})",
                   R"(GEO/av, all runs, x[2]: {"":3} -> none)",
                   R"(GEO/av, all runs, y: {"":[1]} -> {"":1})"}));
}

TEST(CompareTables, TellsTheLastBitAndTheSignOfZero) {
  EXPECT_EQ(
      LinesOf("[" + Av(R"("a": 5800, "b": 0.0, "c": [0.0])") + "]",
              "[" + Av(R"("a": 5800.000000000001, "b": -0.0,
                             "c": [-0.0])") +
                  "]"),
      Lines({R"(GEO/av, all runs, a: {"":5800} -> {"":5800.000000000001})",
             R"(GEO/av, all runs, b: {"":0} -> {"":-0.0})",
             R"(GEO/av, all runs, c[0]: {"":0} -> {"":-0.0})"}));
}

TEST(CompareTables, ComparesWhatHoldsForEachRun) {
  const std::string before = "[" + Av(R"("z": 1)") + "]";
  const std::string after =
      "[" + Av(R"("z": 1)") + "," +
      Av(R"("z": 2)", R"(, "pass": 1, "runs": [1000, 1999])") + "," +
      Av(R"("z": 2)", R"(, "pass": 2, "runs": [1500, 2500])") + "," +
      Av(R"("z": 3)", R"(, "pass": 1, "runs": [2400, null])") + "]";
  EXPECT_EQ(LinesOf(before, after),
            Lines({R"(GEO/av, runs 1000 to 2500, z: {"":1} -> {"":2})",
                   R"(GEO/av, runs from 2501, z: {"":1} -> {"":3})"}));
  EXPECT_EQ(LinesOf(before, after, 1700),
            Lines({R"(GEO/av, run 1700, z: {"":1} -> {"":2})"}));
  EXPECT_EQ(LinesOf(before, after, 999), Lines());
}

TEST(CompareTables, TellsEntriesThatOnlyOneOfThemHas) {
  const std::string av = "[" + Av(R"("z": 1)", R"(, "runs": [5, 9])") + "]";
  EXPECT_EQ(LinesOf(av, "[]"), Lines({"- GEO/av, runs 5 to 9"}));
  EXPECT_EQ(LinesOf("[]", av), Lines({"+ GEO/av, runs 5 to 9"}));
  EXPECT_EQ(LinesOf("[]", av, 4), Lines());
}

TEST(CompareTables, ReachesBothEndsOfTheRuns) {
  const std::string before = "[" + Av(R"("z": 1)") + "]";
  const std::string after =
      "[" + Av(R"("z": 2)", R"(, "runs": [-2147483648, -2147483648])") + "," +
      Av(R"("z": 3)", R"(, "runs": [2147483647, 2147483647])") + "]";
  EXPECT_EQ(LinesOf(before, after),
            Lines({R"(GEO/av, run -2147483648, z: {"":1} -> {"":2})",
                   "- GEO/av, runs -2147483647 to 2147483646",
                   R"(GEO/av, run 2147483647, z: {"":1} -> {"":3})"}));
}

TEST(CompareTables, AgreesWithTheFingerprintsOfEachRun) {
  std::mt19937 random(3);  // NOLINT(cert-msc51-cpp): repeatable
  const auto some = [&random](int below) {
    return static_cast<int>(random() % static_cast<unsigned>(below));
  };
  const auto entries = [&] {
    std::vector<TableEntry> made;
    for (int i = some(5); i >= 0; --i) {
      TableEntry entry;
      entry.table = some(2) == 0 ? "A" : "B";
      entry.index = "c";
      entry.pass = some(3);
      entry.runs.first = some(10);
      entry.runs.last = entry.runs.first + some(10);
      entry.fields["x"] = static_cast<double>(some(2));
      made.push_back(entry);
    }
    return made;
  };
  for (int round = 0; round < 500; ++round) {
    const auto before = entries();
    const auto after = entries();
    TableSet a;
    TableSet b;
    a.Add(before);
    b.Add(after);
    const auto found = CompareTables(before, after);
    for (int run = -1; run < 21; ++run) {
      a.SetRun(run);
      b.SetRun(run);
      bool isFound = false;
      for (const auto& entry : found) isFound |= entry.runs.Contains(run);
      EXPECT_EQ(isFound, Fingerprint(a) != Fingerprint(b)) << run;
      EXPECT_EQ(isFound, !CompareTables(before, after, run).empty()) << run;
    }
  }
}

}  // namespace
}  // namespace ZARN

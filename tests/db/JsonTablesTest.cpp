#include "db/JsonTables.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "db/DB.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN {
namespace {

using Testing::TextOf;
namespace fs = std::filesystem;

std::vector<TableEntry> Parse(const std::string& text) {
  return ParseJsonTables(text, "geo.json");
}

std::string ErrorText(const std::string& text) {
  return TextOf<TableFileError>([&] { Parse(text); });
}

/// An entry whose field "f" is the given JSON.
std::string WithField(const std::string& json) {
  return R"([{"table": "GEO", "index": "av", "fields": {"f": )" + json + "}}]";
}

/// An entry with one more key.
std::string WithKey(const std::string& keyAndValue) {
  return R"([{"table": "GEO", "index": "av", "fields": {}, )" + keyAndValue +
         "}]";
}

TEST(JsonTables, ReadsEntriesWithAllKeys) {
  const auto entries = Parse(R"([
    {"table": "SOLID", "index": "acrylic_vessel_inner",
     "fields": {"r_sphere": 5800.0, "count": 3, "x": [1, -2.5, 1e3],
                "empty": [], "name": "rope \u00e9\n"}},
    {"table": "GEO", "index": "hold_up_ropes", "runs": [1000, null],
     "pass": 1, "fields": {}}
  ])");
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].table, "SOLID");
  EXPECT_EQ(entries[0].index, "acrylic_vessel_inner");
  EXPECT_EQ(entries[0].pass, 0);
  EXPECT_TRUE(entries[0].runs.Contains(std::numeric_limits<int>::min()));
  EXPECT_TRUE(entries[0].runs.Contains(std::numeric_limits<int>::max()));
  const std::map<std::string, TableField> fields = {
      {"r_sphere", 5800.0},
      {"count", 3.0},
      {"x", std::vector<double>{1.0, -2.5, 1000.0}},
      {"empty", std::vector<double>{}},
      {"name", "rope \xC3\xA9\n"}};
  EXPECT_EQ(entries[0].fields, fields);
  EXPECT_EQ(entries[1].runs.first, 1000);
  EXPECT_EQ(entries[1].runs.last, std::numeric_limits<int>::max());
  EXPECT_EQ(entries[1].pass, 1);
}

TEST(JsonTables, ReadsNumbersToTheNearestDouble) {
  const auto number = [](const std::string& json) {
    return std::get<double>(Parse(WithField(json))[0].fields["f"]);
  };
  EXPECT_EQ(number("0.1"), 0.1);
  EXPECT_EQ(number("-0.0"), 0.0);
  EXPECT_TRUE(std::signbit(number("-0.0")));
  EXPECT_EQ(number("9007199254740993"), 9007199254740992.0);
  EXPECT_EQ(number("18446744073709551615"), 18446744073709551615.0);
  EXPECT_EQ(number("-9223372036854775808"), -9223372036854775808.0);
  EXPECT_EQ(number("1e30"), 1e30);
  EXPECT_EQ(number("4.9e-324"), 4.9e-324);
  EXPECT_EQ(number("1e-400"), 0.0);
}

TEST(JsonTables, RefusesUnknownKeys) {
  EXPECT_EQ(ErrorText(WithKey("\"Pass\": 1")),
            "geo.json:1: $[0].Pass: unknown key; an entry has table, index, "
            "runs, pass and fields");
  EXPECT_EQ(ErrorText(WithKey("\"a key\": 1")),
            "geo.json:1: $[0][\"a key\"]: unknown key; an entry has table, "
            "index, runs, pass and fields");
}

TEST(JsonTables, RefusesMissingKeys) {
  EXPECT_EQ(ErrorText("[\n\n{\"index\": \"a\", \"fields\": {}}]"),
            "geo.json:3: $[0]: the key \"table\" is missing");
  EXPECT_EQ(ErrorText("[{\"table\": \"a\", \"fields\": {}}]"),
            "geo.json:1: $[0]: the key \"index\" is missing");
  EXPECT_EQ(ErrorText("[{\"table\": \"a\", \"index\": \"b\"}]"),
            "geo.json:1: $[0]: the key \"fields\" is missing");
}

TEST(JsonTables, RefusesAWrongStructure) {
  EXPECT_EQ(ErrorText("{}"),
            "geo.json:1: $: expected an array of table entries");
  EXPECT_EQ(ErrorText("[1]"),
            "geo.json:1: $[0]: expected a table entry (a JSON object)");
  EXPECT_EQ(ErrorText("[{\"table\": 1, \"index\": \"b\", \"fields\": {}}]"),
            "geo.json:1: $[0].table: expected a string");
  EXPECT_EQ(ErrorText("[{\"table\": \"a\", \"index\": \"b\", \"fields\": []}]"),
            "geo.json:1: $[0].fields: expected an object of fields");
  const std::string wanted =
      "geo.json:1: $[0].fields.f: expected a number, an array of numbers or a "
      "string";
  for (const char* const json : {"null", "true", "{}"}) {
    EXPECT_EQ(ErrorText(WithField(json)), wanted) << json;
  }
  EXPECT_EQ(ErrorText(WithField("[1, \"2\"]")),
            "geo.json:1: $[0].fields.f[1]: expected a number");
  EXPECT_EQ(ErrorText(WithField("[[1]]")),
            "geo.json:1: $[0].fields.f[0]: expected a number");
}

TEST(JsonTables, RefusesBadRunsAndPasses) {
  EXPECT_EQ(ErrorText(WithKey("\"runs\": 5")),
            "geo.json:1: $[0].runs: expected a range [first run, last run]");
  EXPECT_EQ(ErrorText(WithKey("\"runs\": [1]")),
            "geo.json:1: $[0].runs: expected two runs, found 1");
  EXPECT_EQ(ErrorText(WithKey("\"runs\": [5, 4]")),
            "geo.json:1: $[0].runs[1]: the last run is before the first");
  EXPECT_EQ(ErrorText(WithKey("\"runs\": [1.5, 4]")),
            "geo.json:1: $[0].runs[0]: expected a whole number from "
            "-2147483648 to 2147483647");
  const std::string passes =
      "geo.json:1: $[0].pass: expected a whole number from 0 to 2147483647";
  for (const char* const json :
       {"-1", "1.0", "2147483648", "18446744073709551615", "\"1\"", "null"}) {
    EXPECT_EQ(ErrorText(WithKey(std::string("\"pass\": ") + json)), passes)
        << json;
  }
}

TEST(JsonTables, AcceptsARangeOfOneRunAndOpenRanges) {
  const auto runs = [](const std::string& json) {
    return Parse(WithKey("\"runs\": " + json))[0].runs;
  };
  EXPECT_EQ(runs("[5, 5]").first, 5);
  EXPECT_EQ(runs("[5, 5]").last, 5);
  EXPECT_EQ(runs("[null, -3]").first, std::numeric_limits<int>::min());
  EXPECT_EQ(runs("[null, -3]").last, -3);
}

TEST(JsonTables, RefusesAKeyGivenTwice) {
  EXPECT_EQ(ErrorText("[{\"table\": \"a\",\n\"table\": \"b\"}]"),
            "geo.json:2: $[0]: the key \"table\" is given twice");
  EXPECT_EQ(ErrorText(WithField("1,\n\n\"f\": 2")),
            "geo.json:3: $[0].fields: the key \"f\" is given twice");
}

TEST(JsonTables, RefusesNumbersThatADoubleCannotHold) {
  EXPECT_EQ(ErrorText(WithField("[1,\n1e999]")),
            "geo.json:2: $[0].fields.f[1]: number overflow parsing '1e999'");
  for (const char* const json :
       {"NaN", "Infinity", "-Infinity", "+1", "0x10", "01", "1.", ".5"}) {
    const std::string error = ErrorText(WithField(json));
    EXPECT_EQ(error.rfind("geo.json:1: $[0].fields", 0), 0U) << error;
    EXPECT_NE(error.find(": syntax error"), std::string::npos) << error;
  }
}

TEST(JsonTables, RefusesTextThatIsNotJson) {
  for (const char* const text :
       {"", "[", "[{]", "[] []", "[{\"table\" 1}]", "// comment\n[]",
        "[\"\xFF\"]", "[\"a\nb\"]"}) {
    const std::string error = ErrorText(text);
    EXPECT_EQ(error.rfind("geo.json:", 0), 0U) << text << ": " << error;
    EXPECT_NE(error.find(": $"), std::string::npos) << text << ": " << error;
  }
}

TEST(JsonTables, RefusesDeepNestingBeforeItUsesMuchMemory) {
  const std::string error = ErrorText(std::string(100000, '['));
  EXPECT_EQ(error,
            "geo.json:1: $[0][0][0][0][0][0][0][0]: nesting too deep "
            "(limit 8)");
}

TEST(JsonTables, NamesTheLineOfANumberAtTheEndOfALine) {
  EXPECT_EQ(ErrorText("[\n1\n]"),
            "geo.json:2: $[0]: expected a table entry (a JSON object)");
}

/// "line:column".
std::string TextOfPlace(const TextPlace& place) {
  return std::to_string(place.line) + ":" + std::to_string(place.column);
}

TEST(JsonTables, SaysWhereEntriesAndFieldsBegin) {
  const auto entries = Parse(R"([{"table": "GEO", "index": "av", "fields": {}},
  {"table": "SOLID", "index": "rope \" {", "runs": [1, null],
   "fields": {"a": 1, "b":[1,2
     ],"c" :"x,\\","d":
 "\u00e4)"
                             "\xC3\xA9"
                             R"(", "e": -1.5e+3
    , "f": 0}}
])");
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].source, "geo.json");
  EXPECT_EQ(TextOfPlace(entries[0].place), "1:2");
  EXPECT_TRUE(entries[0].places.empty());
  EXPECT_EQ(TextOfPlace(entries[1].place), "2:3");
  std::map<std::string, std::string> places;
  for (const auto& [field, place] : entries[1].places) {
    places[field] = TextOfPlace(place);
  }
  const std::map<std::string, std::string> wanted = {
      {"a", "3:15"}, {"b", "3:23"}, {"c", "4:8"},
      {"d", "4:20"}, {"e", "5:14"}, {"f", "6:7"}};
  EXPECT_EQ(places, wanted);
}

class JsonTablesOnDisk : public testing::Test {
 protected:
  JsonTablesOnDisk() {
    folder_ =
        fs::temp_directory_path() / ("zarn-tables-" + std::to_string(getpid()));
    fs::create_directory(folder_);
  }
  ~JsonTablesOnDisk() override { fs::remove_all(folder_); }

  std::string Path(const std::string& name) const {
    return (folder_ / name).string();
  }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name) << text;
  }

  double LoadedValue() const {
    return tables_.GetLink("GEO", "av", -1)->GetD("f");
  }

  fs::path folder_;
  TableSet tables_;
};

TEST_F(JsonTablesOnDisk, LoadsAFile) {
  Write("geo.json", WithField("1.5"));
  LoadJsonTables(tables_, Path("geo.json"));
  EXPECT_EQ(LoadedValue(), 1.5);
}

TEST_F(JsonTablesOnDisk, LoadsAFileIntoTheProcessWideDatabase) {
  Write("geo.json", WithField("1.5"));
  DB::Get().Clear();
  LoadJsonTables(DB::Get(), Path("geo.json"));
  EXPECT_EQ(DB::Get().GetLink("GEO", "av", -1)->GetD("f"), 1.5);
  DB::Get().Clear();
}

TEST_F(JsonTablesOnDisk, LoadsADirectoryInNameOrderSoThatTheLastFileWins) {
  Write("b.json", WithField("2"));
  Write("a.json", WithField("1"));
  Write("c.txt", "no table");
  LoadJsonTables(tables_, folder_.string());
  EXPECT_EQ(LoadedValue(), 2.0);
}

TEST_F(JsonTablesOnDisk, LeavesTheTablesUnchangedIfAFileIsRefused) {
  Write("a.json", WithField("1"));
  LoadJsonTables(tables_, folder_.string());
  Write("a.json", WithField("2"));
  Write("b.json", WithField("true"));
  EXPECT_THROW(LoadJsonTables(tables_, folder_.string()), TableFileError);
  EXPECT_EQ(LoadedValue(), 1.0);
}

TEST_F(JsonTablesOnDisk, NamesTheBadFileOfADirectory) {
  Write("a.json", WithField("1"));
  Write("b.json", WithField("\n\ntrue"));
  EXPECT_EQ(TextOf<TableFileError>([&] { ReadJsonTables(folder_.string()); }),
            Path("b.json") +
                ":3: $[0].fields.f: expected a number, an array "
                "of numbers or a string");
}

TEST_F(JsonTablesOnDisk, RefusesAMissingFileAndAnEmptyDirectory) {
  EXPECT_EQ(TextOf<TableFileError>([&] { ReadJsonTables(Path("none.json")); }),
            Path("none.json") + ": cannot be read: No such file or directory");
  EXPECT_EQ(TextOf<TableFileError>([&] { ReadJsonTables(folder_.string()); }),
            folder_.string() + ": the directory has no *.json file");
}

TEST_F(JsonTablesOnDisk, RefusesAFileLargerThanAnyTable) {
  Write("huge.json", "[]");
  fs::resize_file(Path("huge.json"), (256ULL << 20U) + 1);
  EXPECT_EQ(TextOf<TableFileError>([&] { ReadJsonTables(Path("huge.json")); }),
            Path("huge.json") + ": larger than 256 MiB");
}

}  // namespace
}  // namespace ZARN

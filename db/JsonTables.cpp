#include "db/JsonTables.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <system_error>
#include <utility>

#include "db/JsonTree.hpp"

namespace ZARN {
namespace {

using Json::Node;
using eKind = Json::Node::eKind;

/// Converts the JSON tree of one text to table entries.
class TableReader {
 public:
  explicit TableReader(const std::string& name) : name_(name) {}

  std::vector<TableEntry> Read(const Node& root) const {
    Require(root, eKind::kArray, "an array of table entries");
    std::vector<TableEntry> entries;
    entries.reserve(root.items.size());
    for (const Node& item : root.items) entries.push_back(ReadEntry(item));
    return entries;
  }

  std::map<std::string, TableField> ReadFields(const Node& node) const {
    Require(node, eKind::kObject, "an object of fields");
    std::map<std::string, TableField> fields;
    for (const auto& [name, field] : node.members) {
      fields.emplace(name, ReadField(field));
    }
    return fields;
  }

 private:
  TableEntry ReadEntry(const Node& node) const {
    Require(node, eKind::kObject, "a table entry (a JSON object)");
    TableEntry entry;
    entry.source = name_;
    entry.place = node.place;
    bool hasTable = false;
    bool hasIndex = false;
    bool hasFields = false;
    for (const auto& [key, value] : node.members) {
      if (key == "table") {
        entry.table = ReadString(value);
        hasTable = true;
      } else if (key == "index") {
        entry.index = ReadString(value);
        hasIndex = true;
      } else if (key == "runs") {
        entry.runs = ReadRuns(value);
      } else if (key == "pass") {
        entry.pass = ReadInteger(value, 0);
      } else if (key == "fields") {
        entry.fields = ReadFields(value);
        for (const auto& [name, field] : value.members) {
          entry.places.emplace(name, field.keyPlace);
        }
        hasFields = true;
      } else {
        Refuse(value,
               "unknown key; an entry has table, index, runs, pass and fields");
      }
    }
    if (!hasTable) Refuse(node, "the key \"table\" is missing");
    if (!hasIndex) Refuse(node, "the key \"index\" is missing");
    if (!hasFields) Refuse(node, "the key \"fields\" is missing");
    return entry;
  }

  RunRange ReadRuns(const Node& node) const {
    Require(node, eKind::kArray, "a range [first run, last run]");
    if (node.items.size() != 2) {
      Refuse(node,
             "expected two runs, found " + std::to_string(node.items.size()));
    }
    RunRange runs;
    const Node& first = node.items[0];
    const Node& last = node.items[1];
    constexpr int kLowestRun = std::numeric_limits<int>::min();
    if (first.kind != eKind::kNull) runs.first = ReadInteger(first, kLowestRun);
    if (last.kind != eKind::kNull) runs.last = ReadInteger(last, kLowestRun);
    if (runs.last < runs.first)
      Refuse(last, "the last run is before the first");
    return runs;
  }

  int ReadInteger(const Node& node, int lowest) const {
    constexpr int kHighest = std::numeric_limits<int>::max();
    if (node.kind != eKind::kNumber || !node.integer.has_value() ||
        *node.integer < lowest || *node.integer > kHighest) {
      Refuse(node, "expected a whole number from " + std::to_string(lowest) +
                       " to " + std::to_string(kHighest));
    }
    return static_cast<int>(*node.integer);
  }

  std::string ReadString(const Node& node) const {
    Require(node, eKind::kString, "a string");
    return node.text;
  }

  TableField ReadField(const Node& node) const {
    if (node.kind == eKind::kNumber) return node.number;
    if (node.kind == eKind::kString) return node.text;
    Require(node, eKind::kArray, "a number, an array of numbers or a string");
    std::vector<double> values;
    values.reserve(node.items.size());
    for (const Node& item : node.items) {
      Require(item, eKind::kNumber, "a number");
      values.push_back(item.number);
    }
    return values;
  }

  void Require(const Node& node, eKind kind, const char* wanted) const {
    if (node.kind != kind) Refuse(node, std::string("expected ") + wanted);
  }

  [[noreturn]] void Refuse(const Node& node, const std::string& reason) const {
    Json::Refuse(name_, node.place.line, node.path, reason);
  }

  const std::string& name_;
};

namespace fs = std::filesystem;

std::string ReadWholeFile(const std::string& path) {
  // Larger than any real table file; stops a wrong path (e.g. a raw data file)
  // from using all memory.
  constexpr std::size_t kMaxBytes = 256UL << 20U;
  std::ifstream file(path, std::ios::binary);
  std::string text;
  std::array<char, 65536> part{};
  while (file.read(part.data(), part.size()) || file.gcount() > 0) {
    text.append(part.data(), static_cast<std::size_t>(file.gcount()));
    if (text.size() > kMaxBytes) {
      throw TableFileError(path + ": larger than 256 MiB");
    }
  }
  if (!file.is_open() || file.bad()) {
    throw TableFileError(
        path + ": cannot be read: " + std::generic_category().message(errno));
  }
  return text;
}

}  // namespace

std::vector<TableEntry> ParseJsonTables(const std::string& text,
                                        const std::string& name) {
  return TableReader(name).Read(Json::ParseTree(text, name));
}

std::map<std::string, TableField> ParseJsonFields(const std::string& text,
                                                  const std::string& name) {
  return TableReader(name).ReadFields(Json::ParseTree(text, name));
}

std::vector<std::string> TableFiles(const std::string& path) try {
  if (!fs::is_directory(path)) return {path};
  std::vector<std::string> files;
  for (const auto& item : fs::directory_iterator(path)) {
    if (item.path().extension() == ".json") {
      files.push_back(item.path().string());
    }
  }
  if (files.empty()) {
    throw TableFileError(path + ": the directory has no *.json file");
  }
  std::sort(files.begin(), files.end());
  return files;
} catch (const fs::filesystem_error& error) {
  throw TableFileError(path + ": " + error.code().message());
}

std::vector<TableEntry> ReadJsonTables(const std::string& path) {
  std::vector<TableEntry> entries;
  for (const std::string& file : TableFiles(path)) {
    auto more = ParseJsonTables(ReadWholeFile(file), file);
    std::move(more.begin(), more.end(), std::back_inserter(entries));
  }
  return entries;
}

void LoadJsonTables(TableSet& tables, const std::string& path) {
  tables.Add(ReadJsonTables(path));
}

}  // namespace ZARN

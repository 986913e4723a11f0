#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "db/JsonTables.hpp"
#include "du/CheckTables.hpp"

namespace ZARN::Testing {

/// The tables of the minimal detector, to be damaged, and what the check says.
class MinimalTables {
 public:
  MinimalTables() : entries_(ReadJsonTables(Folder())) {}

  TableEntry& Entry(const std::string& table, const std::string& index) {
    return *Position(table, index);
  }

  TableField& Field(const std::string& table, const std::string& index,
                    const std::string& field) {
    return Entry(table, index).fields[field];
  }

  void Remove(const std::string& table, const std::string& index) {
    entries_.erase(Position(table, index));
  }

  void Add(TableEntry entry) { entries_.push_back(std::move(entry)); }

  /// Rename a field, at its place.
  void Rename(TableEntry& entry, const std::string& from,
              const std::string& to) {
    entry.fields[to] = entry.fields.at(from);
    entry.places[to] = entry.places.at(from);
    entry.fields.erase(from);
    entry.places.erase(from);
  }

  TableSet AsSet() const {
    TableSet tables;
    tables.Add(entries_);
    return tables;
  }

  std::vector<DU::TableFinding> Findings() const {
    return DU::CheckTables(AsSet());
  }

  /// The findings as text, without the folder of the files.
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const auto& finding : Findings()) texts.push_back(Text(finding));
    return texts;
  }

  static std::string Text(const DU::TableFinding& finding) {
    std::string text = TextOf(finding);
    const std::string folder = Folder() + "/";
    for (std::size_t at = text.find(folder); at != std::string::npos;
         at = text.find(folder)) {
      text.erase(at, folder.size());
    }
    return text;
  }

 private:
  static std::string Folder() {
    return ZARN_DATA_DIR "/../examples/minimal-detector";
  }

  std::vector<TableEntry>::iterator Position(const std::string& table,
                                             const std::string& index) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const TableEntry& entry) {
                          return entry.table == table && entry.index == index;
                        });
  }

  std::vector<TableEntry> entries_;
};

}  // namespace ZARN::Testing

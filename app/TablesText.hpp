#pragma once

#include <string>
#include <utility>
#include <vector>

#include "db/CompareTables.hpp"
#include "db/TableEntry.hpp"
#include "sql/TableStore.hpp"

namespace ZARN::App {

/// Table and index of an entry.
using EntryKey = std::pair<std::string, std::string>;

/// The entry that an argument TABLE/INDEX names.
///
/// @throws BadUsage if there is no /
EntryKey EntryKeyOf(const std::string& argument);

/// "SOLID/hold_down_rope", for messages.
std::string NameOf(const EntryKey& key);
std::string NameOf(const TableEntry& entry);

/// How arrays are shown: their first numbers, or all.
enum class eArrays { kShort, kWhole };

/// A value in one line: 12, "a rope", [0, 36, 72, ...] (10 numbers).
std::string FieldText(const TableField& field, eArrays arrays);

/// One line for each difference, indented: "r_rope: 12 -> 12.5",
/// "roll[3]: 108 -> none". Of an array that differs in many positions, the
/// first few and the number of the others.
std::string DifferencesText(const std::vector<FieldDifference>& differences);

/// "import 3, 2026-01-31T12:00:00.000000Z, Ada <ada@example.org>".
std::string ImportText(const SQL::Import& import);

/// Lines of cells in columns, separated by two blanks. The first row holds the
/// headings.
///
/// @param right  the columns that are aligned on the right
std::string ColumnsText(const std::vector<std::vector<std::string>>& rows,
                        const std::vector<std::size_t>& right);

/// An object of JSON, built member by member.
class JsonObject {
 public:
  JsonObject& AddText(const std::string& name, const std::string& text);
  JsonObject& AddNumber(const std::string& name, long long number);
  JsonObject& AddField(const std::string& name, const TableField& field);
  /// Add a member whose value is JSON already.
  JsonObject& AddJson(const std::string& name, const std::string& json);
  /// Add the members of the import's number, time, author, reason and source.
  JsonObject& AddImport(const SQL::Import& import);
  /// Add "runs": [first, last] with null for no limit.
  JsonObject& AddRuns(const RunRange& runs);
  /// Add "table" and "index".
  JsonObject& AddKey(const EntryKey& key);

  std::string Text() const { return text_ + "}"; }

 private:
  std::string text_ = "{";
};

/// An array of JSON values, one a line.
std::string JsonLines(const std::vector<std::string>& values);

/// Differences as an array of JSON objects with field, position (in an array),
/// before and after (null where it is missing).
std::string DifferencesJson(const std::vector<FieldDifference>& differences);

}  // namespace ZARN::App

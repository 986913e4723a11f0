#include "db/JsonText.hpp"

#include <string_view>

#include "db/CanonicalJson.hpp"

namespace ZARN {
namespace {

constexpr std::size_t kMostColumns = 100;

template <class Value>
std::string JsonOf(const Value& value) {
  std::string text;
  AppendJson(text, value);
  return text;
}

std::string Joined(const std::vector<std::string>& values) {
  std::string text;
  for (const std::string& value : values) {
    if (!text.empty()) text += ", ";
    text += value;
  }
  return text;
}

/// An array as the value of a field: on the line of its name where it fits,
/// otherwise in lines of its own.
///
/// @param begin  the line up to the value
std::string ArrayText(const std::vector<double>& numbers,
                      std::string_view begin) {
  std::vector<std::string> values;
  values.reserve(numbers.size());
  for (const double number : numbers) values.push_back(JsonOf(number));
  std::string text = "[" + Joined(values) + "]";
  constexpr std::size_t kCommaBehind = 1;
  if (begin.size() + text.size() + kCommaBehind <= kMostColumns) return text;
  constexpr std::string_view kIndent = "\n        ";
  text = "[";
  std::size_t column = kMostColumns;  // the first value begins a line
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string value = values[i] + (i + 1 < values.size() ? "," : "");
    if (column + 1 + value.size() > kMostColumns) {
      text += kIndent;
      column = kIndent.size() - 1;
    } else {
      text += ' ';
      ++column;
    }
    text += value;
    column += value.size();
  }
  return text + "\n      ]";
}

std::string FieldText(const std::string& name, const TableField& field) {
  std::string text = "      " + JsonOf(name) + ": ";
  if (const auto* const string = std::get_if<std::string>(&field)) {
    return text + JsonOf(*string);
  }
  if (const auto* const number = std::get_if<double>(&field)) {
    return text + JsonOf(*number);
  }
  return text + ArrayText(std::get<std::vector<double>>(field), text);
}

std::string RunsText(const RunRange& runs) {
  const RunRange all;
  return "[" + (runs.first == all.first ? "null" : std::to_string(runs.first)) +
         ", " + (runs.last == all.last ? "null" : std::to_string(runs.last)) +
         "]";
}

std::string EntryText(const TableEntry& entry) {
  std::string text = "  {\n    \"table\": " + JsonOf(entry.table) +
                     ",\n    \"index\": " + JsonOf(entry.index);
  const std::string runs = RunsText(entry.runs);
  if (runs != RunsText({})) text += ",\n    \"runs\": " + runs;
  if (entry.pass != 0) text += ",\n    \"pass\": " + std::to_string(entry.pass);
  text += ",\n    \"fields\": {";
  std::string_view separator = "\n";
  for (const auto& [name, field] : entry.fields) {
    text += separator;
    text += FieldText(name, field);
    separator = ",\n";
  }
  return text + (entry.fields.empty() ? "}\n  }" : "\n    }\n  }");
}

}  // namespace

std::string JsonText(const std::vector<TableEntry>& entries) {
  std::string text = "[";
  std::string_view separator = "\n";
  for (const TableEntry& entry : entries) {
    text += separator;
    text += EntryText(entry);
    separator = ",\n";
  }
  return text + (entries.empty() ? "]\n" : "\n]\n");
}

}  // namespace ZARN

#include "app/TablesText.hpp"

#include <algorithm>

#include "app/Usage.hpp"
#include "db/CanonicalJson.hpp"
#include "io/Quoted.hpp"
#include "log/Grouped.hpp"

namespace ZARN::App {
namespace {

/// The array as JSON, with blanks, up to its first @p most numbers.
std::string ArrayText(const std::vector<double>& numbers, std::size_t most) {
  std::string text = "[";
  for (std::size_t i = 0; i < std::min(numbers.size(), most); ++i) {
    if (i > 0) text += ", ";
    AppendJson(text, numbers[i]);
  }
  return text + (numbers.size() > most ? ", ...]" : "]");
}

std::string ShortText(const std::optional<TableField>& field) {
  return field.has_value() ? FieldText(*field, eArrays::kShort) : "none";
}

/// Characters on the screen, as far as bytes of UTF-8 tell.
std::size_t WidthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(),
      [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string JsonOf(const TableField& field) {
  std::string text;
  std::visit([&text](const auto& value) { AppendJson(text, value); }, field);
  return text;
}

std::string JsonOf(const std::optional<TableField>& field) {
  return field.has_value() ? JsonOf(*field) : "null";
}

}  // namespace

EntryKey EntryKeyOf(const std::string& argument) {
  const std::size_t slash = argument.find('/');
  if (slash == std::string::npos) {
    throw BadUsage("an entry is named TABLE/INDEX, as SOLID/hold_down_rope; " +
                   IO::Quoted(argument) + " has no /");
  }
  return {argument.substr(0, slash), argument.substr(slash + 1)};
}

std::string NameOf(const EntryKey& key) {
  return IO::Escaped(key.first + "/" + key.second);
}

std::string NameOf(const TableEntry& entry) {
  return NameOf(EntryKey(entry.table, entry.index));
}

std::string FieldText(const TableField& field, eArrays arrays) {
  if (const auto* const string = std::get_if<std::string>(&field)) {
    return "\"" + IO::Escaped(*string) + "\"";
  }
  const auto* const numbers = std::get_if<std::vector<double>>(&field);
  if (numbers == nullptr) return JsonOf(field);
  constexpr std::size_t kFew = 6;
  if (arrays == eArrays::kWhole || numbers->size() <= kFew) {
    return ArrayText(*numbers, numbers->size());
  }
  return ArrayText(*numbers, kFew) + " (" + Grouped(numbers->size()) +
         " numbers)";
}

std::string DifferencesText(const std::vector<FieldDifference>& differences) {
  constexpr std::size_t kMostPositions = 5;
  std::string text;
  std::size_t ofField = 0;
  for (std::size_t i = 0; i < differences.size(); ++i) {
    const FieldDifference& difference = differences[i];
    const bool isFirst = i == 0 || differences[i - 1].field != difference.field;
    ofField = isFirst ? 1 : ofField + 1;
    if (ofField <= kMostPositions) {
      text += "  " + IO::Escaped(difference.field);
      if (difference.position.has_value()) {
        text += "[" + std::to_string(*difference.position) + "]";
      }
      text += ": " + ShortText(difference.before) + " -> " +
              ShortText(difference.after) + "\n";
    }
    const bool isLast = i + 1 == differences.size() ||
                        differences[i + 1].field != difference.field;
    if (isLast && ofField > kMostPositions) {
      text += "  " + IO::Escaped(difference.field) + ": " +
              Grouped(ofField - kMostPositions) + " more numbers\n";
    }
  }
  return text;
}

std::string ImportText(const SQL::Import& import) {
  return "import " + std::to_string(import.number) + ", " + import.time + ", " +
         IO::Escaped(import.author);
}

std::string ColumnsText(const std::vector<std::vector<std::string>>& rows,
                        const std::vector<std::size_t>& right) {
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], WidthOf(row[i]));
    }
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string blanks(widths[i] - WidthOf(row[i]), ' ');
      const bool isRight =
          std::find(right.begin(), right.end(), i) != right.end();
      if (i > 0) line += "  ";
      line += isRight ? blanks + row[i] : row[i] + blanks;
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

JsonObject& JsonObject::AddJson(const std::string& name,
                                const std::string& json) {
  if (text_.size() > 1) text_ += ", ";
  AppendJson(text_, name);
  text_ += ": " + json;
  return *this;
}

JsonObject& JsonObject::AddText(const std::string& name,
                                const std::string& text) {
  return AddJson(name, JsonOf(TableField(text)));
}

JsonObject& JsonObject::AddNumber(const std::string& name, long long number) {
  return AddJson(name, std::to_string(number));
}

JsonObject& JsonObject::AddField(const std::string& name,
                                 const TableField& field) {
  return AddJson(name, JsonOf(field));
}

JsonObject& JsonObject::AddImport(const SQL::Import& import) {
  return AddNumber("import", import.number)
      .AddText("time", import.time)
      .AddText("author", import.author)
      .AddText("reason", import.reason)
      .AddText("source", import.source);
}

JsonObject& JsonObject::AddRuns(const RunRange& runs) {
  const RunRange all;
  return AddJson(
      "runs",
      "[" + (runs.first == all.first ? "null" : std::to_string(runs.first)) +
          ", " + (runs.last == all.last ? "null" : std::to_string(runs.last)) +
          "]");
}

JsonObject& JsonObject::AddKey(const EntryKey& key) {
  return AddText("table", key.first).AddText("index", key.second);
}

std::string JsonLines(const std::vector<std::string>& values) {
  std::string text = "[";
  for (std::size_t i = 0; i < values.size(); ++i) {
    text += (i == 0 ? "\n  " : ",\n  ") + values[i];
  }
  return text + (values.empty() ? "]" : "\n]");
}

std::string DifferencesJson(const std::vector<FieldDifference>& differences) {
  std::string text = "[";
  for (const FieldDifference& difference : differences) {
    if (text.size() > 1) text += ", ";
    JsonObject object;
    object.AddText("field", difference.field);
    if (difference.position.has_value()) {
      object.AddNumber("position",
                       static_cast<long long>(*difference.position));
    }
    object.AddJson("before", JsonOf(difference.before))
        .AddJson("after", JsonOf(difference.after));
    text += object.Text();
  }
  return text + "]";
}

}  // namespace ZARN::App

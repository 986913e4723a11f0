#include "sql/FieldsText.hpp"

#include <cmath>
#include <stdexcept>
#include <variant>
#include <vector>

#include "db/CanonicalJson.hpp"
#include "db/JsonTables.hpp"
#include "sql/StoredText.hpp"

namespace ZARN::SQL {
namespace {

void RequireFinite(const std::string& name, double number) {
  if (std::isfinite(number)) return;
  throw std::invalid_argument("the field " + name +
                              " has a number that is not finite");
}

void RequireWritable(const std::string& name, const TableField& field) {
  if (const auto* const number = std::get_if<double>(&field)) {
    RequireFinite(name, *number);
  } else if (const auto* const text = std::get_if<std::string>(&field)) {
    if (IsUtf8(*text)) return;
    throw std::invalid_argument("the field " + name + " is not UTF-8");
  } else {
    for (const double item : std::get<std::vector<double>>(field)) {
      RequireFinite(name, item);
    }
  }
}

}  // namespace

std::string WriteFields(const TableEntry& entry) {
  for (const auto& [name, field] : entry.fields) {
    if (!IsUtf8(name)) {
      throw std::invalid_argument("the name of a field is not UTF-8");
    }
    RequireWritable(name, field);
  }
  return JsonOfFields(entry.fields);
}

std::string ToFingerprintText(std::string text) {
  // Nearly no entry has one; then there is nothing to read.
  if (text.find("-0.0") == std::string::npos) return text;
  std::string changed;
  AppendJson(changed, ParseJsonFields(text, "fields"),
             eMinusZero::kFingerprint);
  return changed;
}

}  // namespace ZARN::SQL

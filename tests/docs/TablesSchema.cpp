// Writes docs/tables.schema.json, the JSON Schema of the geometry tables, from
// the list of their fields; with --fields the list itself, for tests.

#include <cstring>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "du/TableFields.hpp"

namespace {

using Json = nlohmann::ordered_json;
using namespace ZARN::DU;

const char* NameOf(eFieldUse use) {
  switch (use) {
    case eFieldUse::kVerdicts:
      return "verdicts";
    case eFieldUse::kDrawings:
      return "drawings";
    case eFieldUse::kOptional:
      return "optional";
    case eFieldUse::kOther:
      break;
  }
  return "other";
}

/// The parts of a detector: a component, or what all need.
std::string PartOf(const KnownField& field) {
  std::string component = ZARN::DU::NameOf(field.component);
  if (!component.empty()) return component;
  const std::string table = field.table;
  if (table == "OPTICS") return "Media";
  return field.use == eFieldUse::kOther ? "" : "Vessel";
}

Json ListOfFields() {
  Json list = Json::array();
  for (const KnownField& field : KnownFields()) {
    list.push_back(
        {{"part", PartOf(field)},
         {"table", field.table},
         {"index", field.index.name},
         {"named_by",
          field.index.IsFixed() ? Json(nullptr) : Json(field.index.namedBy)},
         {"field", field.field},
         {"type", ZARN::DU::NameOf(field.type)},
         {"unit", field.unit},
         {"use", NameOf(field.use)}});
  }
  return list;
}

Json TypeSchema(eFieldType type) {
  Json numbers = {{"type", "array"}, {"items", {{"type", "number"}}}};
  switch (type) {
    case eFieldType::kNumber:
      return {{"type", "number"}};
    case eFieldType::kNumbers:
      return numbers;
    case eFieldType::kString:
      return {{"type", "string"}};
    case eFieldType::kNumberOrNumbers:
      break;
  }
  return {{"anyOf", Json::array({{{"type", "number"}}, numbers})}};
}

std::string DescriptionOf(const KnownField& field) {
  std::string text = *field.unit == '\0' ? "no unit" : field.unit;
  if (field.use == eFieldUse::kDrawings) text += ", for drawings only";
  if (field.use == eFieldUse::kOther) text += ", read by nothing";
  return text;
}

/// The fields of one entry.
struct EntryFields {
  Json properties = Json::object();
  std::vector<std::string> required;
};

void Add(const KnownField& field, EntryFields& entry) {
  if (entry.properties.contains(field.field)) return;
  Json schema = TypeSchema(field.type);
  schema["description"] = DescriptionOf(field);
  entry.properties[field.field] = std::move(schema);
  // The names in inner_av may be left out by a detector without plates or
  // anchors.
  const bool isOptional = field.use == eFieldUse::kOptional ||
                          field.use == eFieldUse::kOther ||
                          (field.table == std::string("GEO") &&
                           field.index.name == std::string("inner_av"));
  if (!isOptional) entry.required.emplace_back(field.field);
}

Json FieldsSchema(const EntryFields& fields) {
  Json schema = {{"properties", fields.properties}};
  if (!fields.required.empty()) schema["required"] = fields.required;
  schema["additionalProperties"] = false;
  return schema;
}

/// What holds for the fields of the entries with this table and index.
Json RuleFor(const std::string& table, const std::string& index,
             const EntryFields& fields) {
  return {{"if",
           {{"properties",
             {{"table", {{"const", table}}}, {"index", {{"const", index}}}}}}},
          {"then", {{"properties", {{"fields", FieldsSchema(fields)}}}}}};
}

/// What holds for the entries of a table that have any name: they have the
/// fields of one of their kinds. An entry that nothing names may have others.
Json RuleForNamed(const std::string& table,
                  const std::vector<std::string>& fixed, Json types) {
  Json condition = {{"properties", {{"table", {{"const", table}}}}}};
  if (!fixed.empty()) {
    condition["not"] = {{"properties", {{"index", {{"enum", fixed}}}}}};
  }
  return {{"if", std::move(condition)},
          {"then",
           {{"properties", {{"fields", {{"properties", std::move(types)}}}}}}}};
}

Json Rules() {
  std::vector<std::pair<std::string, std::string>> order;
  std::map<std::pair<std::string, std::string>, EntryFields> fixed;
  std::map<std::string, EntryFields> named;
  for (const KnownField& field : KnownFields()) {
    if (!field.index.IsFixed()) {
      Add(field, named[field.table]);
      continue;
    }
    const std::pair<std::string, std::string> key(field.table,
                                                  field.index.name);
    if (fixed.count(key) == 0) order.push_back(key);
    Add(field, fixed[key]);
  }
  Json rules = Json::array();
  std::map<std::string, std::vector<std::string>> names;
  for (const auto& [table, index] : order) {
    rules.push_back(RuleFor(table, index, fixed[{table, index}]));
    names[table].push_back(index);
  }
  for (const auto& [table, fields] : named) {
    rules.push_back(RuleForNamed(table, names[table], fields.properties));
  }
  return rules;
}

Json Schema() {
  const Json run = {{"type", Json::array({"integer", "null"})}};
  const Json properties = {
      {"table", {{"type", "string"}}},
      {"index", {{"type", "string"}}},
      {"runs",
       {{"type", "array"},
        {"description", "first and last run, both included; null: no limit"},
        {"items", run},
        {"minItems", 2},
        {"maxItems", 2}}},
      {"pass", {{"type", "integer"}, {"minimum", 0}}},
      {"fields",
       {{"type", "object"},
        {"additionalProperties", TypeSchema(eFieldType::kNumberOrNumbers)}}}};
  Json entry = {{"type", "object"},
                {"properties", properties},
                {"required", Json::array({"table", "index", "fields"})},
                {"additionalProperties", false},
                {"allOf", Rules()}};
  Json& any = entry["properties"]["fields"]["additionalProperties"];
  any["anyOf"].push_back({{"type", "string"}});
  return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
          {"title", "Geometry tables of zarn-shadow"},
          {"description",
           "One file of tables, as docs/tables.md explains them. Lengths are "
           "in mm. What other files add, and whether numbers make sense, "
           "zarn-shadow tables check tells."},
          {"type", "array"},
          {"items", std::move(entry)}};
}

}  // namespace

int main(int argc, char** argv) {
  const bool listsFields = argc > 1 && std::strcmp(argv[1], "--fields") == 0;
  std::cout << (listsFields ? ListOfFields() : Schema()).dump(2) << "\n";
}

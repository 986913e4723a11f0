// Entries and fields that nothing reads.

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "du/tables/FindingText.hpp"
#include "du/tables/TableCheck.hpp"
#include "log/NearestName.hpp"

namespace ZARN::DU {
namespace {

/// The known fields of an entry.
struct FieldsOfEntry {
  std::set<std::string> read;
  std::vector<std::string> known;
};

FieldsOfEntry FieldsOf(const TableCheck& check, const TableEntry& entry) {
  FieldsOfEntry fields;
  for (const KnownField& field : KnownFields()) {
    if (field.table != entry.table) continue;
    if (check.IndexOf(field.index) != entry.index) continue;
    if (check.Reads(field)) fields.read.insert(field.field);
    fields.known.emplace_back(field.field);
  }
  return fields;
}

std::string RemedyForEntry(const TableEntry& entry) {
  const std::vector<std::string> tables = {"SOLID", "GEO", "GEO_LOCATIONS",
                                           "OPTICS"};
  if (entry.table == "PMT") return "the commands read PMTs from --pmts";
  if (std::find(tables.begin(), tables.end(), entry.table) == tables.end()) {
    const std::string near = NearestName(entry.table, tables);
    return near.empty() ? "the tables are " + TextOfList(tables)
                        : "is table " + near + " meant?";
  }
  std::vector<std::string> names;
  for (const KnownField& field : KnownFields()) {
    if (field.table == entry.table && field.index.IsFixed()) {
      names.emplace_back(field.index.name);
    }
  }
  const std::string near = NearestName(entry.index, names);
  if (!near.empty()) return "is " + near + " meant?";
  return "remove it, or name it in GEO";
}

void TellFields(TableCheck& check, const TableEntry& entry,
                const FieldsOfEntry& fields) {
  for (const auto& [name, value] : entry.fields) {
    if (fields.read.count(name) > 0 || check.IsExplained(entry, name)) continue;
    const bool isKnown = std::find(fields.known.begin(), fields.known.end(),
                                   name) != fields.known.end();
    const std::string near = NearestName(name, fields.known);
    std::string remedy = "remove it";
    if (!isKnown && !near.empty()) remedy = "is " + near + " meant?";
    if (name == "wavelength" && isKnown) {
      remedy = "refractive_index is one number, for all wavelengths";
    }
    check.Tell(eSeverity::kNote,
               {eShadowingComponent::kNone, entry.table, entry.index, name},
               {"nothing reads this field", TextOf(value), remedy});
  }
}

}  // namespace

void FindUnused(TableCheck& check) {
  for (const auto& entry : check.Entries()) {
    const FieldsOfEntry fields = FieldsOf(check, *entry);
    if (!fields.read.empty()) {
      TellFields(check, *entry, fields);
    } else if (!check.IsExplained(*entry)) {
      check.Tell(eSeverity::kNote,
                 {eShadowingComponent::kNone, entry->table, entry->index},
                 {"nothing reads this entry", "", RemedyForEntry(*entry)});
    }
  }
}

}  // namespace ZARN::DU

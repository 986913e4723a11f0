// Entries and fields that are missing or have another type.

#include <algorithm>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "db/RunText.hpp"
#include "du/tables/FindingText.hpp"
#include "du/tables/TableCheck.hpp"
#include "log/NearestName.hpp"

namespace ZARN::DU {
namespace {

std::string NameOfEntry(const std::string& table, const std::string& index) {
  return table + "/" + index;
}

bool HasType(const TableField& value, eFieldType type) {
  switch (type) {
    case eFieldType::kNumber:
      return std::holds_alternative<double>(value);
    case eFieldType::kNumbers:
      return std::holds_alternative<std::vector<double>>(value);
    case eFieldType::kNumberOrNumbers:
      return !std::holds_alternative<std::string>(value);
    case eFieldType::kString:
      break;
  }
  return std::holds_alternative<std::string>(value);
}

/// Finds what is missing among the known fields of a check.
class MissingFields {
 public:
  explicit MissingFields(TableCheck& check) : check_(check) {}

  void Find() {
    for (const KnownField& field : KnownFields()) {
      if (!check_.Reads(field) || !IsWanted(field)) continue;
      // Without the name of the entry, that name is what is missing.
      const auto index = check_.IndexOf(field.index);
      if (!index.has_value()) continue;
      const TableEntry* const entry = check_.Find(field.table, *index);
      if (entry == nullptr) {
        if (IsNews(field, *index, "")) TellEntry(field, *index);
      } else if (IsNews(field, *index, field.field)) {
        CheckField(field, *entry);
      }
    }
  }

 private:
  bool IsWanted(const KnownField& field) const {
    return field.table != std::string("OPTICS") || check_.HasMedia();
  }

  /// Several components may read a field. If several fields name an entry that
  /// is missing, each of them may have the typo.
  bool IsNews(const KnownField& known, const std::string& index,
              const std::string& field) {
    const std::string namedBy =
        known.index.IsFixed() || !field.empty()
            ? ""
            : NameOfEntry(known.index.name, known.index.namedBy);
    return told_.insert({known.table, index, field, namedBy}).second;
  }

  static bool IsFixedIndex(const KnownField& field, const std::string& index) {
    return field.index.IsFixed() && field.index.name == index;
  }

  /// Whether something reads an entry, under its fixed index or by its name.
  bool IsRead(const TableEntry& entry) const {
    const auto& known = KnownFields();
    return std::any_of(known.begin(), known.end(), [&](const auto& field) {
      return field.table == entry.table &&
             check_.IndexOf(field.index) == entry.index;
    });
  }

  /// The entries of a table that nothing reads and that have a field.
  std::vector<const TableEntry*> FreeEntries(const std::string& table,
                                             const std::string& field) const {
    std::vector<const TableEntry*> free;
    for (const auto& entry : check_.Entries()) {
      if (entry->table == table && !IsRead(*entry) &&
          entry->fields.count(field) > 0) {
        free.push_back(entry.get());
      }
    }
    return free;
  }

  /// What is needed of an entry, for one that is to be added.
  std::vector<std::string> FieldsOf(const KnownField& known,
                                    const std::string& index) const {
    std::vector<std::string> names;
    for (const KnownField& field : KnownFields()) {
      if (field.table != std::string(known.table) ||
          field.use == eFieldUse::kOther || field.use == eFieldUse::kOptional ||
          check_.IndexOf(field.index) != index) {
        continue;
      }
      if (std::find(names.begin(), names.end(), field.field) == names.end()) {
        names.emplace_back(field.field);
      }
    }
    return names;
  }

  std::string NoEntryForRun() const {
    return " for run " + std::to_string(check_.Run());
  }

  /// Where else an entry is: under another name, in another table, or for
  /// other runs. Empty if nowhere.
  std::string FoundElsewhere(const KnownField& known,
                             const std::string& index) {
    if (const auto versions = check_.Versions(known.table, index);
        !versions.empty()) {
      std::vector<std::string> runs;
      for (const auto& entry : versions)
        runs.push_back(ZARN::TextOf(entry->runs));
      return "the entry is valid for " + TextOfList(runs) +
             ": extend its runs, or choose another run";
    }
    const auto free = FreeEntries(known.table, known.field);
    std::vector<std::string> names;
    for (const TableEntry* const entry : free) names.push_back(entry->index);
    const std::string nearest = NearestName(index, names);
    for (const TableEntry* const entry : free) {
      if (entry->index != nearest) continue;
      check_.Explain(*entry);
      return "found " + nearest + " at " + TextOfPlace(*entry) + ": a typo?";
    }
    for (const auto& entry : check_.Entries()) {
      if (entry->index != index || IsRead(*entry)) continue;
      check_.Explain(*entry);
      return "found " + NameOfEntry(entry->table, index) + " at " +
             TextOfPlace(*entry) + ": the wrong table?";
    }
    return "";
  }

  /// The entries that nothing names, where a missing entry would name some, or
  /// where its own name may be wrong.
  std::vector<std::string> NamesBeside(const KnownField& known,
                                       const std::string& index) {
    std::vector<std::string> names;
    const auto add = [&](const std::vector<std::string>& more) {
      names.insert(names.end(), more.begin(), more.end());
    };
    for (const KnownField& field : KnownFields()) {
      const bool namesIt = !known.index.IsFixed() &&
                           field.index.name == std::string(known.index.name) &&
                           field.field == std::string(known.index.namedBy);
      const bool isInIt = known.index.IsFixed() && IsFixedIndex(field, index);
      if (field.table == std::string("GEO") && (namesIt || isInIt)) {
        add(NamesThatMayBeMeant(field));
      }
    }
    return names;
  }

  void TellEntry(const KnownField& known, const std::string& index) {
    const std::string elsewhere = FoundElsewhere(known, index);
    const std::vector<std::string> fields = FieldsOf(known, index);
    const std::string add =
        "add an entry " + NameOfEntry(known.table, index) +
        (fields.size() == 1 ? " with the field " : " with the fields ") +
        TextOfList(fields);
    const std::string remedy = elsewhere.empty()
                                   ? WithNames(add, NamesBeside(known, index))
                                   : elsewhere;
    if (known.index.IsFixed()) {
      check_.Tell(eSeverity::kError, {known.component, known.table, index},
                  {"there is no such entry" + NoEntryForRun(), "", remedy});
      return;
    }
    check_.Tell(eSeverity::kError,
                {known.component, "GEO", known.index.name, known.index.namedBy},
                {"table " + std::string(known.table) +
                     " has no entry of this name" + NoEntryForRun(),
                 TextOf(TableField(index)), remedy});
  }

  void CheckField(const KnownField& known, const TableEntry& entry) {
    const auto found = entry.fields.find(known.field);
    if (found == entry.fields.end()) {
      check_.Tell(eSeverity::kError,
                  {known.component, entry.table, entry.index},
                  {std::string("there is no field ") + known.field, "",
                   RemedyForField(known, entry)});
      return;
    }
    if (HasType(found->second, known.type)) return;
    check_.Tell(eSeverity::kError,
                {known.component, entry.table, entry.index, known.field},
                {std::string("this is not ") + NameOf(known.type),
                 TextOf(found->second), RemedyForType(known, found->second)});
  }

  std::string RemedyForField(const KnownField& known, const TableEntry& entry) {
    std::vector<std::string> unread;
    for (const auto& [name, value] : entry.fields) {
      const auto& all = KnownFields();
      const bool isRead =
          std::any_of(all.begin(), all.end(), [&](const KnownField& field) {
            return field.field == name && field.table == entry.table &&
                   check_.IndexOf(field.index) == entry.index;
          });
      if (!isRead && HasType(value, known.type)) unread.push_back(name);
    }
    if (std::string near = NearestName(known.field, unread); !near.empty()) {
      check_.Explain(entry, near);
      NamesThatMayBeMeant(known);  // what it names is no news
      return "found " + near + ": a typo?";
    }
    if (unread.size() == 1) {
      check_.Explain(entry, unread.front());
      return "nothing reads " + unread.front() + ": is it meant?";
    }
    for (const auto& other : check_.Versions(entry.table, entry.index)) {
      if (other.get() == &entry || other->fields.count(known.field) == 0) {
        continue;
      }
      return "the entry at " + TextOfPlace(*other) +
             " has it, but only one entry counts: write all fields into that";
    }
    return RemedyForNew(known);
  }

  /// For a field that has to be added.
  std::string RemedyForNew(const KnownField& known) {
    std::string remedy = std::string("add it, ") + NameOf(known.type);
    if (*known.unit != '\0') remedy += std::string(" in ") + known.unit;
    return WithNames(remedy, NamesThatMayBeMeant(known));
  }

  static std::string WithNames(const std::string& remedy,
                               const std::vector<std::string>& names) {
    return names.empty() ? remedy
                         : remedy + ": nothing names " + TextOfList(names);
  }

  /// For a field that is to name an entry: entries that nothing names.
  std::vector<std::string> NamesThatMayBeMeant(const KnownField& known) {
    std::vector<std::string> names;
    for (const KnownField& named : KnownFields()) {
      if (named.index.IsFixed() || known.table != std::string("GEO") ||
          named.index.name != std::string(known.index.name) ||
          named.index.namedBy != std::string(known.field)) {
        continue;
      }
      for (const TableEntry* const entry :
           FreeEntries(named.table, named.field)) {
        if (check_.IsExplained(*entry)) continue;
        check_.Explain(*entry);
        names.push_back(NameOfEntry(entry->table, entry->index));
      }
    }
    return names;
  }

  std::string RemedyForType(const KnownField& known, const TableField& value) {
    const bool isString = std::holds_alternative<std::string>(value);
    if (known.type == eFieldType::kNumbers) {
      return isString ? "write the numbers in brackets, without quotation marks"
                      : "write the number in brackets";
    }
    if (known.type == eFieldType::kString) {
      return WithNames("write the index of an entry in quotation marks",
                       NamesThatMayBeMeant(known));
    }
    return isString ? "write a number, without quotation marks"
                    : "write one number, without brackets";
  }

  TableCheck& check_;
  std::set<std::tuple<std::string, std::string, std::string, std::string>>
      told_;
};

}  // namespace

void FindMissing(TableCheck& check) { MissingFields(check).Find(); }

}  // namespace ZARN::DU

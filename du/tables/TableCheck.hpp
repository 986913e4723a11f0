#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "du/CheckTables.hpp"
#include "du/TableFields.hpp"

namespace ZARN::DU {

/// What a finding is about.
struct FindingSubject {
  eShadowingComponent component = eShadowingComponent::kNone;
  std::string table;
  std::string index;
  std::string field = {};  ///< empty: the entry
};

/// The words of a finding, as in TableFinding.
struct FindingWords {
  std::string problem;
  std::string value;
  std::string remedy;
};

/// One check of the tables of a run: the entries, and what was found so far.
class TableCheck {
 public:
  explicit TableCheck(const TableSet& tables);

  int Run() const { return run_; }

  /// The entries that are valid for the run, sorted by table and index.
  const std::vector<std::shared_ptr<const TableEntry>>& Entries() const {
    return entries_;
  }

  /// An entry; null if it is missing.
  const TableEntry* Find(const std::string& table,
                         const std::string& index) const;

  /// All entries of a table and index, whatever their runs and passes.
  std::vector<std::shared_ptr<const TableEntry>> Versions(
      const std::string& table, const std::string& index) const {
    return tables_.Versions(table, index);
  }

  /// The index of an entry; none if no string names it.
  std::optional<std::string> IndexOf(const TableIndex& index) const;

  /// The value of a field; null if it, its entry or the name of its entry is
  /// missing, or if it has another type.
  template <class Value>
  const Value* Get(const std::string& table, const TableIndex& index,
                   const std::string& field) const {
    const std::optional<std::string> name = IndexOf(index);
    const TableEntry* const entry =
        name.has_value() ? Find(table, *name) : nullptr;
    if (entry == nullptr) return nullptr;
    const auto found = entry->fields.find(field);
    return found == entry->fields.end() ? nullptr
                                        : std::get_if<Value>(&found->second);
  }

  /// The positions in three parallel arrays; none if one is missing, has
  /// another type or another length.
  std::optional<std::vector<TVector3>> Positions(
      const std::string& table, const TableIndex& index,
      const std::string& prefix = "") const;

  /// Whether there is an entry of table OPTICS. Without one nobody means to
  /// compute light paths.
  bool HasMedia() const;

  /// How much it matters that light paths cannot be computed.
  eSeverity SeverityForLight() const {
    return HasMedia() ? eSeverity::kError : eSeverity::kWarning;
  }

  /// Whether the run reads a field; never for kOther.
  bool Reads(const KnownField& field) const;

  /// Add a finding with its place.
  void Tell(eSeverity severity, const FindingSubject& subject,
            FindingWords words);

  /// Note that a finding names a field, or with an empty field an entry, as
  /// what may be meant: that nothing reads it is then no news.
  void Explain(const TableEntry& entry, const std::string& field = "") {
    explained_.insert({&entry, field});
  }
  bool IsExplained(const TableEntry& entry,
                   const std::string& field = "") const {
    return explained_.count({&entry, field}) > 0;
  }

  std::vector<TableFinding> TakeFindings() { return std::move(findings_); }

 private:
  const TableSet& tables_;
  int run_;
  std::vector<std::shared_ptr<const TableEntry>> entries_;
  std::set<std::pair<const TableEntry*, std::string>> explained_;
  std::vector<TableFinding> findings_;
};

// Each adds its findings. FindUnused comes last: it leaves out what others
// explain.
void FindMissing(TableCheck& check);
void FindWrongLengths(TableCheck& check);
void FindWrongMedia(TableCheck& check);
void FindImplausibleSizes(TableCheck& check);
void FindImplausiblePlaces(TableCheck& check);
void FindImplausibleRolls(TableCheck& check);
void FindUnused(TableCheck& check);

}  // namespace ZARN::DU

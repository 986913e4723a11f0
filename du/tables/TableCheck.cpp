#include "du/tables/TableCheck.hpp"

#include <algorithm>

#include "du/tables/FindingText.hpp"

namespace ZARN::DU {

TableCheck::TableCheck(const TableSet& tables)
    : tables_(tables),
      run_(tables.GetRun()),
      entries_(tables.CurrentEntries()) {}

const TableEntry* TableCheck::Find(const std::string& table,
                                   const std::string& index) const {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [&](const auto& entry) {
        return entry->table == table && entry->index == index;
      });
  return found == entries_.end() ? nullptr : found->get();
}

std::optional<std::string> TableCheck::IndexOf(const TableIndex& index) const {
  if (index.IsFixed()) return index.name;
  const auto* const name =
      Get<std::string>("GEO", TableIndex{index.name}, index.namedBy);
  return name == nullptr ? std::nullopt : std::optional(*name);
}

std::optional<std::vector<TVector3>> TableCheck::Positions(
    const std::string& table, const TableIndex& index,
    const std::string& prefix) const {
  using Numbers = std::vector<double>;
  const auto* const x = Get<Numbers>(table, index, prefix + "x");
  const auto* const y = Get<Numbers>(table, index, prefix + "y");
  const auto* const z = Get<Numbers>(table, index, prefix + "z");
  if (x == nullptr || y == nullptr || z == nullptr) return std::nullopt;
  if (x->size() != y->size() || x->size() != z->size()) return std::nullopt;
  std::vector<TVector3> positions;
  for (std::size_t i = 0; i < x->size(); ++i) {
    positions.emplace_back((*x)[i], (*y)[i], (*z)[i]);
  }
  return positions;
}

bool TableCheck::HasMedia() const {
  return std::any_of(entries_.begin(), entries_.end(), [](const auto& entry) {
    return entry->table == "OPTICS";
  });
}

bool TableCheck::Reads(const KnownField& field) const {
  switch (field.use) {
    case eFieldUse::kVerdicts:
    case eFieldUse::kDrawings:
      return true;
    case eFieldUse::kOptional:
      return Get<std::vector<double>>(field.table, field.index,
                                      "refractive_index") != nullptr;
    case eFieldUse::kOther:
      break;
  }
  return false;
}

void TableCheck::Tell(eSeverity severity, const FindingSubject& subject,
                      FindingWords words) {
  const TableEntry* const entry = Find(subject.table, subject.index);
  findings_.push_back(
      {severity, subject.component, subject.table, subject.index, subject.field,
       entry == nullptr ? "" : TextOfPlace(*entry, subject.field),
       std::move(words.problem), std::move(words.value),
       std::move(words.remedy)});
}

}  // namespace ZARN::DU

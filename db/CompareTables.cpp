#include "db/CompareTables.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <set>
#include <utility>

#include "db/TableSet.hpp"

namespace ZARN {
namespace {

bool AreSame(double a, double b) {
  return a == b && std::signbit(a) == std::signbit(b);
}

bool AreSame(const TableField& a, const TableField& b) {
  const auto* const number = std::get_if<double>(&a);
  const auto* const other = std::get_if<double>(&b);
  if (number == nullptr || other == nullptr) return a == b;
  return AreSame(*number, *other);
}

void CompareArrays(const std::string& field, const std::vector<double>& before,
                   const std::vector<double>& after,
                   std::vector<FieldDifference>& found) {
  const auto at = [](const std::vector<double>& numbers, std::size_t i) {
    return i < numbers.size() ? std::optional<TableField>(numbers[i])
                              : std::nullopt;
  };
  for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i) {
    const bool isInBoth = i < before.size() && i < after.size();
    if (isInBoth && AreSame(before[i], after[i])) continue;
    found.push_back({field, i, at(before, i), at(after, i)});
  }
}

bool AreSame(const std::optional<TableField>& a,
             const std::optional<TableField>& b) {
  if (!a.has_value() || !b.has_value()) return a.has_value() == b.has_value();
  return AreSame(*a, *b);
}

bool AreSame(const EntryDifference& a, const EntryDifference& b) {
  const auto isSame = [](const FieldDifference& x, const FieldDifference& y) {
    return x.field == y.field && x.position == y.position &&
           AreSame(x.before, y.before) && AreSame(x.after, y.after);
  };
  return a.kind == b.kind &&
         std::equal(a.fields.begin(), a.fields.end(), b.fields.begin(),
                    b.fields.end(), isSame);
}

using EntryPointer = std::shared_ptr<const TableEntry>;

/// The entries of one table and index in two sets of tables.
class EntryPair {
 public:
  void AddBefore(const TableEntry& entry) { Add(before_, entry); }
  void AddAfter(const TableEntry& entry) { Add(after_, entry); }

  /// Append what differs for a range of runs, in all of which the same entries
  /// hold.
  void CompareFor(const RunRange& runs, std::vector<EntryDifference>& found) {
    const EntryPointer before = Current(before_, runs.first);
    const EntryPointer after = Current(after_, runs.first);
    if (before == nullptr && after == nullptr) return;
    const TableEntry& any = before != nullptr ? *before : *after;
    EntryDifference difference = {any.table, any.index, runs};
    if (after == nullptr) {
      difference.kind = EntryDifference::eKind::kOnlyBefore;
    } else if (before == nullptr) {
      difference.kind = EntryDifference::eKind::kOnlyAfter;
    } else {
      difference.fields = CompareFields(before->fields, after->fields);
      if (difference.fields.empty()) return;
    }
    found.push_back(std::move(difference));
  }

  /// Append what differs for all runs.
  void Compare(std::vector<EntryDifference>& found) {
    std::vector<EntryDifference> parts;
    for (auto first = firstRuns_.begin(); first != firstRuns_.end(); ++first) {
      RunRange runs;
      runs.first = *first;
      const auto next = std::next(first);
      if (next != firstRuns_.end()) runs.last = *next - 1;
      const std::size_t count = parts.size();
      CompareFor(runs, parts);
      if (parts.size() == count || count == 0) continue;
      EntryDifference& last = parts[count - 1];
      if (last.runs.last == runs.first - 1 && AreSame(last, parts.back())) {
        last.runs.last = runs.last;
        parts.pop_back();
      }
    }
    std::move(parts.begin(), parts.end(), std::back_inserter(found));
  }

 private:
  void Add(TableSet& tables, const TableEntry& entry) {
    tables.Add({entry});
    firstRuns_.insert(entry.runs.first);
    if (entry.runs.last != RunRange().last) {
      firstRuns_.insert(entry.runs.last + 1);
    }
  }

  static EntryPointer Current(TableSet& tables, int run) {
    tables.SetRun(run);
    const auto entries = tables.CurrentEntries();
    return entries.empty() ? nullptr : entries.front();
  }

  TableSet before_;
  TableSet after_;
  // Where another entry may begin to hold.
  std::set<int> firstRuns_ = {RunRange().first};
};

}  // namespace

std::vector<FieldDifference> CompareFields(
    const std::map<std::string, TableField>& before,
    const std::map<std::string, TableField>& after) {
  std::set<std::string> names;
  for (const auto& [name, field] : before) names.insert(name);
  for (const auto& [name, field] : after) names.insert(name);
  const auto at = [](const auto& fields, const std::string& name) {
    const auto found = fields.find(name);
    return found == fields.end() ? nullptr : &found->second;
  };
  const auto valueOf = [](const TableField* field) {
    return field == nullptr ? std::nullopt : std::optional<TableField>(*field);
  };
  std::vector<FieldDifference> found;
  for (const std::string& name : names) {
    const TableField* const a = at(before, name);
    const TableField* const b = at(after, name);
    const bool isInBoth = a != nullptr && b != nullptr;
    const auto* const array =
        isInBoth ? std::get_if<std::vector<double>>(a) : nullptr;
    const auto* const other =
        isInBoth ? std::get_if<std::vector<double>>(b) : nullptr;
    if (array != nullptr && other != nullptr) {
      CompareArrays(name, *array, *other, found);
    } else if (!isInBoth || !AreSame(*a, *b)) {
      found.push_back({name, std::nullopt, valueOf(a), valueOf(b)});
    }
  }
  return found;
}

std::vector<EntryDifference> CompareTables(
    const std::vector<TableEntry>& before, const std::vector<TableEntry>& after,
    const std::optional<int>& run) {
  std::map<std::pair<std::string, std::string>, EntryPair> pairs;
  for (const TableEntry& entry : before) {
    pairs[{entry.table, entry.index}].AddBefore(entry);
  }
  for (const TableEntry& entry : after) {
    pairs[{entry.table, entry.index}].AddAfter(entry);
  }
  std::vector<EntryDifference> found;
  for (auto& [key, pair] : pairs) {
    if (run.has_value()) {
      pair.CompareFor({*run, *run}, found);
    } else {
      pair.Compare(found);
    }
  }
  return found;
}

}  // namespace ZARN

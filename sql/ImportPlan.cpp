#include "sql/ImportPlan.hpp"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include "db/RunText.hpp"
#include "sql/FieldsText.hpp"
#include "sql/StoredText.hpp"

namespace ZARN::SQL {
namespace {

/// One entry of the import or one that stands.
struct Version {
  const TableEntry* entry = nullptr;
  const Row* row = nullptr;             // of one that stands
  const std::string* fields = nullptr;  // of one of the import
  std::size_t place = 0;                // of one of the import
};

using Versions = std::vector<Version>;

/// The version that counts for a run; null if there is none.
///
/// @param pass  only of this pass; null: the highest
const Version* Select(const Versions& versions, int run, const int* pass) {
  const Version* best = nullptr;
  for (const Version& version : versions) {
    if (!version.entry->runs.Contains(run)) continue;
    if (pass != nullptr && version.entry->pass != *pass) continue;
    if (best == nullptr || version.entry->pass >= best->entry->pass) {
      best = &version;
    }
  }
  return best;
}

/// The entries of one table and index: those of the import, and those that
/// stand.
class KeyPlan {
 public:
  KeyPlan(Versions own, Versions standing, RowTexts& texts)
      : own_(std::move(own)), standing_(std::move(standing)), texts_(&texts) {
    for (const Versions* versions : {&own_, &standing_}) {
      for (const Version& version : *versions) {
        const RunRange& runs = version.entry->runs;
        starts_.insert(runs.first);
        starts_.insert(static_cast<long long>(runs.last) + 1);
      }
    }
  }

  const Versions& Own() const { return own_; }

  /// An entry of the import beside the one that it would overwrite.
  using Conflict = std::pair<const Version*, const Version*>;

  /// The first conflict; nulls if there is none.
  Conflict FindConflict() const {
    for (const Version& version : own_) {
      const int* const pass = &version.entry->pass;
      const bool isAdded = !IsCovered(version);
      for (const int run : RunsOf(*version.entry)) {
        const Version* const before = Select(standing_, run, pass);
        if (before == nullptr || IsSame(*before, version)) continue;
        // One that another entry of the import hides here does no harm, unless
        // it would come after the one that stands.
        const bool counts = Select(own_, run, pass) == &version;
        if (counts || isAdded) return {&version, before};
      }
    }
    return {nullptr, nullptr};
  }

  /// Whether entries of its pass stand for all of its runs.
  bool IsCovered(const Version& version) const {
    const auto runs = RunsOf(*version.entry);
    return std::all_of(runs.begin(), runs.end(), [&](int run) {
      return Select(standing_, run, &version.entry->pass) != nullptr;
    });
  }

  /// What readers get for the runs of the import.
  enum class eInUse { kOther, kOnlyOwn, kOwnOrNothing };

  eInUse WhatIsInUse() const {
    bool isEverywhere = true;
    for (const Version& version : own_) {
      for (const int run : RunsOf(*version.entry)) {
        const Version* const now = Select(standing_, run, nullptr);
        isEverywhere = isEverywhere && now != nullptr;
        if (now == nullptr) continue;
        if (!IsSame(*now, *Select(own_, run, nullptr))) return eInUse::kOther;
      }
    }
    return isEverywhere ? eInUse::kOnlyOwn : eInUse::kOwnOrNothing;
  }

  /// How far the passes of the import must be raised to be above all that
  /// stand for some of its runs.
  ///
  /// @throws ImportRefused if there are no such passes
  int RaiseOfPasses() const {
    int lowest = own_.front().entry->pass;
    int highestOwn = lowest;
    int highest = -1;
    for (const Version& version : own_) {
      lowest = std::min(lowest, version.entry->pass);
      highestOwn = std::max(highestOwn, version.entry->pass);
      for (const int run : RunsOf(*version.entry)) {
        const Version* const now = Select(standing_, run, nullptr);
        if (now != nullptr) highest = std::max(highest, now->entry->pass);
      }
    }
    const long long raise = 1LL + highest - lowest;
    if (highestOwn + raise > std::numeric_limits<int>::max()) {
      throw ImportRefused(TextOf(*own_.front().entry) +
                          ": there is no higher pass");
    }
    return static_cast<int>(raise);
  }

 private:
  bool IsSame(const Version& standing, const Version& own) const {
    return texts_->Of(standing.row->id) == *own.fields;
  }

  /// One run for each range in which the same entries stand.
  std::vector<int> RunsOf(const TableEntry& entry) const {
    std::vector<int> runs;
    const auto end = starts_.upper_bound(entry.runs.last);
    for (auto at = starts_.lower_bound(entry.runs.first); at != end; ++at) {
      runs.push_back(static_cast<int>(*at));
    }
    return runs;
  }

  Versions own_;
  Versions standing_;
  RowTexts* texts_;
  std::set<long long> starts_;
};

std::vector<PlannedEntry> WithTexts(std::vector<TableEntry> entries) {
  std::vector<PlannedEntry> planned;
  planned.reserve(entries.size());
  for (TableEntry& entry : entries) {
    try {
      RequireStorable(entry.table, "the name of the table");
      RequireStorable(entry.index, "the index");
      if (entry.pass < 0) throw std::invalid_argument("the pass is below 0");
      if (entry.runs.last < entry.runs.first) {
        throw std::invalid_argument("the last run is before the first");
      }
      std::string fields = WriteFields(entry);
      planned.push_back({std::move(entry), std::move(fields)});
    } catch (const std::invalid_argument& error) {
      throw std::invalid_argument(TextOf(entry) + ": " + error.what());
    }
  }
  return planned;
}

using Key = std::pair<std::string, std::string>;  // table, index

std::vector<KeyPlan> PlansByKey(const std::vector<PlannedEntry>& planned,
                                const std::vector<Row>& standing,
                                RowTexts& texts) {
  std::map<Key, std::pair<Versions, Versions>> keys;
  for (std::size_t i = 0; i < planned.size(); ++i) {
    const auto& [entry, fields] = planned[i];
    keys[{entry.table, entry.index}].first.push_back(
        {&entry, nullptr, &fields, i});
  }
  for (const Row& row : standing) {
    const auto key = keys.find({row.entry.table, row.entry.index});
    if (key == keys.end()) continue;
    key->second.second.push_back({&row.entry, &row, nullptr, 0});
  }
  std::vector<KeyPlan> plans;
  for (auto& [key, versions] : keys) {
    plans.emplace_back(std::move(versions.first), std::move(versions.second),
                       texts);
  }
  return plans;
}

std::string Explain(const KeyPlan::Conflict& conflict) {
  const auto& [own, before] = conflict;
  return TextOf(*own->entry) + ": differs from the entry of import " +
         std::to_string(before->row->import) + " for " +
         TextOf(before->entry->runs);
}

[[noreturn]] void RefuseConflicts(
    const std::vector<KeyPlan::Conflict>& conflicts) {
  constexpr std::size_t kShown = 5;
  std::string text;
  for (std::size_t i = 0; i < std::min(conflicts.size(), kShown); ++i) {
    text += Explain(conflicts[i]) + "\n";
  }
  if (conflicts.size() > kShown) {
    text += "and " + std::to_string(conflicts.size() - kShown) + " more\n";
  }
  throw ImportRefused(text +
                      "an entry is never overwritten; give it a higher pass, "
                      "or import with --new-pass");
}

}  // namespace

ImportPlan PlanImport(std::vector<TableEntry> entries,
                      const std::vector<Row>& standing, RowTexts& texts,
                      bool asNewPass) {
  std::vector<PlannedEntry> planned = WithTexts(std::move(entries));
  std::vector<bool> isAdded(planned.size(), false);
  std::vector<int> raises(planned.size(), 0);
  std::vector<KeyPlan::Conflict> conflicts;
  const std::vector<KeyPlan> plans = PlansByKey(planned, standing, texts);
  for (const KeyPlan& plan : plans) {
    const KeyPlan::Conflict conflict = plan.FindConflict();
    const bool isConflict = conflict.first != nullptr;
    if (isConflict && !asNewPass) conflicts.push_back(conflict);
    const auto inUse = plan.WhatIsInUse();
    const bool isLeftOut = asNewPass && inUse == KeyPlan::eInUse::kOnlyOwn;
    const bool isRaised = asNewPass && !isLeftOut &&
                          (isConflict || inUse == KeyPlan::eInUse::kOther);
    const int raise = isRaised ? plan.RaiseOfPasses() : 0;
    for (const Version& version : plan.Own()) {
      isAdded[version.place] =
          isRaised || (!isLeftOut && !plan.IsCovered(version));
      raises[version.place] = raise;
    }
  }
  if (!conflicts.empty()) RefuseConflicts(conflicts);

  ImportPlan result;
  for (std::size_t i = 0; i < planned.size(); ++i) {
    if (!isAdded[i]) {
      ++result.unchanged;
      continue;
    }
    planned[i].entry.pass += raises[i];
    result.added.push_back(std::move(planned[i]));
  }
  return result;
}

}  // namespace ZARN::SQL

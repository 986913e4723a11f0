#include "db/TableSet.hpp"

namespace ZARN {

void TableSet::Add(std::vector<TableEntry> entries) {
  Append(std::move(entries), &EntryVersions::added);
}

void TableSet::Override(std::vector<TableEntry> entries) {
  Append(std::move(entries), &EntryVersions::overriding);
}

void TableSet::Append(std::vector<TableEntry> entries,
                      Entries EntryVersions::*list) {
  auto grown = entries_;  // copies pointers only
  for (TableEntry& entry : entries) {
    EntryVersions& versions = grown[Key(entry.table, entry.index)];
    (versions.*list)
        .push_back(std::make_shared<const TableEntry>(std::move(entry)));
  }
  entries_.swap(grown);
}

void TableSet::Clear() { entries_.clear(); }

simple_ptr_nocopy<DBLink> TableSet::GetLink(std::string table,
                                            std::string index, int pass) const {
  const Key key(std::move(table), std::move(index));
  std::shared_ptr<const TableEntry> best;
  if (const auto found = entries_.find(key); found != entries_.end()) {
    best = Select(found->second, pass);
  }
  if (best == nullptr) {
    const std::string which =
        pass == kHighestPass ? "" : " with pass " + std::to_string(pass);
    throw DBNotFoundError("table " + key.first + ", index " + key.second +
                          ": there is no entry" + which + " for run " +
                          std::to_string(run_));
  }
  return simple_ptr_nocopy<DBLink>(new DBLink(std::move(best)));
}

std::vector<std::shared_ptr<const TableEntry>> TableSet::CurrentEntries()
    const {
  std::vector<std::shared_ptr<const TableEntry>> current;
  for (const auto& [key, versions] : entries_) {
    if (auto best = Select(versions, kHighestPass)) {
      current.push_back(std::move(best));
    }
  }
  return current;
}

std::vector<std::shared_ptr<const TableEntry>> TableSet::Versions(
    const std::string& table, const std::string& index) const {
  const auto found = entries_.find(Key(table, index));
  if (found == entries_.end()) return {};
  Entries all = found->second.added;
  const Entries& overriding = found->second.overriding;
  all.insert(all.end(), overriding.begin(), overriding.end());
  return all;
}

/// The entry of this pass that is valid for the current run; null if there is
/// none.
std::shared_ptr<const TableEntry> TableSet::Select(
    const EntryVersions& versions, int pass) const {
  for (const Entries* list : {&versions.overriding, &versions.added}) {
    std::shared_ptr<const TableEntry> best;
    bool isValid = false;  // one of the list, of any pass
    for (const auto& entry : *list) {
      if (!entry->runs.Contains(run_)) continue;
      isValid = true;
      if (pass != kHighestPass && entry->pass != pass) continue;
      if (best == nullptr || entry->pass >= best->pass) best = entry;
    }
    if (isValid) return best;
  }
  return nullptr;
}

}  // namespace ZARN

#pragma once

#include <map>
#include <string>
#include <vector>

#include "TVector3.h"
#include "db/DB.hpp"

namespace ZARN::Testing {

/// Tables that a test builds and changes field by field before loading them.
class Tables {
 public:
  /// Set one field, creating its entry if needed.
  Tables& Set(const std::string& table, const std::string& index,
              const std::string& field, TableField value) {
    entries_[{table, index}][field] = std::move(value);
    return *this;
  }

  /// Set the fields <prefix>x, <prefix>y and <prefix>z.
  Tables& SetPositions(const std::string& table, const std::string& index,
                       const std::vector<TVector3>& positions,
                       const std::string& prefix = "") {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> z;
    for (const TVector3& p : positions) {
      x.push_back(p.X());
      y.push_back(p.Y());
      z.push_back(p.Z());
    }
    Set(table, index, prefix + "x", x);
    Set(table, index, prefix + "y", y);
    return Set(table, index, prefix + "z", z);
  }

  Tables& Remove(const std::string& table, const std::string& index) {
    entries_.erase({table, index});
    return *this;
  }

  Tables& RemoveField(const std::string& table, const std::string& index,
                      const std::string& field) {
    entries_[{table, index}].erase(field);
    return *this;
  }

  /// These tables as a table set.
  TableSet AsSet() const {
    TableSet set;
    set.Add(Entries());
    return set;
  }

  /// Replace the content of the process-wide database by these tables.
  void Load() const {
    DB& db = DB::Get();
    db.Clear();
    db.SetRun(0);
    db.Add(Entries());
  }

 private:
  std::vector<TableEntry> Entries() const {
    std::vector<TableEntry> entries;
    for (const auto& [key, fields] : entries_) {
      TableEntry entry;
      entry.table = key.first;
      entry.index = key.second;
      entry.fields = fields;
      entries.push_back(std::move(entry));
    }
    return entries;
  }

  std::map<std::pair<std::string, std::string>,
           std::map<std::string, TableField>>
      entries_;
};

/// Only the vessel: inner radius 5800, outer radius 5860, neck radius 700 mm.
inline Tables VesselTables() {
  Tables tables;
  tables.Set("SOLID", "acrylic_vessel_inner", "r_sphere", 5800.0);
  tables.Set("SOLID", "acrylic_vessel_outer", "r_sphere", 5860.0);
  tables.Set("SOLID", "acrylic_vessel_outer", "r_neck", 700.0);
  return tables;
}

}  // namespace ZARN::Testing

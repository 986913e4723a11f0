#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ZARN::IO {

/// What the columns of a table are called where they do not have our names.
class ColumnNames {
 public:
  ColumnNames() = default;
  /// @param others  the name in the table for our name
  explicit ColumnNames(std::map<std::string, std::string> others)
      : others_(std::move(others)) {}

  /// The name in the table of the column with our name.
  std::string Of(const std::string& ours) const {
    const auto found = others_.find(ours);
    return found == others_.end() ? ours : found->second;
  }

  /// Whether a column has another name, and so must be in the table.
  bool Has(const std::string& ours) const { return others_.count(ours) > 0; }

  /// Why a table cannot be used: the names that it does not have. Suggests the
  /// nearest name that it has for one that was given here.
  ///
  /// @param missing  names in the table, at least one
  /// @param known    those that it has
  std::string DescribeMissing(const std::vector<std::string>& missing,
                              const std::vector<std::string>& known) const;

 private:
  std::map<std::string, std::string> others_;
};

}  // namespace ZARN::IO

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "db/TableEntry.hpp"

namespace ZARN {

/// Reads fields of one table entry by name. Keeps the entry alive, even if its
/// table set changes or is destroyed.
class DBLink {
 public:
  explicit DBLink(std::shared_ptr<const TableEntry> entry);

  /// @throws DBNotFoundError if the field is missing or not a number
  double GetD(const std::string& field) const;
  /// @throws DBNotFoundError if the field is missing or not an array of
  ///         numbers
  std::vector<double> GetDArray(const std::string& field) const;
  /// @throws DBNotFoundError if the field is missing or not a string
  std::string GetS(const std::string& field) const;

  /// Whether the field is a single number, not an array or a string.
  ///
  /// @throws DBNotFoundError if the field is missing
  bool IsNumber(const std::string& field) const;

 private:
  const TableField& Find(const std::string& field) const;
  template <class Value>
  const Value& Get(const std::string& field, const char* wanted) const;

  std::shared_ptr<const TableEntry> entry_;
};

}  // namespace ZARN

#pragma once

#include "db/TableSet.hpp"

namespace ZARN {

/// The constants database: the table set that the whole process shares.
/// Calculators read it unless they are given a table set of their own.
///
///     ZARN::TableSet tables = ZARN::DB::Get();  // an independent copy
class DB final : public TableSet {
 public:
  /// The only database of the process, created by the first call.
  static DB& Get();

  DB(const DB&) = delete;
  DB& operator=(const DB&) = delete;

 private:
  DB() = default;
};

}  // namespace ZARN

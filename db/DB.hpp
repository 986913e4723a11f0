#pragma once

#include "db/TableSet.hpp"

namespace ZARN {

/// The constants database: the set of tables that the whole process shares, and
/// that calculators read unless they are given a set of their own.
///
///     ZARN::TableSet tables = ZARN::DB::Get();  // a copy, independent of it
class DB final : public TableSet {
 public:
  /// The one database of the process, made at the first call.
  static DB& Get();

  DB(const DB&) = delete;
  DB& operator=(const DB&) = delete;

 private:
  DB() = default;
};

}  // namespace ZARN

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "io/CsvTable.hpp"
#include "io/InputFile.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

/// Reads light paths from CSV: the columns type, start_x ... start_z, end_*,
/// initial_*, final_*, av1_* to av4_*, in any order; and the columns event and
/// pmt, if the table has them. Others are ignored.
class LightPathReader {
 public:
  /// The type of paths whose type name is not one of the eight.
  static constexpr auto kUnknownType =
      static_cast<DU::eLightPathType>(DU::kNumberOfLightPathTypes);

  /// @param input  must outlive the reader
  /// @throws BadInput if a column is missing
  explicit LightPathReader(InputFile& input);

  /// The table, whose blocks of rows may be read on several threads.
  CsvTable& Table() { return table_; }
  const CsvTable& Table() const { return table_; }

  /// Names of those of the columns event and pmt that the table has, in this
  /// order.
  const std::vector<std::string>& NameColumns() const { return nameColumns_; }

  /// Read the next row into @p path; false after the last. An empty coordinate
  /// is 0.
  ///
  /// @throws CsvError
  bool Next(CsvRows& rows, DU::LightPath& path) const;

  /// The type name in the current row, unchanged.
  std::string_view TypeName(const CsvRows& rows) const {
    return rows.Cell(columns_[0]);
  }

  /// The error for the type name in the current row.
  CsvError TypeError(const CsvRows& rows, const std::string& reason) const {
    return rows.Error(columns_[0], reason);
  }

  /// The name in the current row, and the error for it.
  ///
  /// @param number  of the column among NameColumns
  std::string_view Name(const CsvRows& rows, std::size_t number) const {
    return rows.Cell(namePlaces_[number]);
  }
  CsvError NameError(const CsvRows& rows, std::size_t number,
                     const std::string& reason) const {
    return rows.Error(namePlaces_[number], reason);
  }

 private:
  CsvTable table_;
  std::vector<std::size_t> columns_;  // as LightPathColumns
  std::vector<std::string> nameColumns_;
  std::vector<std::size_t> namePlaces_;  // of the columns with these names
};

}  // namespace ZARN::IO

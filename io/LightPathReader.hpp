#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "io/ColumnNames.hpp"
#include "io/CsvTable.hpp"
#include "io/InputFile.hpp"
#include "io/LightPathBlock.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

/// Reads light paths from CSV: the columns type, start_x ... start_z, end_*,
/// initial_*, final_*, av1_* to av4_*, in any order; and the columns event and
/// pmt, if the table has them. Others are ignored.
class LightPathReader {
 public:
  /// The type of paths whose type name is not one of the eight.
  static constexpr auto kUnknownType = LightPathBlock::kUnknownType;

  /// @param input  must outlive the reader
  /// @param names  what the columns are called
  /// @throws BadInput if a column is missing
  explicit LightPathReader(InputFile& input, const ColumnNames& names = {});

  /// The table, whose blocks of rows may be read on several threads.
  CsvTable& Table() { return table_; }
  const CsvTable& Table() const { return table_; }

  /// Names of those of the columns event and pmt that the table has, in this
  /// order.
  const std::vector<std::string>& NameColumns() const { return nameColumns_; }

  /// Read the next row into @p path; false after the last. An empty coordinate
  /// is 0.
  ///
  /// @throws TableError
  bool Next(CsvRows& rows, DU::LightPath& path) const;

  /// The type name in the current row, unchanged.
  std::string_view TypeName(const CsvRows& rows) const {
    return rows.Cell(columns_[0]);
  }

  /// The name in the current row.
  ///
  /// @param number  of the column among NameColumns
  std::string_view Name(const CsvRows& rows, std::size_t number) const {
    return rows.Cell(namePlaces_[number]);
  }

  /// Positions of the columns of the type and of names, for errors.
  std::size_t TypePlace() const { return columns_[0]; }
  std::size_t NamePlace(std::size_t number) const {
    return namePlaces_[number];
  }

 private:
  CsvTable table_;
  std::vector<std::size_t> columns_;  // as LightPathColumns
  std::vector<std::string> nameColumns_;
  std::vector<std::size_t> namePlaces_;  // of the columns with these names
};

}  // namespace ZARN::IO

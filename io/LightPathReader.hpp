#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "io/CsvTable.hpp"
#include "io/InputFile.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

/// Reads light paths from CSV: the columns type, start_x ... start_z, end_*,
/// initial_*, final_*, av1_* to av4_*, in any order; others are ignored.
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

  /// Read the next row into @p path; false after the last. An empty coordinate
  /// is 0.
  ///
  /// @throws CsvError
  bool Next(CsvRows& rows, DU::LightPath& path) const;

  /// The type name in the current row, unchanged.
  std::string_view TypeName(const CsvRows& rows) const {
    return rows.Cell(columns_[0]);
  }

 private:
  CsvTable table_;
  std::vector<std::size_t> columns_;  // as LightPathColumns
};

}  // namespace ZARN::IO

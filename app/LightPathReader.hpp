#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/CsvTable.hpp"
#include "app/InputFile.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::App {

/// Reads light paths from CSV: the columns type, start_x ... start_z, end_*,
/// initial_*, final_*, av1_* to av4_*, in any order; others are ignored.
class LightPathReader {
 public:
  /// @param input  must outlive the reader
  /// @throws BadInput if a column is missing
  explicit LightPathReader(InputFile& input);

  /// Read the next path into @p lightPath; false after the last.
  ///
  /// An empty coordinate is 0. A name that is no path type's own is given, as
  /// it stands, to a type that has no other name.
  ///
  /// @throws BadInput naming file, line, row and column
  bool Next(DU::LightPathCalculator& lightPath);

  /// Bytes of the file up to the end of the current row.
  std::uint64_t BytesTaken() const { return table_.BytesTaken(); }

  /// Number of paths so far whose type had a name outside the eight.
  std::uint64_t UnknownTypes() const { return unknownTypes_; }
  /// The first such name.
  const std::string& FirstUnknownType() const { return firstUnknownType_; }

 private:
  double Coordinate(std::size_t column) const;

  CsvTable table_;
  std::vector<std::size_t> columns_;  // type, and as kLightPathColumns
  std::uint64_t unknownTypes_ = 0;
  std::string firstUnknownType_;
};

}  // namespace ZARN::App

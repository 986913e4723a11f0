#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "TVector3.h"
#include "io/CsvTable.hpp"
#include "io/InputFile.hpp"

namespace ZARN::IO {

/// An event or a PMT.
struct NamedPosition {
  std::string name;   ///< as in the file
  std::string cell;   ///< the same as a CSV cell
  TVector3 position;  ///< mm
};

/// Their positions.
std::vector<TVector3> PositionsOf(const std::vector<NamedPosition>& items);

/// Reads positions from CSV: a column of names and the columns x, y and z, mm,
/// in any order; others are ignored.
class PositionReader {
 public:
  /// @param input       must outlive the reader
  /// @param nameColumn  header of the column of names
  /// @throws BadInput if a column is missing
  PositionReader(InputFile& input, const std::string& nameColumn);

  /// Read the next position into @p item; false after the last.
  ///
  /// @throws BadInput naming file, line, row and column; also for an empty
  ///         coordinate, which must not be read as 0
  bool Next(NamedPosition& item);

  /// Report an error in the name that was read last.
  [[noreturn]] void FailName(const std::string& reason) const {
    table_.Fail(nameColumn_, reason);
  }

  /// Bytes of the file up to the end of the current row.
  std::uint64_t BytesTaken() const { return table_.BytesTaken(); }

 private:
  CsvTable table_;
  std::size_t nameColumn_ = 0;
  std::array<std::size_t, 3> columns_ = {};
};

/// Read all positions of a file.
///
/// @param path        as for InputFile
/// @param nameColumn  header of the column of names
/// @throws as InputFile and PositionReader
std::vector<NamedPosition> ReadPositions(const std::string& path,
                                         const std::string& nameColumn);

}  // namespace ZARN::IO

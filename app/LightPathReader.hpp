#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "TVector3.h"
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

  /// Number of paths so far whose type had a name outside the eight.
  std::uint64_t UnknownTypes() const { return unknownTypes_; }
  /// The first such name.
  const std::string& FirstUnknownType() const { return firstUnknownType_; }

 private:
  struct VectorColumns {
    TVector3 DU::LightPath::*vector;
    std::array<std::size_t, 3> columns;
  };

  double Coordinate(std::size_t column) const;

  CsvTable table_;
  std::size_t typeColumn_ = 0;
  std::array<VectorColumns, 8> vectors_;
  std::uint64_t unknownTypes_ = 0;
  std::string firstUnknownType_;
};

}  // namespace ZARN::App

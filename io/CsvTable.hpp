#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/CsvBlocks.hpp"
#include "io/CsvRows.hpp"
#include "io/InputFile.hpp"

namespace ZARN::IO {

/// A table in CSV with a header row, read row by row, or block by block where
/// threads share the work. A UTF-8 byte-order mark is skipped; see CsvRows for
/// the rest.
///
/// Every error is a BadInput that names the file, the line (the first is 1),
/// the row (the first is 0) and the column.
class CsvTable {
 public:
  /// Reads the header.
  ///
  /// @param input      must outlive the table
  /// @param blockSize  as for CsvBlocks; what is read does not depend on it
  /// @throws BadInput if there is no header or it names a column twice
  explicit CsvTable(InputFile& input,
                    std::size_t blockSize = CsvBlocks::kBlockSize);

  /// Where the column of this name stands; nullopt if there is none.
  std::optional<std::size_t> FindColumn(std::string_view name) const;

  /// Where the columns of these names stand.
  ///
  /// @throws BadInput naming all that are missing
  std::vector<std::size_t> RequireColumns(
      const std::vector<std::string>& names) const;

  /// Say that the header is wrong.
  [[noreturn]] void FailHeader(const std::string& reason) const;

  // Row by row:

  /// Go to the next row; false after the last.
  ///
  /// @throws BadInput for bad quoting or a wrong number of cells
  bool NextRow();

  /// A cell of the current row; valid until the next one.
  std::string_view Cell(std::size_t column) const {
    return rows_->Cell(column);
  }

  /// Number of the current row, from 0.
  std::uint64_t Row() const { return taken_.rows + rows_->Read().rows - 1; }

  /// Bytes of the file up to the end of the current row.
  std::uint64_t BytesTaken() const {
    return taken_.bytes + (rows_.has_value() ? rows_->Read().bytes : 0);
  }

  /// Say that a cell of the current row is wrong.
  [[noreturn]] void Fail(std::size_t column, const std::string& reason) const {
    Fail(rows_->Error(column, reason));
  }

  // Block by block: one thread takes the blocks and, in the same order, counts
  // them again when they are read; meanwhile others may read them.

  /// Go on to the next block of rows; false after the last.
  bool NextBlock(CsvBlock& block);

  /// Whether NextBlock would have to wait for more to come.
  bool WouldWait() const { return blocks_.WouldWait(); }

  /// The rows of a block.
  CsvRows RowsOf(CsvBlock& block) const {
    return CsvRows(block, columns_.size());
  }

  /// Count a block whose rows were all read.
  void Count(const CsvExtent& block) { taken_ += block; }

  /// Say what is wrong in the block behind those that were counted.
  [[noreturn]] void Fail(const CsvError& error) const;

 private:
  bool ReadHeader(CsvBlock& block);

  std::string name_;  // of the file
  CsvBlocks blocks_;
  CsvBlock first_;   // the rows behind the header, until they are taken
  CsvExtent taken_;  // the header, and blocks that were read

  CsvBlock block_;               // the current one when read row by row,
  std::optional<CsvRows> rows_;  // and its rows

  std::vector<std::string> columns_;
  std::map<std::string, std::size_t, std::less<>> columnOf_;
  std::uint64_t headerLine_ = 0;
};

}  // namespace ZARN::IO

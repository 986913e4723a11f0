#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/ColumnNames.hpp"
#include "io/CsvBlocks.hpp"
#include "io/CsvRows.hpp"
#include "io/InputFile.hpp"

namespace ZARN::IO {

/// A CSV table with a header row, read row by row, or block by block to share
/// the work among threads. A UTF-8 byte-order mark is skipped; for the format
/// see CsvRows.
///
/// Every error is a BadInput that names the file, the line (the first is 1),
/// the row (the first is 0) and the column.
class CsvTable {
 public:
  /// Reads the header.
  ///
  /// @param input      must outlive the table
  /// @param blockSize  as for CsvBlocks; does not change the result
  /// @throws BadInput if there is no header or it names a column twice
  explicit CsvTable(InputFile& input,
                    std::size_t blockSize = CsvBlocks::kBlockSize);

  /// Position of the column with this name; nullopt if there is none.
  std::optional<std::size_t> FindColumn(std::string_view name) const;

  /// Positions of the columns with our names.
  ///
  /// @param names  what they are called in the table
  /// @throws BadInput naming all missing columns
  std::vector<std::size_t> RequireColumns(const std::vector<std::string>& ours,
                                          const ColumnNames& names = {}) const;

  /// Report an error in the header.
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

  /// Report an error in a cell of the current row.
  [[noreturn]] void Fail(std::size_t column, const std::string& reason) const {
    Fail(rows_->Error(column, reason));
  }

  // Block by block: one thread calls NextBlock, and Count for each block in the
  // same order once its rows are read. Any thread may read the rows of a block.

  /// Take the next block of rows; false after the last.
  bool NextBlock(CsvBlock& block);

  /// Whether NextBlock would block waiting for input.
  bool WouldWait() const { return blocks_.WouldWait(); }

  /// The rows of a block.
  CsvRows RowsOf(CsvBlock& block) const {
    return CsvRows(block, columns_.size());
  }

  /// Count a block after all its rows were read.
  void Count(const CsvExtent& block) { taken_ += block; }

  /// Report an error in the first block that is not counted yet.
  [[noreturn]] void Fail(const TableError& error) const;

 private:
  bool ReadHeader(CsvBlock& block);

  std::string name_;  // of the file
  CsvBlocks blocks_;
  CsvBlock first_;   // the rows after the header, until they are taken
  CsvExtent taken_;  // size of the header and the counted blocks

  CsvBlock block_;               // the current one when read row by row,
  std::optional<CsvRows> rows_;  // and its rows

  std::vector<std::string> columns_;
  std::map<std::string, std::size_t, std::less<>> columnOf_;
  std::uint64_t headerLine_ = 0;
};

}  // namespace ZARN::IO

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/CsvBlocks.hpp"
#include "io/TableError.hpp"

namespace ZARN::IO {

/// Size of a table or of a part of it.
struct CsvExtent {
  std::uint64_t bytes = 0;
  std::uint64_t lines = 0;
  std::uint64_t rows = 0;

  CsvExtent& operator+=(const CsvExtent& more) {
    bytes += more.bytes;
    lines += more.lines;
    rows += more.rows;
    return *this;
  }
};

/// Reads the rows of a block of CSV (RFC 4180), one after the other.
///
/// Cells are not trimmed. Lines end with LF or CRLF. Blank lines are skipped
/// and not counted as rows.
class CsvRows {
 public:
  /// Without a limit, one missing closing quote would read the whole file into
  /// memory.
  static constexpr std::size_t kMaxRowSize = 1024UL * 1024;

  /// @param block    must outlive this object; it is modified: doubled quotes
  ///                 become single ones in place
  /// @param columns  number of cells that each row must have; nullopt for any
  explicit CsvRows(CsvBlock& block,
                   std::optional<std::size_t> columns = std::nullopt);

  /// Go to the next row; false after the last.
  ///
  /// @throws TableError for bad quoting or a wrong number of cells
  bool Next();

  /// A cell of the current row; valid for as long as the block.
  std::string_view Cell(std::size_t column) const {
    const Span& cell = cells_[column];
    return {cell.begin, static_cast<std::size_t>(cell.end - cell.begin)};
  }
  std::size_t Cells() const { return count_; }

  /// Size of the text read so far, up to the end of the current row, which may
  /// span several lines.
  CsvExtent Read() const;

  /// The line in which the current row starts, from 0.
  std::uint64_t RowLine() const { return rowLine_; }

  /// The error for a cell of the current row.
  TableError Error(std::size_t column, const std::string& reason) const {
    return {{rowLine_, rows_ - 1, column}, reason};
  }

 private:
  enum class eEnd { kOfCell, kOfRow };
  struct Span {
    const char* begin;
    const char* end;
  };

  void FindLineEnd();
  void PassLineEnd();
  bool IsPlain() const;
  void ReadPlainRow();
  eEnd ReadCell();
  void ReadQuoted();
  void ReadUnquoted();
  void Add(const char* begin, const char* end);
  void CheckSize(std::size_t cellSize) const;
  void CheckCellCount() const;

  const char* begin_;
  char* at_;
  char* end_;
  // Of the line that contains at_:
  char* lineEnd_ = nullptr;  // its LF, or the end of the block
  char* textEnd_ = nullptr;  // end of its text, before LF or CRLF

  std::optional<std::size_t> columns_;
  std::vector<Span> cells_;
  std::size_t count_ = 0;     // cells in the current row
  std::size_t textSize_ = 0;  // bytes in these cells
  std::uint64_t lines_ = 0;
  std::uint64_t rowLine_ = 0;
  std::uint64_t rows_ = 0;
};

}  // namespace ZARN::IO

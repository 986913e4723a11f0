#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/InputFile.hpp"

namespace ZARN::App {

/// A table in CSV (RFC 4180) with a header row, read row by row.
///
/// Cells are taken as they stand, never trimmed. A UTF-8 byte-order mark and
/// CRLF line ends are accepted; blank lines are skipped and not counted as
/// rows. Every error is a BadInput that names the file, the line (the first is
/// 1), the row (the first is 0) and the column.
class CsvTable {
 public:
  /// Reads the header.
  ///
  /// @param input  must outlive the table
  /// @throws BadInput if there is no header or it names a column twice
  explicit CsvTable(InputFile& input);

  /// Where the column of this name stands; nullopt if there is none.
  std::optional<std::size_t> FindColumn(std::string_view name) const;

  /// Where the columns of these names stand.
  ///
  /// @throws BadInput naming all that are missing
  std::vector<std::size_t> RequireColumns(
      const std::vector<std::string>& names) const;

  /// Go to the next row; false after the last.
  ///
  /// @throws BadInput for bad quoting or a wrong number of cells
  bool NextRow();

  /// A cell of the current row; valid until the next one.
  std::string_view Cell(std::size_t column) const;

  /// Number of the current row, from 0.
  std::size_t Row() const { return rowsRead_ - 1; }

  /// Bytes of the file up to the end of the current row.
  std::uint64_t BytesTaken() const { return input_.BytesRead() - (end_ - at_); }

  /// Say that a cell of the current row is wrong.
  [[noreturn]] void Fail(std::size_t column, const std::string& reason) const;

  /// Say that the header is wrong.
  [[noreturn]] void FailHeader(const std::string& reason) const;

 private:
  static constexpr int kEndOfFile = -1;
  enum class eEnd { kOfCell, kOfRow };

  bool ReadRecord();
  eEnd ReadCell(std::size_t column);
  void CheckCellCount() const;

  void SkipByteOrderMark();
  int Peek(std::size_t ahead = 0);
  char Take();
  bool SkipLineEnd();

  InputFile& input_;
  std::vector<char> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;

  std::vector<std::string> columns_;
  std::map<std::string, std::size_t, std::less<>> columnOf_;
  std::string text_;               // the current row's cells, end to end
  std::vector<std::size_t> ends_;  // where each cell ends in text_
  std::size_t line_ = 1;           // of the next character
  std::size_t rowLine_ = 1;        // where the current row begins
  std::size_t rowsRead_ = 0;
};

}  // namespace ZARN::App

#include "io/CsvTable.hpp"

#include <utility>

#include "io/Errors.hpp"
#include "io/Quoted.hpp"

namespace ZARN::IO {
namespace {

std::size_t SizeOfByteOrderMark(const CsvBlock& block) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";  // of UTF-8
  const std::string_view text(block.bytes.data() + block.begin,
                              block.end - block.begin);
  return text.substr(0, kMark.size()) == kMark ? kMark.size() : 0;
}

}  // namespace

CsvTable::CsvTable(InputFile& input, std::size_t blockSize)
    : name_(input.Name()), blocks_(input, blockSize) {
  bool isAtStart = true;
  while (blocks_.Next(first_)) {
    if (std::exchange(isAtStart, false)) {
      first_.begin = taken_.bytes = SizeOfByteOrderMark(first_);
    }
    if (ReadHeader(first_)) return;
  }
  throw BadInput(name_ + ": the file has no header row");
}

/// Read the header and remove it from the block; false if the block has only
/// blank lines.
bool CsvTable::ReadHeader(CsvBlock& block) {
  CsvRows rows(block);
  bool isFound = false;
  try {
    isFound = rows.Next();
  } catch (const TableError& error) {
    Fail(error);
  }
  headerLine_ = taken_.lines + rows.RowLine();
  for (std::size_t column = 0; column < rows.Cells(); ++column) {
    const std::string name(rows.Cell(column));
    const bool isNew = columnOf_.emplace(name, column).second;
    if (!isNew && !name.empty()) {
      FailHeader("the column " + Quoted(name) + " appears twice");
    }
    columns_.push_back(name);
  }
  const CsvExtent read = rows.Read();
  taken_ += {read.bytes, read.lines, 0};
  block.begin += read.bytes;
  return isFound;
}

std::optional<std::size_t> CsvTable::FindColumn(std::string_view name) const {
  const auto found = columnOf_.find(name);
  if (found == columnOf_.end()) return std::nullopt;
  return found->second;
}

std::vector<std::size_t> CsvTable::RequireColumns(
    const std::vector<std::string>& ours, const ColumnNames& names) const {
  std::vector<std::size_t> columns;
  std::vector<std::string> missing;
  for (const std::string& our : ours) {
    const auto column = FindColumn(names.Of(our));
    if (!column.has_value()) missing.push_back(names.Of(our));
    columns.push_back(column.value_or(0));
  }
  if (!missing.empty()) FailHeader(names.DescribeMissing(missing, columns_));
  return columns;
}

bool CsvTable::NextRow() {
  try {
    while (!rows_.has_value() || !rows_->Next()) {
      if (rows_.has_value()) Count(rows_->Read());
      rows_.reset();
      if (!NextBlock(block_)) return false;
      rows_.emplace(RowsOf(block_));
    }
  } catch (const TableError& error) {
    Fail(error);
  }
  return true;
}

bool CsvTable::NextBlock(CsvBlock& block) {
  if (first_.begin == first_.end) return blocks_.Next(block);
  block = std::exchange(first_, {});
  return true;
}

void CsvTable::Fail(const TableError& error) const {
  const TableError::Place& place = error.Where();
  std::string text =
      name_ + ": line " + std::to_string(taken_.lines + place.line + 1);
  if (columns_.empty()) {
    text += " (the header), column " + std::to_string(place.column + 1);
  } else {
    text += " (row " + std::to_string(taken_.rows + place.row) + "), ";
    text += place.column < columns_.size()
                ? "column " + Printable(columns_[place.column])
                : "column " + std::to_string(place.column + 1) + " (unnamed)";
  }
  throw BadInput(text + ": " + error.what());
}

void CsvTable::FailHeader(const std::string& reason) const {
  throw BadInput(name_ + ": line " + std::to_string(headerLine_ + 1) +
                 " (the header): " + reason);
}

}  // namespace ZARN::IO

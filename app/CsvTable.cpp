#include "app/CsvTable.hpp"

#include <algorithm>

#include "app/Failure.hpp"
#include "app/Quoted.hpp"

namespace ZARN::App {
namespace {

constexpr std::size_t kBufferSize = 256UL * 1024;
/// Without a limit, one missing closing quote would take the whole file into
/// memory.
constexpr std::size_t kMaxRowSize = 1024UL * 1024;

}  // namespace

CsvTable::CsvTable(InputFile& input) : input_(input), buffer_(kBufferSize) {
  SkipByteOrderMark();
  if (!ReadRecord()) {
    throw BadInput(input_.Name() + ": the file has no header row");
  }
  for (std::size_t column = 0; column < ends_.size(); ++column) {
    const std::string name(Cell(column));
    const bool isNew = columnOf_.emplace(name, column).second;
    if (!isNew && !name.empty()) {
      FailHeader("the column " + Quoted(name) + " is named twice");
    }
    columns_.push_back(name);
  }
}

std::optional<std::size_t> CsvTable::FindColumn(std::string_view name) const {
  const auto found = columnOf_.find(name);
  if (found == columnOf_.end()) return std::nullopt;
  return found->second;
}

std::vector<std::size_t> CsvTable::RequireColumns(
    const std::vector<std::string>& names) const {
  std::vector<std::size_t> columns;
  std::string missing;
  for (const std::string& name : names) {
    const auto column = FindColumn(name);
    if (!column.has_value()) missing += (missing.empty() ? "" : ", ") + name;
    columns.push_back(column.value_or(0));
  }
  if (!missing.empty()) FailHeader("missing columns: " + missing);
  return columns;
}

bool CsvTable::NextRow() {
  ++rowsRead_;
  if (!ReadRecord()) return false;
  CheckCellCount();
  return true;
}

std::string_view CsvTable::Cell(std::size_t column) const {
  const std::size_t begin = column == 0 ? 0 : ends_[column - 1];
  return std::string_view(text_).substr(begin, ends_[column] - begin);
}

/// Read the next line that is not blank, with what its quotes carry on to
/// further lines; false at the end of the file.
bool CsvTable::ReadRecord() {
  text_.clear();
  ends_.clear();
  while (SkipLineEnd()) {
  }
  if (Peek() == kEndOfFile) return false;
  rowLine_ = line_;
  eEnd end = eEnd::kOfCell;
  while (end == eEnd::kOfCell) {
    end = ReadCell(ends_.size());
    ends_.push_back(text_.size());
  }
  return true;
}

/// Append the next cell to text_ and go past its end.
CsvTable::eEnd CsvTable::ReadCell(std::size_t column) {
  const bool isQuoted = Peek() == '"';
  bool isOpen = isQuoted;
  if (isQuoted) Take();
  while (true) {
    const int c = Peek();
    if (isOpen) {
      if (c == kEndOfFile) Fail(column, "the closing quote is missing");
      Take();
      if (c == '\n') ++line_;
      if (c != '"') {
        text_ += static_cast<char>(c);
      } else if (Peek() == '"') {
        text_ += Take();
      } else {
        isOpen = false;
      }
    } else if (c == ',') {
      Take();
      return eEnd::kOfCell;
    } else if (c == kEndOfFile || SkipLineEnd()) {
      return eEnd::kOfRow;
    } else if (isQuoted) {
      Fail(column, "there is text behind the closing quote");
    } else if (c == '"') {
      Fail(column, "there is a quote within a cell that is not quoted");
    } else {
      text_ += Take();
    }
    if (text_.size() + ends_.size() > kMaxRowSize) {
      Fail(column, "the row is longer than 1 MiB; is a closing quote missing?");
    }
  }
}

void CsvTable::CheckCellCount() const {
  const std::size_t found = ends_.size();
  const std::size_t wanted = columns_.size();
  if (found == wanted) return;
  if (found < wanted) {
    Fail(found, "the row has only " + std::to_string(found) + " of " +
                    std::to_string(wanted) +
                    " cells; this is the first one missing");
  }
  Fail(wanted - 1, "the row has " + std::to_string(found) + " cells for " +
                       std::to_string(wanted) +
                       " columns; this is the last column");
}

/// The character that lies @p ahead of the next one.
int CsvTable::Peek(std::size_t ahead) {
  while (at_ + ahead >= end_) {
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(at_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_),
              buffer_.begin());
    end_ -= at_;
    at_ = 0;
    const std::size_t count =
        input_.Read(buffer_.data() + end_, buffer_.size() - end_);
    if (count == 0) return kEndOfFile;
    end_ += count;
  }
  return static_cast<unsigned char>(buffer_[at_ + ahead]);
}

void CsvTable::SkipByteOrderMark() {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";  // of UTF-8
  for (std::size_t i = 0; i < kMark.size(); ++i) {
    if (Peek(i) != static_cast<unsigned char>(kMark[i])) return;
  }
  at_ += kMark.size();
}

char CsvTable::Take() { return buffer_[at_++]; }

/// Go past LF or CRLF (or a CR that ends the file), if that comes next.
bool CsvTable::SkipLineEnd() {
  const int c = Peek();
  if (c == '\r') {
    const int next = Peek(1);
    if (next != '\n' && next != kEndOfFile) return false;
    Take();
    if (next == kEndOfFile) return true;
  } else if (c != '\n') {
    return false;
  }
  Take();
  ++line_;
  return true;
}

void CsvTable::Fail(std::size_t column, const std::string& reason) const {
  std::string place = input_.Name() + ": line " + std::to_string(rowLine_);
  if (columns_.empty()) {
    place += " (the header), column " + std::to_string(column + 1);
  } else {
    place += " (row " + std::to_string(Row()) + "), ";
    place += column < columns_.size()
                 ? "column " + Printable(columns_[column])
                 : "column " + std::to_string(column + 1) + " (not named)";
  }
  throw BadInput(place + ": " + reason);
}

void CsvTable::FailHeader(const std::string& reason) const {
  throw BadInput(input_.Name() + ": line " + std::to_string(rowLine_) +
                 " (the header): " + reason);
}

}  // namespace ZARN::App

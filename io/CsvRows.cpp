#include "io/CsvRows.hpp"

#include <algorithm>
#include <cstring>

namespace ZARN::IO {
namespace {

/// The first @p c in [begin, end); @p end if there is none. memchr checks many
/// bytes at a time.
char* Find(char c, char* begin, char* end) {
  const auto size = static_cast<std::size_t>(end - begin);
  void* const found = std::memchr(begin, c, size);
  return found == nullptr ? end : static_cast<char*>(found);
}

}  // namespace

CsvRows::CsvRows(CsvBlock& block, std::optional<std::size_t> columns)
    : begin_(block.bytes.data() + block.begin),
      at_(block.bytes.data() + block.begin),
      end_(block.bytes.data() + block.end),
      columns_(columns),
      cells_(columns.value_or(0)) {}

bool CsvRows::Next() {
  while (true) {
    if (at_ == end_) return false;
    FindLineEnd();
    if (at_ != textEnd_) break;
    PassLineEnd();
  }
  ++rows_;
  rowLine_ = lines_;
  count_ = 0;
  textSize_ = 0;
  if (IsPlain()) {
    ReadPlainRow();
  } else {
    while (ReadCell() == eEnd::kOfCell) {
    }
  }
  CheckCellCount();
  return true;
}

CsvExtent CsvRows::Read() const {
  return {static_cast<std::uint64_t>(at_ - begin_), lines_, rows_};
}

void CsvRows::FindLineEnd() {
  lineEnd_ = Find('\n', at_, end_);
  textEnd_ = lineEnd_;
  if (textEnd_ != at_ && textEnd_[-1] == '\r') --textEnd_;
}

void CsvRows::PassLineEnd() {
  at_ = lineEnd_;
  if (at_ == end_) return;
  ++at_;
  ++lines_;
}

/// Whether the row is on one line and needs only to be split at its commas.
bool CsvRows::IsPlain() const {
  return textEnd_ - at_ <= static_cast<std::ptrdiff_t>(kMaxRowSize) &&
         Find('"', at_, textEnd_) == textEnd_;
}

/// Same result as ReadCell for all cells of the row.
void CsvRows::ReadPlainRow() {
  char* begin = at_;
  char* const end = textEnd_;
  while (true) {
    char* const comma = Find(',', begin, end);
    Add(begin, comma);
    if (comma == end) break;
    begin = comma + 1;
  }
  PassLineEnd();
}

/// Read the next cell and move past its end.
CsvRows::eEnd CsvRows::ReadCell() {
  if (at_ != textEnd_ && *at_ == '"') {
    ReadQuoted();
  } else {
    ReadUnquoted();
  }
  if (at_ == textEnd_) {
    PassLineEnd();
    return eEnd::kOfRow;
  }
  ++at_;  // the comma
  return eEnd::kOfCell;
}

void CsvRows::ReadUnquoted() {
  char* const begin = at_;
  at_ = Find(',', begin, textEnd_);
  char* const quote = Find('"', begin, at_);
  if (quote != begin) CheckSize(static_cast<std::size_t>(quote - begin));
  if (quote != at_) {
    throw Error(count_, "quote in an unquoted cell");
  }
  Add(begin, at_);
}

void CsvRows::ReadQuoted() {
  char* const begin = ++at_;
  char* text = begin;  // end of the text so far
  while (true) {
    char* const quote = Find('"', at_, end_);
    lines_ += static_cast<std::uint64_t>(std::count(at_, quote, '\n'));
    text = std::copy(at_, quote, text);
    if (quote == end_) {
      if (text != begin) CheckSize(static_cast<std::size_t>(text - begin));
      throw Error(count_, "the closing quote is missing");
    }
    at_ = quote + 1;
    if (at_ == end_ || *at_ != '"') break;
    *text++ = *at_++;
  }
  CheckSize(static_cast<std::size_t>(text - begin));
  if (at_ > lineEnd_) FindLineEnd();
  if (at_ != textEnd_ && *at_ != ',') {
    throw Error(count_, "text after the closing quote");
  }
  Add(begin, text);
}

void CsvRows::Add(const char* begin, const char* end) {
  if (count_ < cells_.size()) {
    cells_[count_].begin = begin;
    cells_[count_].end = end;
  } else if (!columns_.has_value()) {
    cells_.push_back({begin, end});
  }
  textSize_ += static_cast<std::size_t>(end - begin);
  ++count_;
}

/// Check the limit, including the next cell or part of it. Not called for empty
/// unquoted cells, whose number is checked at the end of the row.
void CsvRows::CheckSize(std::size_t cellSize) const {
  if (textSize_ + cellSize + count_ > kMaxRowSize) {
    throw Error(count_,
                "the row is longer than 1 MiB; is a closing quote missing?");
  }
}

void CsvRows::CheckCellCount() const {
  const std::size_t wanted = columns_.value_or(count_);
  if (count_ == wanted) return;
  if (count_ < wanted) {
    throw Error(count_, "the row has only " + std::to_string(count_) + " of " +
                            std::to_string(wanted) +
                            " cells; this is the first one missing");
  }
  throw Error(wanted - 1, "the row has " + std::to_string(count_) +
                              " cells for " + std::to_string(wanted) +
                              " columns; this is the last column");
}

}  // namespace ZARN::IO

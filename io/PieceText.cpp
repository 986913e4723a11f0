#include "io/PieceText.hpp"

#include <algorithm>
#include <charconv>
#include <utility>

namespace ZARN::IO {

template <class Value>
void PieceText::AppendDigits(Value value) {
  constexpr std::size_t kLongest = 32;  // at most 24 are used
  Reserve(kLongest);
  char* const end = text_.get() + size_;
  size_ = static_cast<std::size_t>(
      std::to_chars(end, end + kLongest, value).ptr - text_.get());
}

void PieceText::AppendNumber(double value) { AppendDigits(value); }

void PieceText::AppendNumber(std::uint64_t value) { AppendDigits(value); }

void PieceText::Grow(std::size_t length) {
  capacity_ = std::max(2 * capacity_, size_ + length + kPadding);
  // Not make_unique, which would clear the text.
  std::unique_ptr<char[]> larger(new char[capacity_]);
  std::copy_n(text_.get(), size_, larger.get());
  text_ = std::move(larger);
}

}  // namespace ZARN::IO
